#pragma once
// Frame pacing after the swap, as plain arithmetic on millisecond times so a model of a
// display can drive it. Where the swap waits for the refresh, frames already come one
// refresh apart and the pacer asks for no sleep: sleeping there only risks missing the
// next refresh. Only when swaps return early (no vsync, a compositor ignoring the request)
// does it hold each frame back to one refresh period after the last.
namespace platform {

class FramePacer {
 public:
  // Called right after each swap with the time now and the refresh period; returns how
  // long to sleep (0 or more). The next frame is taken to start after that sleep.
  double After_Swap(double now_ms, double period_ms) {
    if (!started_) {
      started_ = true;
      last_ = now_ms;
      return 0;
    }
    // A swap that held us for (nearly) a whole period came from the display itself. The
    // margin takes in the display's jitter without ever sleeping on a waiting swap.
    if (now_ms - last_ >= period_ms * kWaitedShare || now_ms < last_) {
      last_ = now_ms;
      return 0;
    }
    // Early swap: the refresh period is ours to keep. The target, not the waking time,
    // becomes the frame's start, so oversleeping does not drift the frames later.
    const double wait = last_ + period_ms - now_ms;
    last_ += period_ms;
    return wait;
  }
  void Reset() { started_ = false; }

 private:
  static constexpr double kWaitedShare = 0.9;
  bool started_ = false;
  double last_ = 0;
};

}  // namespace platform
