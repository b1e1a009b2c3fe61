#pragma once
// Internal to the platform layer: the fixed-function emulation's shader sources.
namespace platform::detail {
extern const char* kFixedFunctionVertex;
extern const char* kFixedFunctionFragment;
}  // namespace platform::detail
