// A generated ship drawn by the real device (headless GL): culling shows the outside of every part.
#include <set>
#include <vector>

#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "support/screen_fixture.h"

namespace {

class ShipRenderTest : public DisplayTest {
 protected:
  // The ship from behind and above, as the chase camera sees it, with the given culling.
  std::vector<uint32_t> Draw(XFileClass& ship, uint32_t cull) {
    platform::Device3D& d = *mod3Denhance::D3DDevice;
    Matrix4 view, projection;
    modMATH::View_Matrix(view, Vector3{4, 6, -16}, Vector3{0, 0, 0}, Vector3{0, 1, 0}, 0);
    modMATH::Projection_Matrix(projection, 1, 1000, 0.8f);
    d.SetTransform(platform::TransformKind::View, view);
    d.SetTransform(platform::TransformKind::Projection, projection);
    d.SetRenderState(platform::rs::Lighting, uint32_t(-1));
    d.SetRenderState(platform::rs::CullMode, cull);
    mod3Denhance::Clear_Screen();
    d.BeginScene();
    ship.Render(&d);
    d.EndScene();
    return Read(0, 0, 640, 480);
  }
};

TEST_F(ShipRenderTest, CullingKeepsTheOutsideOfEveryPart) {
  dir_.Copy_From_Game("Objects");
  dir_.Copy_From_Game("Textures");
  XFileClass ship;
  ASSERT_EQ(ship.Load_Quiet(dir_.path() + "/Objects/Kestrel.x"), "");
  const std::vector<uint32_t> both = Draw(ship, platform::cull::None);
  const std::vector<uint32_t> normal = Draw(ship, platform::cull::CounterClockwise);
  const std::vector<uint32_t> reversed = Draw(ship, platform::cull::Clockwise);
  const uint32_t background = both[0];
  size_t ship_pixels = 0, normal_differs = 0, reversed_differs = 0;
  std::set<uint32_t> colours;
  for (size_t i = 0; i < both.size(); ++i) {
    if (both[i] == background) continue;
    ++ship_pixels;
    normal_differs += normal[i] != both[i];
    reversed_differs += reversed[i] != both[i];
    colours.insert(both[i]);
  }
  ASSERT_GT(ship_pixels, 5000u) << "the ship should fill a good part of the view";
  // Culling back faces changes nothing (they lie behind the front ones); the other way shows insides.
  EXPECT_LT(normal_differs, ship_pixels / 100);
  EXPECT_GT(reversed_differs, ship_pixels / 2);
  EXPECT_GE(colours.size(), 64u) << "textured and lit, not flat";
}

}  // namespace
