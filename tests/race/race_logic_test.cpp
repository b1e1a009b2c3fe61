// Race logic without a display: times, start lights, frame passes, and five racers' races, many seeds.
#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "race/modGameLoop.h"
#include "support/recording_device.h"
#include "support/test_env.h"
#include "vehicle/create_racers.h"
#include "vehicle/racer_fixture.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

TEST(RaceTimes, SplitTimeHudTextAndStartLightFrames) {
  // ms, minutes, hundredths, text; 5999.5 hundredths rounds to even.
  const std::tuple<i32, i16, i16, std::string> times[] = {
      {59995, 0, 6000, "00:60:00"}, {59994, 0, 5999, "00:59:99"}, {60000, 1, 0, "01:00:00"},      {5, 0, 0, "00:00:00"},
      {15, 0, 2, "00:00:02"},       {83456, 1, 2346, "01:23:46"}, {3599999, 59, 6000, "59:60:00"}};
  for (const auto& [ms, m, h, text] : times) {
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
  void Drawn(const char* what) override { passes.push_back(States(what ? what : names[bound])); }
  std::string States(const std::string& what) {
    namespace rs = platform::rs;
    return Pass(what, states[rs::Lighting], states[rs::AlphaBlendEnable], states[rs::ZWriteEnable],
                states[rs::CullMode], states[rs::SrcBlend], states[rs::DestBlend]);
  }
};

class FramePasses : public ::testing::Test {
 protected:
  void SetUp() override {
    mod3Denhance::D3DDevice = &device_;
    Matrix4 projection;  // as the display's set-up leaves it, so meshes in view are drawn
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
  TrackWalls.Resize(-1, -1);
  device_.lit_first_x.clear();
  modGameLoop::Render_Race_Frame();
  EXPECT_EQ(Strips(), (std::vector<int>{0, 1, 2}));
}
// What each pass turns on the next turns off: a second frame shows each pass's own states and ends as it began.
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

constexpr int kRacers = 5, kSeeds = 10;
constexpr i32 kRaceLimit = 6 * 60 * 1000;  // three laps in six minutes, or something is wrong
// Walls are tested against the block a corner starts the frame on: a curve's outside may cost a few frames off.
constexpr int kMaxFramesOff = 3;

bool Over_Block(int index, float x, float z) { return Inside(modTracks::TrackBlock(index), x, z); }

bool Over_Own_Or_Neighbour(const clsHumanPlayer& r) {
  const int n = modTracks::TrackBlock.Count(), b = r.cCurrentTrackBlock();
  const float x = r.PositionX, z = r.PositionZ;
  return Over_Block(b, x, z) || Over_Block((b + 1) % n, x, z) || Over_Block((b + n - 1) % n, x, z);
}

struct Simulation : ::testing::Test {
  testenv::ScratchAppDir dir{"Tracks", "Objects", "Textures", "Data"};
  shipsdat::Catalogue cat;
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
    modTracks::Build_Track_Blocks();
    ASSERT_TRUE(shipsdat::Load(shipsdat::Path(), cat, error)) << error;
  }
  void TearDown() override { modMain::Players.clear(); }
  // Four computer racers and the player (autopiloted, or kind 2: driving itself) as seed grids them.
  void Grid(int seed, u8 player_kind = 1) {
    modMain::Randomize(static_cast<u32>(seed));
    Make_Players(kRacers);
    P(0).RacerKind = player_kind;
    P(0).cCurrentlySelectedShip = static_cast<i16>(seed % cat.Count);
    // Each slot holds its racer's footprint on its block, clear of the others (ships: about 2.5 by 5).
    for (int i = 0; i < kRacers; ++i) {
      ASSERT_TRUE(P(i).Reset_Car_Attributes(static_cast<i16>(i)));
      for (int k = 0; k < 4; ++k)
        EXPECT_TRUE(Over_Block(P(i).cCurrentTrackBlock(), RA::Corners(P(i))[k].x, RA::Corners(P(i))[k].z))
            << "grid slot " << i << " corner " << k;
      for (int j = 0; j < i; ++j)
        EXPECT_TRUE(std::fabs(P(i).PositionX - P(j).PositionX) >= 5 || std::fabs(P(i).PositionZ - P(j).PositionZ) >= 10)
            << "grid slots " << j << " and " << i;
    }
    modMain::GameClock = 0;
  }
  // Races each seed; returns by racer kind the most frames in a row off its block and neighbours.
  std::array<int, 3> Race(i32 frame_ms, int seeds, u8 player_kind) {
    std::array<int, 3> most_frames_off{};  // by RacerKind
    for (int seed = 1; seed <= seeds; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Grid(seed, player_kind);
      if (HasFatalFailure()) return most_frames_off;
      modMain::FrameTime = frame_ms;
      bool first_go = true;
      int off[kRacers] = {};
      for (i32 elapsed = frame_ms, finished = 0; finished < kRacers; elapsed += frame_ms) {
        if (elapsed > modGameLoop::kCountdownMs + kRaceLimit) {
          ADD_FAILURE() << "only " << finished << " racers finished";
          return most_frames_off;
        }
        modMain::GameClock += frame_ms;
        if (P(0).RacerKind == 1) Autopilot(P(0));
        modGameLoop::Update_Racers(elapsed, first_go);
        finished = 0;
        for (int i = 0; i < kRacers; ++i) {
          const clsHumanPlayer& r = P(i);
          if (std::isnan(r.PositionX + r.PositionY + r.PositionZ)) {
            ADD_FAILURE() << "racer " << i << " at NaN, frame " << elapsed / frame_ms;
            return most_frames_off;
          }
          off[i] = Over_Own_Or_Neighbour(r) ? 0 : off[i] + 1;
          most_frames_off[r.RacerKind] = std::max(most_frames_off[r.RacerKind], off[i]);
          finished += r.cFinishedRace;
        }
      }
      for (int i = 0; i < kRacers; ++i)
        for (int lap = 1; lap <= 3; ++lap) EXPECT_GT(P(i).cLapTime(lap), 0) << "racer " << i << " lap " << lap;
    }
    return most_frames_off;
  }
};

// 50 ms frames run as three steps and keep to the road as 60 Hz does; all self-steered (a 20 Hz autopilot drifts wide).
TEST_F(Simulation, FourComputerRacersAndThePlayerFinishThreeLapsAndStayOnTheBlocksAt16And50msFrames) {
  const auto off = Race(16, kSeeds, 1), slow = Race(50, kSeeds, 2);
  EXPECT_LE(off[1], kMaxFramesOff) << "player";
  EXPECT_LE(off[2], kMaxFramesOff) << "computer";
  EXPECT_LE(slow[2], kMaxFramesOff) << "50 ms frames";
  std::printf("frames off the blocks in a row, at most: player %d, computer %d; 50 ms frames %d\n", off[1], off[2],
              slow[2]);
}

}  // namespace
