#pragma once
// Heap allocations made by the benchmark process so far; the per-frame benchmarks report
// how many a frame makes (the game's frames should make none).
#include <cstdint>

namespace benchalloc {
uint64_t Count();
}
