// Tracks/test.MXT: the circuit of track_layout.cpp as road, ground and wall strips in the
// game's track file format (every section count is an upper index, not a length).
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "assetgen.h"
#include "track_layout.h"
#include "track_params.h"
#include "track_textures.h"

namespace trackgen {
namespace {

struct Vertex {
  float x, y, z;
  uint32_t reserved;
  uint32_t color, specular;
  float tu, tv;
};
static_assert(sizeof(Vertex) == 32);

struct Strip {
  std::vector<Vertex> v;
  int16_t texture = 0;
};

struct Sector {
  float bounds[4] = {};  // min x, min z, max x, max z of its road strip
  std::vector<int16_t> road, walls, ground;
};

class Bytes {
 public:
  void I16(int16_t v) { Raw(&v, 2); }
  void I32(int32_t v) { Raw(&v, 4); }
  void Text(const std::string& s) {
    I16(static_cast<int16_t>(s.size()));
    b_ += s;
  }
  void Raw(const void* p, size_t n) { b_.append(static_cast<const char*>(p), n); }
  // A one-dimensional list header: dimension count 1, element count, lower bound 0.
  void List(size_t count) {
    I16(1);
    I32(static_cast<int32_t>(count));
    I32(0);
  }
  const std::string& str() const { return b_; }

 private:
  std::string b_;
};

// Sun from above, a little to the side and behind the start, so slopes and banks read.
constexpr double kSun[3] = {0.34, 0.86, -0.38};

uint32_t Lit(double nx, double ny, double nz, double floor) {
  const double len = std::sqrt(nx * nx + ny * ny + nz * nz);
  const double d = len > 0 ? (nx * kSun[0] + ny * kSun[1] + nz * kSun[2]) / len : kSun[1];
  // Level ground is full white; everything else shades gently from it.
  const double s = std::clamp(floor + (1 - floor) * d / kSun[1], floor, 1.0);
  const auto c = static_cast<uint32_t>(std::lround(255 * s));
  const auto b = static_cast<uint32_t>(std::lround(250 * s));
  return 0xFF000000u | c << 16 | c << 8 | b;
}

Vertex Make(const Point3& p, uint32_t color, double tu, double tv) {
  return Vertex{static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z), 0, color, 0,
                static_cast<float>(tu),  static_cast<float>(tv)};
}

// Road surface normal from the rung's edges and the grade toward its neighbour.
uint32_t Road_Color(const Rung& r, const Rung& other, double sign) {
  const double ds = std::max(1e-6, std::fabs(other.s - r.s));
  const double grade = sign * (other.centre.y - r.centre.y) / ds;
  const double ax = r.hx, ay = grade, az = r.hz;                                                 // along
  const double cx = r.right.x - r.left.x, cy = r.right.y - r.left.y, cz = r.right.z - r.left.z;  // across
  return Lit(ay * cz - az * cy, az * cx - ax * cz, ax * cy - ay * cx, 0.7);
}

struct Built {
  std::vector<Strip> road, ground, walls;
  std::vector<Sector> sectors;
};

void Build_Road_And_Walls(const Layout& layout, Built& out) {
  std::vector<Strip> concrete, glass;
  struct WallRef {
    bool glass;
    size_t index;
  };
  std::vector<std::vector<WallRef>> sector_walls;

  for (const Run& run : layout.runs) {
    const size_t blocks = run.rungs.size() - 1;
    for (size_t first = 0; first < blocks; first += kBlocksPerStrip) {
      const size_t last = std::min(blocks, first + kBlocksPerStrip);
      Strip road;
      road.texture = static_cast<int16_t>(run.surface == Surface::Start   ? kTexRoadStart
                                          : run.surface == Surface::Curve ? kTexRoadKerb
                                                                          : kTexRoad);
      const double v_len = run.surface == Surface::Start ? 2 * kGridBlockLength : kRoadTile;
      Strip wall[2];  // right, left
      Sector sector{{1e30f, 1e30f, -1e30f, -1e30f}, {}, {}, {0}};
      for (size_t i = first; i <= last; ++i) {
        const Rung& r = run.rungs[i];
        const Rung& other = i + 1 < run.rungs.size() ? run.rungs[i + 1] : run.rungs[i - 1];
        const uint32_t color = Road_Color(r, other, i + 1 < run.rungs.size() ? 1.0 : -1.0);
        // Vertex 2r is the right-hand edge, 2r + 1 the left; u runs from left (0) to right (1).
        road.v.push_back(Make(r.right, color, 1.0, r.s / v_len));
        road.v.push_back(Make(r.left, color, 0.0, r.s / v_len));
        for (const Point3& p : {r.right, r.left}) {
          sector.bounds[0] = std::min(sector.bounds[0], static_cast<float>(p.x));
          sector.bounds[1] = std::min(sector.bounds[1], static_cast<float>(p.z));
          sector.bounds[2] = std::max(sector.bounds[2], static_cast<float>(p.x));
          sector.bounds[3] = std::max(sector.bounds[3], static_cast<float>(p.z));
        }
        // Walls stand on the road edges, which are what the racers bounce off.
        for (int side = 0; side < 2; ++side) {
          const Point3& base = side == 0 ? r.right : r.left;
          const Point3 top{base.x, base.y + kWallHeight, base.z};
          const double inward = side == 0 ? -1.0 : 1.0;  // the face the racers see
          const uint32_t c = Lit(inward * r.hz, 0, -inward * r.hx, 0.62);
          wall[side].v.push_back(Make(top, c, r.s / kWallTile, 0.0));
          wall[side].v.push_back(Make(base, c, r.s / kWallTile, 1.0));
        }
      }
      std::vector<WallRef> refs;
      for (int side = 0; side < 2; ++side) {
        // See-through glass on the outside of curves, where the view opens up.
        const bool outside = (run.turn > 0 && side == 1) || (run.turn < 0 && side == 0);
        wall[side].texture = static_cast<int16_t>(outside ? kTexWallGlass : kTexWallConcrete);
        std::vector<Strip>& list = outside ? glass : concrete;
        refs.push_back({outside, list.size()});
        list.push_back(std::move(wall[side]));
      }
      sector.road.push_back(static_cast<int16_t>(out.road.size()));
      out.road.push_back(std::move(road));
      out.sectors.push_back(sector);
      sector_walls.push_back(refs);
    }
  }
  // Walls are stored grouped by texture (opaque first) so drawing binds each texture once.
  out.walls = concrete;
  out.walls.insert(out.walls.end(), glass.begin(), glass.end());
  for (size_t i = 0; i < out.sectors.size(); ++i)
    for (const WallRef& w : sector_walls[i])
      out.sectors[i].walls.push_back(static_cast<int16_t>(w.glass ? concrete.size() + w.index : w.index));
}

// The game draws only the first ground strip, so both embankments and the flat ground
// beyond them go into one strip, joined by repeated (zero-area) vertices.
void Build_Ground(const Layout& layout, Built& out) {
  std::vector<const Rung*> ring;
  for (const Run& run : layout.runs)
    for (size_t i = ring.empty() ? 0 : 1; i < run.rungs.size(); ++i) ring.push_back(&run.rungs[i]);

  double low = 1e30, min_x = 1e30, min_z = 1e30, max_x = -1e30, max_z = -1e30;
  for (const Rung* r : ring)
    for (const Point3& p : {r->right, r->left}) {
      low = std::min(low, p.y);
      min_x = std::min(min_x, p.x);
      max_x = std::max(max_x, p.x);
      min_z = std::min(min_z, p.z);
      max_z = std::max(max_z, p.z);
    }
  const double ground = low - kGroundBelow;
  auto planar = [&](const Point3& p, uint32_t c) { return Make(p, c, p.x / kGrassTile, p.z / kGrassTile); };

  Strip strip;
  strip.texture = kTexGrass;
  for (int side = 0; side < 2; ++side) {
    const size_t join = strip.v.size();
    for (const Rung* r : ring) {
      const Point3& edge = side == 0 ? r->right : r->left;
      const double out_x = (side == 0 ? 1 : -1) * r->hz, out_z = (side == 0 ? -1 : 1) * r->hx;
      const Point3 far{edge.x + out_x * kGrassWidth, ground, edge.z + out_z * kGrassWidth};
      const double drop = (edge.y - ground) / kGrassWidth;
      const uint32_t c = Lit(out_x * drop, 1, out_z * drop, 0.65);
      strip.v.push_back(planar(edge, c));
      strip.v.push_back(planar(far, c));
    }
    if (join > 0) {
      const Vertex first = strip.v[join];
      strip.v.insert(strip.v.begin() + static_cast<long>(join), {strip.v[join - 1], first});
    }
  }
  const double m = kGroundMargin, y = ground - 0.3;
  const Vertex corners[4] = {
      planar({min_x - m, y, min_z - m}, Lit(0, 1, 0, 0)), planar({min_x - m, y, max_z + m}, Lit(0, 1, 0, 0)),
      planar({max_x + m, y, min_z - m}, Lit(0, 1, 0, 0)), planar({max_x + m, y, max_z + m}, Lit(0, 1, 0, 0))};
  strip.v.push_back(strip.v.back());
  strip.v.push_back(corners[0]);
  strip.v.insert(strip.v.end(), corners, corners + 4);
  out.ground.push_back(std::move(strip));
}

void Put_Strips(Bytes& b, const std::vector<Strip>& strips) {
  b.I32(static_cast<int32_t>(strips.size()) - 1);  // an upper index
  for (const Strip& s : strips) {
    b.List(s.v.size());
    b.Raw(s.v.data(), s.v.size() * sizeof(Vertex));
    b.I16(s.texture);
  }
}

std::string Encode(const Built& t) {
  Bytes b;
  b.Text(kTrackHeader);
  Put_Strips(b, t.road);
  Put_Strips(b, t.ground);
  Put_Strips(b, t.walls);
  b.I32(static_cast<int32_t>(t.sectors.size()) - 1);
  for (const Sector& s : t.sectors) {
    b.Raw(s.bounds, sizeof s.bounds);
    for (const std::vector<int16_t>* list : {&s.road, &s.walls, &s.ground}) {
      b.List(list->size());
      b.Raw(list->data(), list->size() * sizeof(int16_t));
    }
  }
  b.I32(kTexCount - 1);
  for (const char* name : kTextureNames) b.Text(name);
  return b.str();
}

bool Write_Track(const std::string& game_dir) {
  const Layout layout = Build_Layout();
  if (layout.runs.empty()) return false;
  Built built;
  Build_Road_And_Walls(layout, built);
  Build_Ground(layout, built);
  return assetgen::Write_File(game_dir + "/Tracks/test.MXT", Encode(built)) && Write_Track_Textures(game_dir);
}

[[maybe_unused]] const bool registered = assetgen::Register("track", &Write_Track);

}  // namespace
}  // namespace trackgen
