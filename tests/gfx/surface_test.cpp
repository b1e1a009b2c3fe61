// Surfaces, textures and .dds files on the CPU side: no display is opened here.
#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "platform/testing.h"
#include "support/test_env.h"

using namespace mod3Denhance;
using platform::PixelFormat;

namespace {

void Put(std::string& b, std::initializer_list<uint32_t> words) {
  for (uint32_t v : words) b.append({char(v), char(v >> 8), char(v >> 16), char(v >> 24)});
}

// A .dds file as the game's textures are written: 16-bit A4R4G4B4, rows unpadded.
std::string Dds(uint32_t width, uint32_t height, const std::vector<uint16_t>& texels, uint32_t pitch = 0,
                uint32_t flags = 0x100F, uint32_t bit_count = 16) {
  std::string b = "DDS ";
  Put(b, {124, flags, height, width, pitch ? pitch : width * 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  Put(b, {32, 0x41, 0, bit_count, 0x0F00, 0x00F0, 0x000F, 0xF000, 0x1000, 0, 0, 0, 0});
  for (uint16_t t : texels) b.append({char(t), char(t >> 8)});
  return b;
}

Surface Decode(const std::string& b) { return Decode_DDS(reinterpret_cast<const uint8_t*>(b.data()), b.size()); }

// A 24-bit .bmp, bottom-up rows, from 0xRRGGBB values given top row first.
std::string Bmp(int w, int h, const std::vector<uint32_t>& rgb) {
  const int row = (w * 3 + 3) & ~3;
  std::string b = "BM";
  Put(b, {uint32_t(54 + row * h), 0, 54, 40, uint32_t(w), uint32_t(h), 0x00180001, 0, 0, 0, 0, 0, 0});
  for (int y = h - 1; y >= 0; --y) {
    for (int x = 0; x < w; ++x) b.append(reinterpret_cast<const char*>(&rgb[size_t(y * w + x)]), 3);  // B, G, R
    b.append(size_t(row - w * 3), '\0');
  }
  return b;
}

// Blit_Clipped of the whole source, with the source rectangle and position as it leaves them.
struct Blitted {
  Rect r;
  i16 x, y;
};
Blitted Blit(const Surface& dst, const Surface& src, int x, int y, u8 transparent) {
  Blitted b{Make_Rect(0, 0, i16(src->Width()), i16(src->Height())), i16(x), i16(y)};
  Blit_Clipped(dst, src, b.r, b.x, b.y, transparent);
  return b;
}

}  // namespace

TEST(DdsTest, DecodesTexelsWithTheirAlphaWithinBoundsAndRefusesWhatIsNotA16BitImage) {
  Surface t = Decode(Dds(2, 2, {0x8F00, 0xF0F0, 0x100F, 0x0000}));
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Format(), PixelFormat::A4R4G4B4);
  EXPECT_EQ((std::array{t->Pixel(0, 0), t->Pixel(1, 0), t->Pixel(0, 1), t->Pixel(1, 1)}),
            (std::array{0x88FF0000u, 0xFF00FF00u, 0x110000FFu, 0u}));
  EXPECT_FALSE(t->Color_Key());
  // Two of three rows present, the second one half.
  t = Decode(Dds(2, 3, {0x1111, 0x2222, 0x3333}));
  ASSERT_TRUE(t);
  EXPECT_EQ((std::array{t->Pixel(1, 0), t->Pixel(0, 1), t->Pixel(1, 1), t->Pixel(0, 2)}),
            (std::array{0x22222222u, 0x33333333u, 0u, 0u}));
  // A pitch far beyond the data is ignored: rows are read unpadded.
  t = Decode(Dds(2, 2, {0x1111, 0x2222, 0x3333, 0x4444}, 4000));
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Pixel(0, 1), 0x33333333u);
  // A padded pitch the data really has is honoured.
  t = Decode(Dds(2, 2, {0x1111, 0x2222, 0xDEAD, 0x3333, 0x4444}, 6));
  ASSERT_TRUE(t);
  EXPECT_EQ(std::pair(t->Pixel(0, 1), t->Pixel(1, 1)), std::pair(0x33333333u, 0x44444444u));

  std::string compressed = Dds(1, 1, {1});
  compressed[80] = 0x04;  // four-character-code pixel format
  for (const auto& [what, bytes] : {std::pair{"magic", std::string("XDS ") + Dds(1, 1, {1}).substr(4)},
                                    {"header cut short", Dds(1, 1, {1}).substr(0, 100)},
                                    {"32 bits", Dds(1, 1, {1}, 0, 0x100F, 32)},
                                    {"no width", Dds(0, 4, {})},
                                    {"too tall", Dds(4, 100000, {})},
                                    {"compressed", compressed}})
    EXPECT_FALSE(Decode(bytes)) << what;
}

TEST(SurfaceTest, FilesLoadByExtensionBitmapsScaleAroundTheirKeyAndLargeScreensTakeTheFinerPicture) {
  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Gfx/p.bmp";
  testenv::Write_File(path, Bmp(2, 2, {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF}));
  testenv::Write_File(dir.path() + "/Textures/a.DDS", Dds(1, 1, {0xF00F}));
  testenv::Write_File(dir.path() + "/Textures/fake.dds", "BM not a dds at all");
  Surface t = Create_Texture(dir.path() + "\\Textures\\a.DDS", 64, 64, kKeyBlack);
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Width(), 1);  // the file's size, and no colour key on .dds
  EXPECT_FALSE(t->Color_Key());
  EXPECT_FALSE(Create_Texture(dir.path() + "/Textures/fake.dds", 0, 0, 0));
  EXPECT_FALSE(Create_Texture(dir.path() + "/Textures/missing.dds", 0, 0, 0));
  // A texture with only one size given keeps the file's own size.
  t = Create_Texture(path, 0, 64, kKeyNone);
  ASSERT_TRUE(t);
  EXPECT_EQ(std::pair(t->Width(), t->Height()), std::pair(2, 2));
  Surface s;
  ASSERT_TRUE(Create_Surface(s, 4.5, 3.5, path, kKeyNone, kFalse));  // rounds half to even: 4 x 4
  ASSERT_EQ(std::pair(s->Width(), s->Height()), std::pair(4, 4));
  // Enlarged linearly: corners keep their colour, between them a blend a quarter of the way.
  EXPECT_EQ(s->Pixel(0, 0), 0xFFFF0000u);
  EXPECT_EQ(s->Pixel(3, 3), 0xFFFFFFFFu);
  EXPECT_EQ(s->Pixel(1, 0), 0xFFBF4000u) << "three quarters red, one quarter green";
  // Shrunk by area: each pixel the mean of the four it covers.
  ASSERT_TRUE(Create_Surface(s, 1, 1, path, kKeyNone, kFalse));
  EXPECT_EQ(s->Pixel(0, 0), 0xFF808080u);

  // A black-keyed row enlarged 2.25 times: the key lies where a pixel-by-pixel enlargement
  // puts it, and no other pixel takes any of the key's black into its colour.
  testenv::Write_File(path, Bmp(4, 1, {0x000000, 0xFF0000, 0x00FF00, 0x000000}));
  ASSERT_TRUE(Create_Surface(s, 9, 1, path, kKeyBlack, kFalse));
  for (int x = 0; x < 9; ++x) {
    const bool key = x * 4 / 9 == 0 || x * 4 / 9 == 3;
    const uint32_t c = s->Pixel(x, 0);
    EXPECT_EQ((c & 0xFFFFFFu) == 0, key) << "x " << x;
    if (!key) {
      EXPECT_GE(((c >> 16) & 0xFF) + ((c >> 8) & 0xFF), 254u) << "red and green undarkened, x " << x;
    }
  }
  EXPECT_FALSE(Create_Surface(s, 0, 0, dir.path() + "/Gfx/none.bmp", kKeyNone, kFalse));
  EXPECT_FALSE(s);
  testenv::Write_File(dir.path() + "/Gfx/p.bmp", Bmp(1, 1, {0xFF0000}));
  testenv::Write_File(dir.path() + "/Gfx/2x/p.bmp", Bmp(2, 2, {0x00FF00, 0x00FF00, 0x00FF00, 0x00FF00}));
  testenv::Write_File(dir.path() + "/Gfx/q.bmp", Bmp(1, 1, {0x0000FF}));
  for (const auto& [scale, file, argb] :
       {std::tuple{1.0f, "p", 0xFFFF0000u}, std::tuple{2.25f, "p", 0xFF00FF00u}, std::tuple{2.25f, "q", 0xFF0000FFu}}) {
    modMain::ScaleX = modMain::ScaleY = scale;
    ASSERT_TRUE(Create_Surface(s, 3, 3, dir.path() + "\\Gfx\\" + file + ".bmp", kKeyNone, kFalse));
    EXPECT_EQ(s->Pixel(1, 1), argb) << file << " at scale " << scale;
  }
  modMain::ScaleX = modMain::ScaleY = 1.0f;
}

TEST(SurfaceTest, ColourKeysFillsAndPointsFollowTheirRulesAndBlitsClipAgainstTheScreenAndSkipKeyPixels) {
  Surface s;
  ASSERT_TRUE(Create_Surface(s, 4, 4, "", kKeyMagenta, kTrue));
  EXPECT_EQ(s->Color_Key(), 0xFFFF00FFu);
  ASSERT_TRUE(Create_Surface(s, 4, 4, "", kKeyBlack, kTrue));
  EXPECT_EQ(s->Color_Key(), 0xFF000000u);
  ASSERT_TRUE(Create_Surface(s, 4, 4, "", 3, kTrue));
  EXPECT_FALSE(s->Color_Key());
  const Surface dds = Decode(Dds(1, 1, {0}));
  dds->Set_Color_Key(0x00FE01FFu);
  EXPECT_EQ(dds->Color_Key(), 0x00FF00FFu) << "held to 4 bits a channel";

  const Surface t = Create_Texture("", 2, 2, kKeyNone);
  ASSERT_TRUE(t);
  Fill_Rect(t, -5, -5, 1, 9, 0x80808080u);
  EXPECT_EQ(std::pair(t->Pixel(0, 1), t->Pixel(1, 0)), std::pair(0x80808080u, 0u));
  EXPECT_FALSE(Create_Texture("", 0, 8, kKeyNone));

  const Rect r = Make_Rect(10, 20, 30, 40);
  for (const auto& [x, y, in] : {std::tuple{10, 20, kTrue},
                                 {29, 39, kTrue},
                                 {30, 25, kFalse},
                                 {15, 40, kFalse},
                                 {9, 25, kFalse},
                                 {15, 19, kFalse}})
    EXPECT_EQ(Point_In_Rect(r, i16(x), i16(y)), in) << x << "," << y;
  modMain::ScreenWidth = 64;
  modMain::ScreenHeight = 48;
  Surface src = platform::Image::Create(32, 8, PixelFormat::X8R8G8B8);
  for (int x = 0; x < 32; ++x)
    for (int y = 0; y < 8; ++y) src->Set_Pixel(x, y, 0x010000u * uint32_t(x + 1) + uint32_t(y));
  Surface dst = platform::Image::Create(64, 48, PixelFormat::X8R8G8B8);
  Blitted b = Blit(dst, src, -10, 5, 0);  // source column 10 lands at x 0
  EXPECT_EQ(std::tuple(int(b.r.left), int(b.x), dst->Pixel(0, 5)), std::tuple(10, 0, 0xFF0B0000u));
  b = Blit(dst, src, 64 - 5, -3, 0);
  EXPECT_EQ(std::tuple(int(b.r.right), int(b.r.top), int(b.y)), std::tuple(5, 3, 0));
  EXPECT_EQ(std::pair(dst->Pixel(59, 0), dst->Pixel(63, 4)), std::pair(0xFF010003u, 0xFF050007u));
  const uint8_t* bytes = platform::Image_Bytes(*dst);
  const std::vector<uint8_t> before(bytes, bytes + 64 * 48 * 4);
  EXPECT_EQ(Blit(dst, src, -40, 30, 0).x, -40);  // nothing drawn, nothing changed
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + before.size()), before);
  Blit(dst, src, 10, 30, 2);  // an unknown transparency flag draws nothing
  EXPECT_EQ(dst->Pixel(10, 30), 0xFF000000u);

  Surface keyed;
  ASSERT_TRUE(Create_Surface(keyed, 3, 1, "", kKeyMagenta, kFalse));
  keyed->Set_Pixel(0, 0, 0x00FF00FF);
  keyed->Set_Pixel(1, 0, 0x00123456);
  keyed->Set_Pixel(2, 0, 0x00000000);  // black is not the key here
  Fill_Rect(dst, 0, 40, 8, 48, 0x00777777);
  Blit(dst, keyed, 2, 42, 1);
  EXPECT_EQ((std::array{dst->Pixel(2, 42), dst->Pixel(3, 42), dst->Pixel(4, 42)}),
            (std::array{0xFF777777u, 0xFF123456u, 0xFF000000u}));
  Blit(dst, keyed, 2, 42, 0);
  EXPECT_EQ(dst->Pixel(2, 42), 0xFFFF00FFu);
}
