// The graphics layer's per-frame work: a HUD line of text, a track's worth of batched
// strips, and the CPU blit that builds pictures. Each GPU case ends with a one-pixel
// read-back so the time includes the drawing itself, not just the queueing.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench_display.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"

namespace {

bool Display() { return benchdisplay::Open(640, 480); }

void Finish() {
  uint32_t pixel = 0;
  platform::Read_Backbuffer(Rect{0, 0, 1, 1}, &pixel);
  benchmark::DoNotOptimize(pixel);
}

void BM_DrawTextLine(benchmark::State& state) {
  if (!Display()) return state.SkipWithError("no display");
  for (auto _ : state) {
    modText::Draw_Text(10, 10, 0, "Lap 2/3  Time 01:23  Pos 3/5");
    Finish();
  }
}
BENCHMARK(BM_DrawTextLine);

// 300 strips of 40 lit vertices with a texture switch every 20 strips, as a race frame's
// road, grass and walls come.
void BM_TrackStrips(benchmark::State& state) {
  if (!Display()) return state.SkipWithError("no display");
  platform::Device3D& d = *mod3Denhance::D3DDevice;
  std::vector<LitVertex> strip(40);
  for (size_t i = 0; i < strip.size(); ++i)
    strip[i] = LitVertex{float(i / 2) * 2.0f, 0, 10.0f + float(i % 2) * 2.0f, 0, 0xFFFFFFFFu, 0, 0, 0};
  mod3Denhance::Surface textures[2] = {mod3Denhance::Create_Texture("", 64, 64, 0),
                                       mod3Denhance::Create_Texture("", 64, 64, 0)};
  d.SetRenderState(platform::rs::Lighting, 0);
  for (auto _ : state) {
    mod3Denhance::Clear_Screen();
    for (int s = 0; s < 300; ++s) {
      d.SetTexture(0, textures[(s / 20) % 2]);
      d.DrawPrimitive(platform::Primitive::TriangleStrip, strip.data(), int(strip.size()));
    }
    Finish();
  }
  d.SetTexture(0, nullptr);
}
BENCHMARK(BM_TrackStrips);

void BM_MemoryBlitKeyed(benchmark::State& state) {
  auto src = platform::Image::Create(256, 256, platform::PixelFormat::X8R8G8B8);
  auto dst = platform::Image::Create(640, 480, platform::PixelFormat::X8R8G8B8);
  src->Set_Color_Key(0);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x) src->Set_Pixel(x, y, (x ^ y) & 1 ? 0x00FFFFFFu : 0);
  for (auto _ : state) {
    platform::Blit(*dst, *src, Rect{0, 0, 256, 256}, 100, 100, true);
    benchmark::DoNotOptimize(platform::Image_Bytes(*dst));
  }
}
BENCHMARK(BM_MemoryBlitKeyed);

}  // namespace
