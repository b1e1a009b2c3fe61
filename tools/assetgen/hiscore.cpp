// The hi-score pictures: the background (labels for the race's three figures, the records
// panel) and the name entry box.
#include "art.h"

namespace assetgen {
namespace {
using namespace art;

// Rows the screen prints on (640 x 480 design units, font 2 cells are 15 rows high).
constexpr int kFigureX = 300, kFigureY[3] = {95, 119, 142};
constexpr int kRecordX = 68, kRecordY[3] = {335, 360, 385};

bool Background(const std::string& file, int scale) {
  Picture p(640, 480, 0xFF000000u, scale);
  Backdrop(p, 29);
  bool ok = Heading(p, 22, "HI-SCORES",
                    {.pixel_size = 32, .top = kAmber, .bottom = kOrange, .tracking = 4, .shadow = 1}, 64, 100, kCyan);

  // The race just finished: labels right-aligned before the figures.
  Panel(p, 120, 80, 520, 168, kCyan);
  ok =
      Text(p, 128, 84, "YOUR RACE", {.pixel_size = 10, .top = kSteelLight, .bottom = kSteelLight, .tracking = 1}) && ok;
  const char* const labels[3] = {"TOP SPEED", "FASTEST LAP", "RACE TIME"};
  for (int i = 0; i < 3; ++i) {
    ok = Text(p, kFigureX - 14, kFigureY[i] + 3, labels[i],
              {.pixel_size = 14, .top = kIce, .bottom = kCyan, .align = Align::Right, .tracking = 1}) &&
         ok;
    Fill(p, kFigureX - 6, kFigureY[i] + 1, kFigureX - 4, kFigureY[i] + 14, kOrange);
  }

  // The records: the screen prints "Top Speed ...", "Best Lap ..." and "Best Race ...".
  Panel(p, 50, 302, 610, 410, kOrange);
  ok = Text(p, 320, 310, "RECORDS",
            {.pixel_size = 12, .top = kAmber, .bottom = kOrange, .align = Align::Centre, .tracking = 3}) &&
       ok;
  for (int i = 0; i < 3; ++i) {
    Fill(p, kRecordX - 10, kRecordY[i] + 2, kRecordX - 6, kRecordY[i] + 13, i == 0 ? kCyan : kCyanDim);
    Fill(p, kRecordX, kRecordY[i] + 18, 596, kRecordY[i] + 19, Mix(kSteel, kNight, 0.3));
  }
  ok = Text(p, 320, 440, "CLICK OR PRESS ENTER TO CONTINUE",
            {.pixel_size = 11, .top = kSteelLight, .bottom = kSteelLight, .align = Align::Centre, .tracking = 2}) &&
       ok;
  return ok && Write_BMP(file, p);
}

// 326 x 65, copied to (55, 228); the name is printed at (68, 265), i.e. (13, 37) here.
bool Entry_Box(const std::string& dir) {
  Picture p(326, 65, kDeep);
  Backdrop(p, 31);
  Panel(p, 0, 0, 326, 65, kOrange);
  bool ok = Text(p, 163, 9, "NEW RECORD!  ENTER YOUR NAME",
                 {.pixel_size = 13, .top = kAmber, .bottom = kOrange, .align = Align::Centre, .tracking = 1});
  Fill(p, 8, 33, 318, 56, kSteel);
  Fill(p, 9, 34, 317, 55, kSlot);
  Fill(p, 9, 54, 317, 55, kCyan);
  return ok && Write_BMP(dir + "/Gfx/HiScore_enter.bmp", p);
}

bool Generate_HiScore(const std::string& dir) {
  const bool a = Background(dir + "/Gfx/HiScore_bg.bmp", 1) && Background(dir + "/Gfx/2x/HiScore_bg.bmp", 2);
  const bool b = Entry_Box(dir);
  return a && b;
}

const bool registered = Register("hiscore", Generate_HiScore);
}  // namespace
}  // namespace assetgen
