#include <chrono>

#include "platform/platform.h"
#include "platform/testing.h"

namespace platform {
namespace {
bool g_manual = false;
int32_t g_manual_ms = 0;
const auto g_start = std::chrono::steady_clock::now();
}  // namespace

int32_t Tick_Count() {
  if (g_manual) return g_manual_ms;
  const auto ms =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - g_start).count();
  // A 32-bit millisecond counter, as the game's clock arithmetic expects.
  return static_cast<int32_t>(static_cast<uint32_t>(ms));
}

void Use_Manual_Clock(bool enabled) { g_manual = enabled; }
bool Manual_Clock() { return g_manual; }
void Advance_Manual_Clock(int32_t ms) {
  g_manual_ms = static_cast<int32_t>(static_cast<uint32_t>(g_manual_ms) + static_cast<uint32_t>(ms));
}
void Set_Manual_Clock(int32_t ms) { g_manual_ms = ms; }

}  // namespace platform
