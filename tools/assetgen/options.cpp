// The options screen's pictures. The background carries every label and the plain
// state of each control; the 115 x 97 overlay sheet holds the lit and changing parts,
// each cut to exactly the rectangle the screen copies and drawn over the same place.
#include <cmath>

#include "art.h"

namespace assetgen {
namespace {

using namespace art;

TextStyle Label(int size = 12, uint32_t colour = kIce) {
  return {.pixel_size = size, .top = colour, .bottom = Mix(colour, kSteelLight, 0.4), .tracking = 1};
}

// A 10 x 12 arrow at (x, y), pointing left or right.
void Arrow(Picture& p, int x, int y, bool left, uint32_t colour) {
  if (left)
    Polygon(p, {{x + 9.5, y + 0.5}, {x + 9.5, y + 11.5}, {x + 0.5, y + 6.0}}, colour);
  else
    Polygon(p, {{x + 0.5, y + 0.5}, {x + 0.5, y + 11.5}, {x + 9.5, y + 6.0}}, colour);
}

// A caption bar: fill and centred text over exactly the given rectangle.
void Caption_Bar(Picture& p, int left, int top, int right, int bottom, const char* text, uint32_t fill, uint32_t ink) {
  Fill(p, left, top, right, bottom, fill);
  TextStyle s = Label(11, ink);
  s.bottom = ink;
  s.align = Align::Centre;
  Text(p, (left + right) / 2, top + (bottom - top - 8) / 2, text, s);
}

// Where the screen prints and overlays: the rows of the 640 x 480 design.
constexpr int kRowY[4] = {279, 303, 327, 351};
const char* const kControlLabels[4] = {"THRUST", "BRAKE", "TURN LEFT", "TURN RIGHT"};
const char* const kLevels[4] = {"EASY", "NORMAL", "HARD", "EXPERT"};
const uint32_t kLevelInk[4] = {kCyan, kIce, kAmber, kOrange};

Picture Background() {
  Picture p(640, 480);
  Vertical_Gradient(p, 0, 480, kNight, Mix(kDeep, kSteel, 0.25));
  Stars(p, 480, 51, 0.0015, 0.3, 0.4);
  for (int i = 0; i < 12; ++i) {
    const double y = 110 + 22 * i;
    Line(p, {12, y}, {12 + 90 * Noise(i, 0, 53) + 30, y - 4}, 1.5, i % 3 ? kCyan : kOrange, 0.3);
    Line(p, {628, y + 6}, {628 - 90 * Noise(i, 1, 53) - 30, y + 2}, 1.5, i % 3 ? kOrange : kCyan, 0.3);
  }
  TextStyle title = Label(40, kIce);
  title.face = "DejaVuSans-BoldOblique.ttf";
  title.bottom = kCyan;
  title.tracking = 3;
  title.shadow = 3;
  Heading(p, 34, "OPTIONS", title, 79, 120, kOrange);

  Panel(p, 150, 106, 490, 384, kCyan);
  // Difficulty: label, plain arrows, the slot the level word is overlaid on.
  Text(p, 171, 131, "DIFFICULTY", Label());
  Arrow(p, 332, 130, true, kSteelLight);
  Arrow(p, 432, 130, false, kSteelLight);
  Fill(p, 342, 129, 432, 143, kSlot);
  // Setup dialog: label and the box the tick is overlaid in.
  Text(p, 171, 157, "SHOW SETUP AT START", Label());
  Fill(p, 448, 155, 463, 169, kSlot);
  Frame(p, 447, 154, 464, 170, kSteelLight);
  Line(p, {171, 177}, {460, 177}, 1, kSteel);
  // Music volume: arrows either side of a wedge of ten bars the screen lights up to the
  // volume; on its right, the ghost switch's box the tick is overlaid in.
  Text(p, 171, 189, "MUSIC", Label());
  Text(p, 360, 189, "GHOST", Label());
  Fill(p, 448, 186, 463, 200, kSlot);
  Frame(p, 447, 185, 464, 201, kSteelLight);
  Arrow(p, 228, 187, true, kSteelLight);
  Arrow(p, 308, 187, false, kSteelLight);
  for (int i = 0; i < 10; ++i) Fill(p, 244 + 6 * i, 196 - i, 248 + 6 * i, 200, kSteel);
  Line(p, {171, 209}, {460, 209}, 1, kSteel);
  // Control device: heading above the slot where the screen prints the device; clicking
  // the slot switches keyboard and gamepad, as its arrow says.
  Text(p, 171, 232, "CONTROL DEVICE", Label(11, kAmber));
  Fill(p, 168, 251, 460, 271, kSlot);
  Frame(p, 167, 250, 461, 272, kSteel);
  Arrow(p, 444, 255, false, kSteelLight);
  // The four controls: label on the left, the key name is printed at x 295.
  for (int i = 0; i < 4; ++i) {
    Text(p, 171, kRowY[i] + 2, kControlLabels[i], Label());
    Fill(p, 290, kRowY[i] - 3, 460, kRowY[i] + 18, kSlot);
    Frame(p, 289, kRowY[i] - 4, 461, kRowY[i] + 19, kSteel);
  }
  TextStyle hint = Label(10, kSteelLight);
  hint.bottom = kSteelLight;
  Text(p, 171, 217, "CLICK A ROW, THEN PRESS ITS NEW CONTROL", hint);
  // The two buttons, their plain captions where the lit ones are overlaid.
  Panel(p, 157, 396, 300, 447, kOrange);
  Caption_Bar(p, 171, 415, 286, 429, "DEFAULTS", kSteel, kIce);
  Panel(p, 397, 396, 482, 447, kCyan);
  Caption_Bar(p, 421, 415, 460, 430, "DONE", kSteel, kIce);
  return p;
}

Picture Overlays() {
  Picture p(115, 97, 0xFF000000u);
  Arrow(p, 0, 0, true, kOrange);
  Arrow(p, 10, 0, false, kOrange);
  // Level words, hardest at the top: rows 12, 26, 40, 54 hold levels 3, 2, 1, 0.
  for (int level = 0; level < 4; ++level) {
    const int top = 54 - 14 * level;
    Fill(p, 0, top, 90, top + 14, kSlot);
    TextStyle s = Label(11, kLevelInk[level]);
    s.bottom = kLevelInk[level];
    s.align = Align::Centre;
    s.tracking = 2;
    Text(p, 45, top + 3, kLevels[level], s);
  }
  Caption_Bar(p, 0, 68, 115, 82, "DEFAULTS", kOrange, 0xFFFFFFFFu);
  Caption_Bar(p, 0, 82, 39, 97, "DONE", kOrange, 0xFFFFFFFFu);
  // The tick, on black so the box behind shows through.
  Line(p, {43.5, 90.5}, {47, 94}, 2.6, kCyan);
  Line(p, {47, 94}, {53, 85}, 2.6, kCyan);
  return p;
}

bool Generate_Options(const std::string& game_dir) {
  const bool ok = Write_BMP(game_dir + "/Gfx/OptionScr_bg.bmp", Background());
  return Write_BMP(game_dir + "/Gfx/OptionScr_buttons.bmp", Overlays()) && ok;
}

const bool registered = Register("options", Generate_Options);
}  // namespace
}  // namespace assetgen
