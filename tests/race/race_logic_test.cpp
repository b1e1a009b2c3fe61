// Race logic without a display: times, start lights and frame passes.
#include <map>
#include <tuple>

#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "race_fixture.h"
#include "support/recording_device.h"
#include "vehicle/racer_fixture.h"

namespace {

using race_test::Fill;
using race_test::Strip;

TEST(RaceTimes, SplitTimeHudTextAndStartLightFrames) {
  // ms, minutes, hundredths, text; 5999.5 hundredths rounds to even.
  for (const auto& [ms, m, h, text] :
       std::vector<std::tuple<i32, i16, i16, std::string>>{{59995, 0, 6000, "00:60:00"},
                                                           {59994, 0, 5999, "00:59:99"},
                                                           {60000, 1, 0, "01:00:00"},
                                                           {5, 0, 0, "00:00:00"},
                                                           {15, 0, 2, "00:00:02"},
                                                           {83456, 1, 2346, "01:23:46"},
                                                           {3599999, 59, 6000, "59:60:00"}}) {
    i16 minutes = -1, hundredths = -1;
    modGameLoop::Split_Time(minutes, hundredths, ms);
    EXPECT_EQ(std::make_pair(minutes, hundredths), std::make_pair(m, h)) << ms;
    EXPECT_EQ(modGameLoop::Time_Text(ms), text) << ms;
  }
  for (const auto& [elapsed, left] :
       std::vector<std::pair<i32, int>>{{1000, 0}, {1001, 53}, {2001, 106}, {3000, 106}, {3001, 159}})
    EXPECT_EQ(modGameLoop::Start_Light_Left(elapsed), left) << elapsed;
}

// What a draw draws, then its lighting, blending, depth writes, culling and blend factors.
std::string Pass(const std::string& what, uint32_t lit, uint32_t blended, uint32_t depth_writes, uint32_t cull,
                 uint32_t src = platform::blend::SrcAlpha, uint32_t dest = platform::blend::InvSrcAlpha) {
  return what + " L" + std::to_string(lit) + " B" + std::to_string(blended) + " Z" + std::to_string(depth_writes) +
         " C" + std::to_string(cull) + " " + std::to_string(src) + "/" + std::to_string(dest);
}

// Records, with each draw, what it draws and the states it is drawn with.
class PassDevice : public RecordingDevice {
 public:
  std::vector<std::string> passes;  // as Pass writes them
  std::map<platform::ImageRef, std::string> names;
  void SetRenderState(uint32_t s, uint32_t v) override { RecordingDevice::SetRenderState(s, now_[s] = v); }
  void SetTexture(int stage, const platform::ImageRef& t) override { RecordingDevice::SetTexture(stage, bound_ = t); }
  void DrawPrimitive(platform::Primitive p, const ScreenVertex* v, int n) override {
    Log(), RecordingDevice::DrawPrimitive(p, v, n);
  }
  void DrawPrimitive(platform::Primitive p, const LitVertex* v, int n) override {
    Log(), RecordingDevice::DrawPrimitive(p, v, n);
  }
  void DrawGeometry(const platform::Geometry& g, int first, int count) override {
    const size_t before = draws.size();
    RecordingDevice::DrawGeometry(g, first, count);
    if (draws.size() > before) Log("body");
  }
  std::string States(const std::string& what) {
    namespace rs = platform::rs;
    return Pass(what, now_[rs::Lighting], now_[rs::AlphaBlendEnable], now_[rs::ZWriteEnable], now_[rs::CullMode],
                now_[rs::SrcBlend], now_[rs::DestBlend]);
  }

 private:
  void Log(const char* what = nullptr) { passes.push_back(States(what ? what : names[bound_])); }
  std::map<uint32_t, uint32_t> now_;
  platform::ImageRef bound_;
};

class FramePasses : public ::testing::Test {
 protected:
  void SetUp() override {
    mod3Denhance::D3DDevice = &device_;
    Matrix4 projection;  // as the display's set-up leaves it, so meshes in view are drawn
    modMATH::Identity_Matrix(projection);
    modMATH::Projection_Matrix(projection, 1.0f, 1500.0f, 3.14159f / 2.0f);
    device_.SetTransform(platform::TransformKind::Projection, projection);
    modMain::Create_Racers(modMain::NumOpponents = 0);
    modGameLoop::SkySurf = Tex("sky"), modGameLoop::CarThrustSurf = Tex("flame"), modGameLoop::MiniMapSurf = Tex("map");
  }
  void TearDown() override {
    mod3Denhance::D3DDevice = nullptr;
    modMain::Players.clear();
    modTracks::Clear_Track();
  }
  platform::ImageRef Tex(const std::string& name) {
    auto t = platform::Image::Create(1, 1, platform::PixelFormat::A8R8G8B8);
    device_.names[t] = name;
    return t;
  }
  // A strip whose first vertex's x (1000 + id) names it in the recorded lit draws.
  static modTracks::TrackStrip Id(int id, i16 texture) {
    return Strip({{1000.0f + id, 0}, {0, 0}, {0, 1}, {1, 1}}, texture);
  }
  std::vector<int> Strips() const {
    std::vector<int> ids;
    for (float x : device_.lit_first_x)
      if (x >= 1000) ids.push_back(static_cast<int>(x) - 1000);
    return ids;
  }
  void Textures(std::vector<const char*> names) {
    modTracks::TrackTexture.Resize(0, static_cast<int>(names.size()) - 1);
    for (size_t i = 0; i < names.size(); ++i) modTracks::TrackTexture(int(i)) = {Tex(names[i]), names[i]};
  }
  PassDevice device_;
};

TEST_F(FramePasses, TexturesBindOnlyOnANameChangeAndSeeThroughWallsWaitForTheRacers) {
  using namespace modTracks;
  // Entries 4 and 5 share their files' names with 0 and 3: each file binds once.
  Textures({"Road.bmp", "Glass.dds", "Wall.bmp", "Fence.DDS", "Road.bmp", "Fence.DDS"});
  Fill(Track, {Id(0, 0), Id(1, 4)});
  Fill(Grass, {Id(2, 1), Id(3, 2), Id(4, 2)});  // only the first ground strip is drawn
  // 5: the .dds just bound, drawn at once; 6, 7: deferred (binding nothing yet); 8: a plain wall.
  Fill(TrackWalls, {Id(5, 1), Id(6, 3), Id(7, 5), Id(8, 2)});
  modGameLoop::Render_Race_Frame();
  EXPECT_EQ(Strips(), (std::vector<int>{0, 1, 2, 5, 8, 6, 7}));
  std::vector<std::string> bound;
  for (const auto& t : device_.textures)
    if (t) bound.push_back(device_.names[t]);
  // The sky goes behind the solid track, before anything blended.
  EXPECT_EQ(bound, (std::vector<std::string>{"Road.bmp", "Glass.dds", "Wall.bmp", "sky", "flame", "flame", "Fence.DDS",
                                             "map"}));
  EXPECT_EQ(modGameLoop::TransparentWalls.Items(), (std::vector<i16>{1, 2}));
  // No walls at all: no wall pass.
  TrackWalls.Resize(-1, -1);
  device_.lit_first_x.clear();
  modGameLoop::Render_Race_Frame();
  EXPECT_EQ(Strips(), (std::vector<int>{0, 1, 2}));
}
// What each pass turns on the next turns off: a frame drawn after another shows each pass with
// exactly the states it needs, and leaves them as the frame found them.
TEST_F(FramePasses, EachPassDrawsWithItsOwnStatesAndTheFrameEndsAsItBegan) {
  using namespace modTracks;
  Textures({"Road.bmp", "Glass.dds"});
  Fill(Track, {Id(0, 0)});
  Fill(Grass, {Id(1, 0)});
  Fill(TrackWalls, {Id(2, 0), Id(3, 1)});
  clsHumanPlayer& p = *modMain::Players[0];
  RA::ShadowTexture(p) = Tex("shadow");
  RA::Mesh(p) = std::make_unique<XFileClass>();
  RA::Mesh(p)->Loaded = kTrue;
  RA::Mesh(p)->Parts[0].PartIndices = {0, 1, 2};
  RA::Mesh(p)->Parts[0].PartVertices.resize(3);
  modGameLoop::Render_Race_Frame();
  device_.passes.clear();
  modGameLoop::Render_Race_Frame();
  const uint32_t none = platform::cull::None, ccw = platform::cull::CounterClockwise, one = platform::blend::One;
  EXPECT_EQ(device_.passes, (std::vector<std::string>{
                                Pass("Road.bmp", 0, 0, 1, none), Pass("Road.bmp", 0, 0, 1, none),  // road, ground,
                                Pass("Road.bmp", 0, 0, 1, none), Pass("sky", 0, 0, 1, ccw),        // wall, sky
                                Pass("shadow", 0, 1, 0, ccw), Pass("flame", 0, 1, 0, ccw),
                                Pass("body", 1, 0, 1, ccw),  // lit, solid, hiding what is behind
                                Pass("flame", 0, 1, 0, ccw), Pass("Glass.dds", 0, 1, 1, none),
                                Pass("map", 0, 1, 0, ccw, one, one)}));  // added to the scene
  EXPECT_EQ(device_.States("after the frame"), Pass("after the frame", 0, 0, 1, ccw));
}

TEST_F(FramePasses, ChaseCameraClosesInOnAStillShipAndSitsBehindItsHeading) {
  clsHumanPlayer& p = *modMain::Players[0];
  p.PositionX = 100, p.PositionY = 2, p.PositionZ = -50;
  modGameLoop::CameraDistance = 20;
  modGameLoop::Render_Race_Frame();
  EXPECT_FLOAT_EQ(modGameLoop::CameraDistance, 19.9f);
  for (int i = 0; i < 199; ++i) modGameLoop::Render_Race_Frame();
  EXPECT_EQ(modGameLoop::CameraDistance, 0.0f);
  // The eye, 6 behind the ship along its heading and 5 above, is the view's origin.
  p.cOrientation = 1.570795f;
  modGameLoop::Render_Race_Frame();
  const Vector3 at = modMATH::Transform_Point({106, 7, -50}, device_.view);
  EXPECT_NEAR(std::abs(at.x) + std::abs(at.y) + std::abs(at.z), 0, 1e-3);
}

}  // namespace
