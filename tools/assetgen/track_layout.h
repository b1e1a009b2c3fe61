#pragma once
// The generated circuit's geometry: a closed centre line of straights and arcs with a
// smooth height profile and banking, cut into rungs (cross-sections of the road).
#include <vector>

namespace trackgen {

struct Point3 {
  double x = 0, y = 0, z = 0;
};

struct Rung {
  double s = 0;           // distance along the centre line from the start line
  Point3 centre;          // centre line point (y = centre height)
  double hx = 0, hz = 0;  // unit heading (horizontal)
  Point3 right, left;     // road edges; right is +x when heading +z
};

enum class Surface { Start, Straight, Curve };

// One stretch of road drawn with one texture; its first rung is the previous run's last.
struct Run {
  Surface surface = Surface::Straight;
  int turn = 0;  // +1 right-hand curve, -1 left-hand, 0 straight
  std::vector<Rung> rungs;
};

struct Layout {
  std::vector<Run> runs;  // in driving order; the last run's last rung is the first run's first
  double lap_length = 0;
};

// Builds the circuit. Deterministic. Returns an empty layout if a design rule fails
// (the message goes to standard error).
Layout Build_Layout();

}  // namespace trackgen
