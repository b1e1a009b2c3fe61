// The ships: meshes (Objects/<B>.x), three skins each (Textures/<B>1..3.bmp), a shadow
// (Textures/<B>shadow.dds) and the catalogue Data/Ships.Dat.
//
// Handling, from the racer's physics (per 10 ms step):
//   top speed          s = 2 * Thrust / (LinearDrag - Thrust)   (shown as 60 s^2 MPH)
//   pick-up            Thrust / Mass
//   sideways grip      Thrust / Mass again: how fast the thrust can swing the velocity round
//                      behind the nose, so light ships slide less in curves
//   tightest turn      about AngularDrag / 0.028 units, whatever the speed (steering torque
//                      and turn damping both grow with speed)
//   steering response  about 1.4 * Inertia / AngularDrag steps to reach the turn rate
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "assetgen.h"
#include "ship_mesh.h"
#include "ship_paint.h"

namespace assetgen {
namespace {

using namespace ship;

struct ShipSpec {
  const char* display;
  const char* base;
  float mass, inertia, thrust, linear_drag, angular_drag;
  std::vector<Part> (*build)();
  Livery liveries[3];
};

// ---------------------------------------------------------------------------------------
// Parts shared by every design.

const Material kHullMat{"Hull", 1, 1, 1, 1, 30, 0.6f, 0.6f, 0.6f, 0, 0, 0};
const Material kCanopyMat{"Canopy", 0.85f, 0.9f, 1, 1, 60, 1, 1, 1, 0, 0, 0};
const Material kPodMat{"Pods", 0.95f, 0.95f, 0.95f, 1, 40, 0.8f, 0.8f, 0.8f, 0, 0, 0};
const Material kWingMat{"Wings", 1, 1, 1, 1, 20, 0.4f, 0.4f, 0.4f, 0, 0, 0};
const Material kFinMat{"Fins", 1, 1, 1, 1, 20, 0.4f, 0.4f, 0.4f, 0, 0, 0};
const Material kExhaustMat{"Exhaust", 1, 1, 1, 1, 0, 0, 0, 0, 1, 0.6f, 0.3f};

struct Body {
  Part hull{kHullMat, {}, {}}, canopy{kCanopyMat, {}, {}}, pods{kPodMat, {}, {}}, wings{kWingMat, {}, {}},
      fins{kFinMat, {}, {}}, exhaust{kExhaustMat, {}, {}};

  std::vector<Part> Finish() {
    std::vector<Part> parts{hull, canopy, pods, wings, fins, exhaust};
    Center(parts);
    return parts;
  }
};

const UvRect kPanel = Inset(kPanelUv);
const UvRect kGlow = Inset(kGlowUv);

void Hull(Body& b, const std::vector<Station>& st) { Add_Loft(b.hull, st, 16, Inset(kHullUv), &kPanel); }
void Canopy(Body& b, const std::vector<Station>& st) { Add_Loft(b.canopy, st, 12, Inset(kCanopyUv)); }

// A pod on the +x side (mirrored to -x) with a glowing nozzle behind its last station.
void Pod_Pair(Body& b, const std::vector<Station>& st) {
  Part pod{kPodMat, {}, {}}, glow{kExhaustMat, {}, {}};
  Add_Loft(pod, st, 12, Inset(kPodUv));
  const Station& end = st.back();
  const float back = end.z < st.front().z ? -1.0f : 1.0f;
  Add_Loft(glow,
           {{end.z, end.cx, end.cy, end.half_w * 0.82f, end.half_h * 0.82f, end.square},
            {end.z + back * 0.12f, end.cx, end.cy, end.half_w * 0.7f, end.half_h * 0.7f, end.square}},
           12, kGlow, &kGlow);
  Mirror_X(pod);
  Mirror_X(glow);
  for (Part* from : {&pod, &glow}) {
    Part& to = from == &pod ? b.pods : b.exhaust;
    const int offset = int(to.vertices.size());
    to.vertices.insert(to.vertices.end(), from->vertices.begin(), from->vertices.end());
    for (auto f : from->faces) {
      for (int& i : f) i += offset;
      to.faces.push_back(f);
    }
  }
}

// A flat wing in the plane y = height, outline in (x, z), mirrored to the other side.
void Wing_Pair(Body& b, float height, const std::vector<std::pair<float, float>>& xz, float thickness) {
  Part w{kWingMat, {}, {}};
  Add_Slab(w, xz, {0, height, 0}, {1, 0, 0}, {0, 0, 1}, thickness, Inset(kWingUv));
  Mirror_X(w);
  const int offset = int(b.wings.vertices.size());
  b.wings.vertices.insert(b.wings.vertices.end(), w.vertices.begin(), w.vertices.end());
  for (auto f : w.faces) {
    for (int& i : f) i += offset;
    b.wings.faces.push_back(f);
  }
}

// An upright fin in the plane x = side, outline in (z, y); mirrored when off the centre line.
void Fin(Body& b, float side, const std::vector<std::pair<float, float>>& zy, float thickness) {
  Part f{kFinMat, {}, {}};
  Add_Slab(f, zy, {side, 0, 0}, {0, 0, 1}, {0, 1, 0}, thickness, Inset(kFinUv));
  if (side != 0) Mirror_X(f);
  const int offset = int(b.fins.vertices.size());
  b.fins.vertices.insert(b.fins.vertices.end(), f.vertices.begin(), f.vertices.end());
  for (auto face : f.faces) {
    for (int& i : face) i += offset;
    b.fins.faces.push_back(face);
  }
}

// ---------------------------------------------------------------------------------------
// The designs. Stations: z, centre x, centre y, half width, half height, squareness.

// Slim arrow with a swept delta and one tall fin.
std::vector<Part> Build_Dart() {
  Body b;
  Hull(b, {{4.6f, 0, -0.05f, 0, 0, 2},
           {3.8f, 0, 0, 0.3f, 0.18f, 2.4f},
           {2.4f, 0, 0.05f, 0.62f, 0.36f, 2.6f},
           {0.6f, 0, 0.1f, 0.85f, 0.5f, 2.8f},
           {-1.6f, 0, 0.1f, 0.9f, 0.52f, 3.0f},
           {-3.6f, 0, 0.05f, 0.78f, 0.45f, 3.2f},
           {-4.3f, 0, 0.05f, 0.7f, 0.4f, 3.2f}});
  Canopy(b, {{2.6f, 0, 0.4f, 0, 0, 2},
             {2.0f, 0, 0.45f, 0.3f, 0.22f, 2.2f},
             {0.8f, 0, 0.52f, 0.45f, 0.4f, 2.2f},
             {-0.6f, 0, 0.5f, 0.42f, 0.34f, 2.2f},
             {-1.4f, 0, 0.42f, 0, 0, 2}});
  Pod_Pair(b, {{-0.4f, 1.05f, -0.05f, 0, 0, 2},
               {-1.0f, 1.05f, -0.05f, 0.22f, 0.22f, 2},
               {-2.0f, 1.05f, -0.05f, 0.32f, 0.3f, 2},
               {-4.0f, 1.05f, -0.05f, 0.3f, 0.28f, 2},
               {-4.4f, 1.05f, -0.05f, 0.26f, 0.24f, 2}});
  Wing_Pair(b, -0.2f, {{0.7f, 0.8f}, {2.2f, -2.6f}, {2.2f, -3.4f}, {0.7f, -3.4f}}, 0.12f);
  Fin(b, 0, {{-2.2f, 0.4f}, {-3.9f, 1.7f}, {-4.4f, 1.7f}, {-4.1f, 0.4f}}, 0.1f);
  return b.Finish();
}

// Rounded all-rounder: pods on short pylons, winglets and twin fins.
std::vector<Part> Build_Kestrel() {
  Body b;
  Hull(b, {{5.0f, 0, -0.1f, 0, 0, 2},
           {4.2f, 0, 0, 0.4f, 0.22f, 2.4f},
           {2.6f, 0, 0.05f, 0.8f, 0.42f, 2.6f},
           {0.5f, 0, 0.1f, 1.0f, 0.55f, 2.8f},
           {-2.0f, 0, 0.1f, 0.95f, 0.55f, 3.0f},
           {-4.2f, 0, 0.05f, 0.75f, 0.45f, 3.2f},
           {-4.8f, 0, 0.05f, 0.65f, 0.4f, 3.2f}});
  Canopy(b, {{3.0f, 0, 0.42f, 0, 0, 2},
             {2.3f, 0, 0.48f, 0.35f, 0.25f, 2.2f},
             {1.0f, 0, 0.56f, 0.5f, 0.45f, 2.2f},
             {-0.5f, 0, 0.54f, 0.46f, 0.38f, 2.2f},
             {-1.5f, 0, 0.44f, 0, 0, 2}});
  Pod_Pair(b, {{0.6f, 1.9f, 0, 0, 0, 2},
               {0.0f, 1.9f, 0, 0.3f, 0.3f, 2},
               {-1.0f, 1.9f, 0, 0.45f, 0.42f, 2.2f},
               {-4.2f, 1.9f, 0, 0.45f, 0.42f, 2.2f},
               {-4.8f, 1.9f, 0, 0.38f, 0.36f, 2.2f}});
  Wing_Pair(b, 0, {{0.8f, -0.5f}, {1.6f, -1.2f}, {1.6f, -3.2f}, {0.8f, -3.6f}}, 0.14f);
  Wing_Pair(b, -0.05f, {{2.2f, -2.6f}, {2.6f, -3.6f}, {2.6f, -4.2f}, {2.2f, -4.4f}}, 0.1f);
  Fin(b, 1.9f, {{-2.6f, 0.35f}, {-4.1f, 1.8f}, {-4.7f, 1.8f}, {-4.6f, 0.35f}}, 0.1f);
  return b.Finish();
}

// Broad, boxy heavyweight with big pods and a strut-mounted spoiler.
std::vector<Part> Build_Bulwark() {
  Body b;
  Hull(b, {{5.8f, 0, -0.2f, 0.6f, 0.08f, 4},
           {4.8f, 0, -0.1f, 1.2f, 0.25f, 4},
           {2.8f, 0, 0, 1.5f, 0.45f, 4.5f},
           {0.0f, 0, 0.1f, 1.6f, 0.6f, 5},
           {-3.5f, 0, 0.1f, 1.55f, 0.6f, 5},
           {-5.4f, 0, 0.05f, 1.35f, 0.5f, 5},
           {-5.7f, 0, 0.05f, 1.3f, 0.45f, 5}});
  Canopy(b, {{1.5f, 0, 0.6f, 0, 0, 2},
             {0.9f, 0, 0.66f, 0.4f, 0.25f, 2.2f},
             {-0.5f, 0, 0.74f, 0.55f, 0.45f, 2.4f},
             {-2.0f, 0, 0.7f, 0.5f, 0.38f, 2.4f},
             {-3.0f, 0, 0.6f, 0, 0, 2}});
  Pod_Pair(b, {{1.6f, 2.25f, -0.05f, 0, 0, 2},
               {0.8f, 2.25f, -0.05f, 0.4f, 0.4f, 2.3f},
               {-0.5f, 2.25f, -0.05f, 0.58f, 0.52f, 2.6f},
               {-5.0f, 2.25f, -0.05f, 0.58f, 0.52f, 2.6f},
               {-5.7f, 2.25f, -0.05f, 0.5f, 0.45f, 2.6f}});
  Wing_Pair(b, 1.6f, {{0.0f, -4.1f}, {2.7f, -4.2f}, {2.7f, -5.3f}, {0.0f, -5.4f}}, 0.12f);
  Fin(b, 1.1f, {{-4.3f, 0.4f}, {-4.6f, 1.6f}, {-5.2f, 1.6f}, {-5.3f, 0.4f}}, 0.12f);
  return b.Finish();
}

// Twin booms reaching past a short central pod, joined by the wings.
std::vector<Part> Build_Wraith() {
  Body b;
  Hull(b, {{3.2f, 0, 0, 0, 0, 2},
           {2.6f, 0, 0.05f, 0.45f, 0.35f, 2.2f},
           {1.2f, 0, 0.1f, 0.75f, 0.55f, 2.4f},
           {-1.5f, 0, 0.1f, 0.8f, 0.55f, 2.6f},
           {-3.4f, 0, 0.05f, 0.6f, 0.45f, 2.8f},
           {-3.9f, 0, 0.05f, 0.5f, 0.38f, 2.8f}});
  Canopy(b, {{2.4f, 0, 0.42f, 0, 0, 2},
             {1.8f, 0, 0.48f, 0.35f, 0.28f, 2.2f},
             {0.6f, 0, 0.58f, 0.5f, 0.45f, 2.2f},
             {-0.8f, 0, 0.56f, 0.44f, 0.38f, 2.2f},
             {-1.8f, 0, 0.44f, 0, 0, 2}});
  Pod_Pair(b, {{4.8f, 2.0f, -0.1f, 0, 0, 2},
               {4.0f, 2.0f, -0.1f, 0.25f, 0.22f, 2.2f},
               {2.0f, 2.0f, -0.1f, 0.38f, 0.34f, 2.4f},
               {-4.0f, 2.0f, -0.1f, 0.4f, 0.36f, 2.4f},
               {-4.7f, 2.0f, -0.1f, 0.34f, 0.3f, 2.4f}});
  Wing_Pair(b, -0.05f, {{0.6f, 1.0f}, {2.0f, -0.2f}, {2.0f, -2.6f}, {0.6f, -2.2f}}, 0.12f);
  Wing_Pair(b, -0.1f, {{2.2f, -1.2f}, {2.6f, -2.2f}, {2.6f, -3.6f}, {2.2f, -3.8f}}, 0.1f);
  Fin(b, 2.0f, {{-2.4f, 0.2f}, {-3.8f, 1.7f}, {-4.4f, 1.7f}, {-4.5f, 0.2f}}, 0.1f);
  return b.Finish();
}

// Long needle with canards, the cockpit set far back and one tall fin.
std::vector<Part> Build_Lancer() {
  Body b;
  Hull(b, {{6.0f, 0, -0.05f, 0, 0, 2},
           {5.0f, 0, 0, 0.22f, 0.14f, 2.2f},
           {3.0f, 0, 0.05f, 0.55f, 0.32f, 2.6f},
           {0.5f, 0, 0.1f, 0.8f, 0.45f, 2.8f},
           {-2.5f, 0, 0.1f, 0.82f, 0.48f, 3.0f},
           {-5.2f, 0, 0.05f, 0.65f, 0.4f, 3.2f},
           {-5.8f, 0, 0.05f, 0.58f, 0.36f, 3.2f}});
  Canopy(b, {{0.2f, 0, 0.45f, 0, 0, 2},
             {-0.4f, 0, 0.5f, 0.3f, 0.22f, 2.2f},
             {-1.6f, 0, 0.56f, 0.42f, 0.4f, 2.2f},
             {-2.8f, 0, 0.54f, 0.38f, 0.34f, 2.2f},
             {-3.6f, 0, 0.46f, 0, 0, 2}});
  Pod_Pair(b, {{-1.0f, 0.95f, -0.1f, 0, 0, 2},
               {-1.6f, 0.95f, -0.1f, 0.25f, 0.25f, 2},
               {-2.6f, 0.95f, -0.1f, 0.33f, 0.31f, 2.2f},
               {-5.2f, 0.95f, -0.1f, 0.33f, 0.31f, 2.2f},
               {-5.8f, 0.95f, -0.1f, 0.28f, 0.27f, 2.2f}});
  Wing_Pair(b, 0, {{0.45f, 3.4f}, {1.4f, 2.6f}, {1.4f, 2.1f}, {0.45f, 2.0f}}, 0.08f);
  Wing_Pair(b, -0.15f, {{1.1f, -3.0f}, {2.1f, -4.2f}, {2.1f, -4.9f}, {1.1f, -5.0f}}, 0.1f);
  Fin(b, 0, {{-3.2f, 0.4f}, {-5.0f, 1.6f}, {-5.7f, 1.6f}, {-5.6f, 0.4f}}, 0.1f);
  return b.Finish();
}

// ---------------------------------------------------------------------------------------
// The catalogue. The handling numbers live here and nowhere else.
// Mass also sets how much a ship slides: drag turns the velocity towards the nose at a
// rate of drag / mass, so the heavy ships drift wide where the light ones bite. The
// selection screen's bars read mass x 25 - 150, inertia x 25 - 400, thrust x 5000 - 1150.
//
//            mass  inertia thrust  lin.drag ang.drag   top speed   pick-up  tightest turn
//   Dart     6.5   16.5    0.24    0.50     1.0        1.85 (204)  0.037    ~36
//   Kestrel  8.5   18      0.25    0.50     1.3        2.00 (240)  0.029    ~46
//   Bulwark  12    23      0.265   0.512    1.6        2.15 (276)  0.022    ~57
//   Wraith   6.4   17      0.26    0.535    1.2        1.89 (215)  0.041    ~43
//   Lancer   9.5   24      0.255   0.498    1.5        2.10 (264)  0.027    ~54
// Computer racers on the generated circuit lap in 35-42 s; the heavy, fast ships set the
// best laps and the widest spread, the light ones the steadiest.

constexpr Rgb kBlack{0.07f, 0.07f, 0.09f};
constexpr Rgb kWhite{0.93f, 0.94f, 0.95f};

const ShipSpec kShips[] = {
    {"Vesper Dart",
     "Dart",
     6.5f,
     16.5f,
     0.24f,
     0.5f,
     1.0f,
     Build_Dart,
     {{{0.98f, 0.78f, 0.1f}, kBlack, {0.9f, 0.15f, 0.1f}, kBlack, Pattern::TwinStripes, 7},
      {kWhite, {0.1f, 0.68f, 0.9f}, {0.05f, 0.12f, 0.35f}, {0.05f, 0.1f, 0.25f}, Pattern::Chevrons, 7},
      {{0.1f, 0.42f, 0.2f}, {0.62f, 0.95f, 0.2f}, kBlack, kBlack, Pattern::Blades, 17}}},
    {"Kestrel GT",
     "Kestrel",
     8.5f,
     18,
     0.25f,
     0.5f,
     1.3f,
     Build_Kestrel,
     {{{0.12f, 0.3f, 0.75f}, kWhite, {0.95f, 0.55f, 0.1f}, {0.05f, 0.08f, 0.2f}, Pattern::Sweep, 21},
      {{0.8f, 0.1f, 0.12f}, kWhite, {0.98f, 0.82f, 0.15f}, kBlack, Pattern::TwinStripes, 21},
      {{0.55f, 0.57f, 0.6f}, {0.95f, 0.45f, 0.05f}, kBlack, kBlack, Pattern::Chevrons, 12}}},
    {"Bulwark",
     "Bulwark",
     12.0f,
     23,
     0.265f,
     0.512f,
     1.6f,
     Build_Bulwark,
     {{{0.2f, 0.22f, 0.25f}, {0.95f, 0.75f, 0.05f}, {0.95f, 0.2f, 0.1f}, kBlack, Pattern::Blades, 99},
      {{0.45f, 0.05f, 0.08f}, {0.85f, 0.7f, 0.4f}, kBlack, kBlack, Pattern::Sweep, 99},
      {{0.25f, 0.33f, 0.2f}, {0.78f, 0.74f, 0.6f}, {0.95f, 0.5f, 0.1f}, kBlack, Pattern::TwinStripes, 44}}},
    {"Wraith",
     "Wraith",
     6.4f,
     17,
     0.26f,
     0.535f,
     1.2f,
     Build_Wraith,
     {{{0.35f, 0.12f, 0.6f}, {0.1f, 0.9f, 0.85f}, kWhite, kBlack, Pattern::Chevrons, 3},
      {kBlack, {0.95f, 0.1f, 0.45f}, {0.3f, 0.9f, 1.0f}, {0.02f, 0.02f, 0.03f}, Pattern::Sweep, 3},
      {kWhite, {0.9f, 0.2f, 0.15f}, kBlack, {0.15f, 0.15f, 0.18f}, Pattern::Blades, 31}}},
    {"Lancer",
     "Lancer",
     9.5f,
     24,
     0.255f,
     0.498f,
     1.5f,
     Build_Lancer,
     {{{0.95f, 0.45f, 0.05f}, kWhite, {0.1f, 0.2f, 0.5f}, {0.08f, 0.1f, 0.2f}, Pattern::TwinStripes, 5},
      {{0.05f, 0.35f, 0.4f}, {0.95f, 0.85f, 0.3f}, kWhite, kBlack, Pattern::Blades, 5},
      {{0.75f, 0.76f, 0.8f}, {0.15f, 0.35f, 0.8f}, {0.85f, 0.1f, 0.1f}, {0.1f, 0.12f, 0.2f}, Pattern::Sweep, 55}}},
};

std::string Number(float v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.4g", double(v));
  return buf;
}

bool Write_Ships(const std::string& game_dir) {
  bool ok = true;
  std::string dat = std::to_string(std::size(kShips)) + "\r\n";
  for (const ShipSpec& s : kShips) {
    for (const std::string& line : {std::string(s.display), std::string(s.base), Number(s.mass), Number(s.inertia),
                                    Number(s.thrust), Number(s.linear_drag), Number(s.angular_drag)})
      dat += line + "\r\n";
    const std::vector<Part> parts = s.build();
    const std::string base = s.base;
    ok &= Write_File(game_dir + "/Objects/" + base + ".x", To_X(parts, base, "..\\\\Textures\\\\" + base + "1.bmp"));
    for (int k = 0; k < 3; ++k)
      ok &= Write_BMP(game_dir + "/Textures/" + base + std::to_string(k + 1) + ".bmp", Paint_Skin(s.liveries[k]));
    ok &= Write_DDS4444(game_dir + "/Textures/" + base + "shadow.dds", Paint_Shadow(parts, 128, 64));
  }
  ok &= Write_File(game_dir + "/Data/Ships.Dat", dat);
  return ok;
}

const bool kRegistered = Register("ships", &Write_Ships);

}  // namespace
}  // namespace assetgen
