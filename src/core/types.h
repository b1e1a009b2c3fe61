#pragma once
// The widths the game's records and globals are declared with.
#include <cstdint>

using u8 = std::uint8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using u32 = std::uint32_t;
using f32 = float;

// 16-bit boolean of the game's records and globals: true is -1, false is 0.
using Bool16 = std::int16_t;
inline constexpr Bool16 kTrue = -1;
inline constexpr Bool16 kFalse = 0;
// A flag counts as set only when it holds the true value.
inline constexpr bool Is_Set(Bool16 f) { return f == kTrue; }
inline constexpr Bool16 To_Bool16(bool b) { return b ? kTrue : kFalse; }
