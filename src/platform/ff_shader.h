#pragma once
// Internal to the platform layer: the fixed-function emulation's shader sources.
namespace platform::detail {
extern const char* kFixedFunctionVertex;
extern const char* kFixedFunctionFragment;  // after "#version 330 core" and the variant's constants
}  // namespace platform::detail
