// Frame pacing against a model display: a swap that blocks until the next refresh (or, for
// a display without vsync, returns at once), the game's frame work, and sleeps that wake a
// little late as real ones do. A refresh missed while the work would have fitted is the
// pacer's fault.
#include "platform/pacer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

struct Paced {
  int missed = 0;      // refreshes that showed no new frame
  double mean_ms = 0;  // mean time between swaps
};

// pacer.Sleep(now, period) -> ms to sleep, pacer.Woke(now) after it; the model runs
// `frames` frames of 40-75 % of a refresh period of work each.
template <class Pacer>
Paced Model(double hz, bool vsync, int frames, Pacer&& pacer) {
  const double period = 1000.0 / hz;
  std::mt19937 random(12345);
  std::uniform_real_distribution<double> work(0.40 * period, 0.75 * period), late(0.05, 0.15);
  double now = 0, first_swap = 0;
  long last_refresh = -1;
  Paced run;
  for (int f = 0; f < frames; ++f) {
    now += work(random);
    if (vsync) {
      const long refresh = long(std::ceil(now / period));
      now = refresh * period + 0.02;  // the swap returns just after the refresh it waited for
      if (last_refresh >= 0) run.missed += int(refresh - last_refresh - 1);
      last_refresh = refresh;
    }
    if (f == 0) first_swap = now;
    const double wait = pacer.Sleep(now, period);
    if (wait > 0) now += wait + late(random);
    pacer.Woke(now);
  }
  run.mean_ms = (now - first_swap) / (frames - 1);
  return run;
}

// The pacer the game had before: a deadline one period after the last, slept to whenever
// it lay ahead, whatever the swap had already waited.
struct OldPacer {
  double next = 0, period = 0;
  double Sleep(double now, double p) {
    period = p;
    return next > now && next - now <= period ? next - now : 0;
  }
  void Woke(double now) { next = std::max(now, next) + period; }
};

struct NewPacer {
  platform::FramePacer pacer;
  double Sleep(double now, double period) { return pacer.After_Swap(now, period); }
  void Woke(double) {}
};

TEST(Pacer, ABlockingSwapAloneSetsThePaceAndAnEarlySwapIsHeldToTheRefresh) {
  for (const double hz : {60.0, 144.0}) {
    const Paced before = Model(hz, true, 600, OldPacer{});
    EXPECT_GE(before.missed, 3) << hz << " Hz: the model shows the old pacer's fault";
    std::printf("%g Hz, old pacer: %d refreshes missed in 600 frames\n", hz, before.missed);

    const Paced vsync = Model(hz, true, 600, NewPacer{});
    EXPECT_EQ(vsync.missed, 0) << hz << " Hz with vsync";
    EXPECT_NEAR(vsync.mean_ms, 1000.0 / hz, 0.01) << hz << " Hz with vsync";

    const Paced early = Model(hz, false, 600, NewPacer{});
    EXPECT_NEAR(early.mean_ms, 1000.0 / hz, 0.01 * 1000.0 / hz) << hz << " Hz, swaps returning at once";
  }
}

}  // namespace
