#include "track_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "track_params.h"

namespace trackgen {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kUnset = -1.0e9;

// One piece of the centre line. Turns are in degrees, positive to the right. Heights are
// the road's centre height at the piece's middle (optional) and end.
struct Piece {
  double length = 0;  // straights; 0 = solved so the circuit closes
  double turn = 0;
  double radius = 0;
  double bank = 0;  // height difference across the road at full bank, outside edge up
  double mid_height = kUnset;
  double end_height = 0;
};

Piece Straight(double length, double end_height, double mid_height = kUnset) {
  return Piece{length, 0, 0, 0, mid_height, end_height};
}
Piece Curve(double turn, double radius, double bank, double end_height, double mid_height = kUnset) {
  return Piece{0, turn, radius, bank, mid_height, end_height};
}

// The circuit, clockwise seen from above, starting on the start/finish line heading +z.
// Pieces 5 and 9 (the long back straights) get the lengths that close the loop.
// Radii stay wide: a corner's side wall is the side of the block it started the frame on,
// so the sharper the bend from block to block, the further a corner rubbing the outer wall
// slips past the next block's edge unseen.
std::vector<Piece> Design() {
  return {
      Straight(880, 10),       // 0: main straight, grid on its first 300 units
      Curve(90, 330, 5, 18),   // 1: banked right-hander, climbing
      Straight(680, 16, 36),   // 2: crest
      Curve(-60, 400, 0, 8),   // 3: level left kink
      Curve(150, 300, 6, 0),   // 4: long banked right sweeper, down
      Straight(0, 6, 34),      // 5: back straight over a big hill
      Curve(45, 380, 0, 0),    // 6: level right
      Straight(220, -8),       // 7: short link, dipping
      Curve(45, 380, 3, -14),  // 8: right into the hollow
      Straight(0, -4, -8),     // 9: return straight
      Curve(-40, 420, 3, 2),   // 10: esses, left...
      Curve(40, 420, 3, 4),    // 11: ...and right
      Straight(160, 0),        // 12
      Curve(90, 330, 5, 0),    // 13: banked right onto the main straight
      Straight(460, 0),        // 14: run-up to the line, level
  };
}
constexpr int kSolvedA = 5, kSolvedB = 9;

double Length_Of(const Piece& p) { return p.turn == 0 ? p.length : std::fabs(p.turn) * kPi / 180.0 * p.radius; }

struct Pose {
  double x = 0, z = 0, heading = 0;  // heading in radians, clockwise from +z
};

// Right-hand unit normal of a heading.
void Right_Of(double heading, double& nx, double& nz) {
  nx = std::cos(heading);
  nz = -std::sin(heading);
}

Pose Advance(const Pose& p, const Piece& piece, double t) {
  if (piece.turn == 0) return Pose{p.x + std::sin(p.heading) * t, p.z + std::cos(p.heading) * t, p.heading};
  const double side = piece.turn > 0 ? 1.0 : -1.0;
  double nx, nz;
  Right_Of(p.heading, nx, nz);
  const double cx = p.x + side * piece.radius * nx, cz = p.z + side * piece.radius * nz;
  const double h = p.heading + side * t / piece.radius;
  Right_Of(h, nx, nz);
  return Pose{cx - side * piece.radius * nx, cz - side * piece.radius * nz, h};
}

Pose Walk(const std::vector<Piece>& pieces) {
  Pose p{kCentreX, 0, 0};
  for (const Piece& piece : pieces) p = Advance(p, piece, Length_Of(piece));
  return p;
}

// Solves the two free straights so the loop ends where it began. False if it cannot.
bool Close_Loop(std::vector<Piece>& pieces) {
  pieces[kSolvedA].length = pieces[kSolvedB].length = 0;
  const Pose end = Walk(pieces);
  Pose at_a{kCentreX, 0, 0}, at_b = at_a;
  for (int i = 0; i < kSolvedA; ++i) at_a = Advance(at_a, pieces[i], Length_Of(pieces[i]));
  for (int i = 0; i < kSolvedB; ++i) at_b = Advance(at_b, pieces[i], Length_Of(pieces[i]));
  // a * dir_a + b * dir_b = start - end
  const double ax = std::sin(at_a.heading), az = std::cos(at_a.heading);
  const double bx = std::sin(at_b.heading), bz = std::cos(at_b.heading);
  const double rx = kCentreX - end.x, rz = 0 - end.z;
  const double det = ax * bz - az * bx;
  if (std::fabs(det) < 1e-6) return false;
  pieces[kSolvedA].length = (rx * bz - rz * bx) / det;
  pieces[kSolvedB].length = (ax * rz - az * rx) / det;
  return pieces[kSolvedA].length > 200 && pieces[kSolvedB].length > 200;
}

struct HeightKey {
  double s, y;
};

// Height along the road: eased between keys (flat at each key), so the grade is smooth.
double Height_At(const std::vector<HeightKey>& keys, double s) {
  for (size_t i = 1; i < keys.size(); ++i) {
    if (s <= keys[i].s) {
      const double t = (s - keys[i - 1].s) / (keys[i].s - keys[i - 1].s);
      const double e = t * t * (3 - 2 * t);
      return keys[i - 1].y + (keys[i].y - keys[i - 1].y) * e;
    }
  }
  return keys.back().y;
}

double Ease(double t) {
  t = std::clamp(t, 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

}  // namespace

Layout Build_Layout() {
  std::vector<Piece> pieces = Design();
  if (!Close_Loop(pieces)) {
    std::fprintf(stderr, "track: the circuit does not close with sensible straights\n");
    return {};
  }

  // Height keys: the grid (first two blocks) and the run-up stay level.
  std::vector<HeightKey> keys{{0, 0}, {2 * kGridBlockLength, 0}};
  double s = 0;
  std::vector<double> starts;
  for (const Piece& p : pieces) {
    starts.push_back(s);
    const double len = Length_Of(p);
    if (p.mid_height != kUnset) keys.push_back({s + len / 2, p.mid_height});
    s += len;
    keys.push_back({s, p.end_height});
  }
  const double lap = s;
  std::sort(keys.begin(), keys.end(), [](const HeightKey& a, const HeightKey& b) { return a.s < b.s; });
  for (size_t i = 1; i < keys.size(); ++i) {
    // Eased steps are steepest in the middle, at 1.5 times the average grade.
    const double grade = 1.5 * std::fabs(keys[i].y - keys[i - 1].y) / (keys[i].s - keys[i - 1].s);
    if (grade > kMaxGrade) {
      std::fprintf(stderr, "track: grade %.3f near s = %.0f is too steep\n", grade, keys[i].s);
      return {};
    }
  }

  Layout out;
  out.lap_length = lap;
  Pose pose{kCentreX, 0, 0};
  for (size_t pi = 0; pi < pieces.size(); ++pi) {
    const Piece& piece = pieces[pi];
    const double len = Length_Of(piece);
    const int turn = piece.turn > 0 ? 1 : piece.turn < 0 ? -1 : 0;

    // Distances of the rungs within the piece; the main straight starts with the grid blocks.
    std::vector<double> cuts{0};
    double from = 0;
    if (pi == 0) {
      cuts.push_back(kGridBlockLength);
      cuts.push_back(2 * kGridBlockLength);
      from = 2 * kGridBlockLength;
    }
    const int n = static_cast<int>(std::ceil((len - from) / (turn == 0 ? kStraightStep : kCurveStep)));
    for (int i = 1; i <= n; ++i) cuts.push_back(from + (len - from) * i / n);

    auto make_rung = [&](double t) {
      const Pose p = Advance(pose, piece, t);
      Rung r;
      r.s = starts[pi] + t;
      r.hx = std::sin(p.heading);
      r.hz = std::cos(p.heading);
      const double y = Height_At(keys, r.s);
      r.centre = {p.x, y, p.z};
      // Full bank once a fifth of the way in, easing out the same way.
      const double ramp = std::min(80.0, len / 5);
      const double bank = turn == 0 ? 0.0 : piece.bank * Ease(std::min(t, len - t) / ramp);
      const double right_up = turn > 0 ? -bank / 2 : bank / 2;  // the outside edge rises
      double nx, nz;
      Right_Of(p.heading, nx, nz);
      r.right = {p.x + kHalfWidth * nx, y + right_up, p.z + kHalfWidth * nz};
      r.left = {p.x - kHalfWidth * nx, y - right_up, p.z - kHalfWidth * nz};
      return r;
    };

    if (pi == 0) {
      Run grid{Surface::Start, 0, {}};
      for (int i = 0; i < 3; ++i) grid.rungs.push_back(make_rung(cuts[static_cast<size_t>(i)]));
      out.runs.push_back(grid);
      cuts.erase(cuts.begin(), cuts.begin() + 2);
    }
    Run run{turn == 0 ? Surface::Straight : Surface::Curve, turn, {}};
    run.rungs.push_back(out.runs.back().rungs.back());
    for (size_t i = 1; i < cuts.size(); ++i) run.rungs.push_back(make_rung(cuts[i]));
    out.runs.push_back(run);
    pose = Advance(pose, piece, len);
  }
  // The loop closes on the start line itself, not a float's width beside it.
  out.runs.back().rungs.back() = out.runs.front().rungs.front();
  out.runs.back().rungs.back().s = lap;
  return out;
}

}  // namespace trackgen
