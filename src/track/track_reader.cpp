// The track file reader. Every count is checked against the bytes still unread before
// anything is sized or copied, so a short or hostile file can neither read past its data
// nor make us allocate more than the file itself could fill.
#include "track/track_reader.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace modTracks::detail {
namespace {

static_assert(std::endian::native == std::endian::little, "the track file is little-endian");

// Smallest possible records on disk: a strip with no vertices, a sector with empty lists,
// an empty counted string.
constexpr long long kMinStripBytes = 2 + 4 + 4 + 2;
constexpr long long kMinSectorBytes = 16 + 3 * (2 + 4 + 4);
constexpr long long kMinNameBytes = 2;
// Coordinates this far out are a broken file, not a big track.
constexpr float kMaxCoordinate = 1.0e6f;

class Cursor {
 public:
  explicit Cursor(std::string_view bytes) : p_(bytes.data()), left_(bytes.size()) {}
  long long Left() const { return static_cast<long long>(left_); }
  bool Take(void* out, size_t n) {
    if (n > left_) return false;
    if (n != 0) std::memcpy(out, p_, n);
    p_ += n;
    left_ -= n;
    return true;
  }
  bool I16(i16& v) { return Take(&v, sizeof v); }
  bool I32(i32& v) { return Take(&v, sizeof v); }

 private:
  const char* p_;
  size_t left_;
};

class Parser {
 public:
  Parser(std::string_view bytes, void (*yield)()) : in_(bytes), yield_(yield) {}

  bool Run(ParsedTrack& out) {
    std::string header;
    if (!Counted_String("the header", header)) return false;

    if (!Strip_Section("road", 0, out.Track, true)) return false;
    Yield();
    if (!Strip_Section("grass", 0, out.Grass, false)) return false;
    Yield();
    if (!Strip_Section("wall", -1, out.TrackWalls, false)) return false;
    Yield();
    if (!Sector_Section(out.TrackSector)) return false;
    Yield();
    if (!Texture_Section(out.TrackTexture)) return false;
    Yield();
    return Check_Texture_Indices(out) && Check_Block_Count(out.Track);
  }

  const std::string& Fault() const { return fault_; }

 private:
  bool Fail(std::string text) {
    fault_ = std::move(text);
    return false;
  }
  bool Short(const std::string& what, long long needed) {
    return Fail(what + " needs " + std::to_string(needed) + " bytes but only " + std::to_string(in_.Left()) +
                " are left (file truncated or count wrong)");
  }
  void Yield() {
    if (yield_ != nullptr) yield_();
  }

  bool Counted_String(const std::string& what, std::string& s) {
    i16 n = 0;
    if (!in_.I16(n)) return Short(what, 2);
    s.clear();
    if (n <= 0) return true;  // a length of 0 or less is the empty string
    if (n > in_.Left()) return Short(what, n);
    s.resize(static_cast<size_t>(n));
    return in_.Take(s.data(), s.size());
  }

  // Reads a section's upper index and checks that n + 1 records of at least min_bytes
  // each can still be in the file.
  bool Section_Count(const std::string& what, int lowest, long long min_bytes, i32& n) {
    if (!in_.I32(n)) return Short("the " + what + " count", 4);
    if (n < lowest)
      return Fail("the " + what + " section has count " + std::to_string(n) + " (lowest allowed is " +
                  std::to_string(lowest) + ")");
    const long long records = static_cast<long long>(n) + 1;
    const long long lowest_records = n == -1 ? 1 : records;  // -1 still stores one record
    if (lowest_records * min_bytes > in_.Left())
      return Short("the " + what + " section (" + std::to_string(lowest_records) + " records)",
                   lowest_records * min_bytes);
    return true;
  }

  // A 1-dimensional list header: dimension count, element count, lower bound.
  bool List_Header(const std::string& what, i32& count, i32& lower) {
    i16 dims = 0;
    if (!in_.I16(dims) || !in_.I32(count) || !in_.I32(lower)) return Short(what, 10);
    if (dims != 1) return Fail(what + " has dimension count " + std::to_string(dims) + " (expected 1)");
    if (count < 0) return Fail(what + " has a negative element count " + std::to_string(count));
    return true;
  }

  bool Strip(const std::string& what, TrackStrip& strip, bool road) {
    i32 count = 0, lower = 0;
    if (!List_Header(what, count, lower)) return false;
    if (lower != 0) return Fail(what + " starts its vertices at index " + std::to_string(lower) + " (expected 0)");
    const long long bytes = static_cast<long long>(count) * static_cast<long long>(sizeof(LitVertex));
    if (bytes + 2 > in_.Left()) return Short(what + " (" + std::to_string(count) + " vertices)", bytes + 2);
    if (road && (count < 4 || count % 2 != 0))
      return Fail(what + " has " + std::to_string(count) + " vertices (a road strip needs an even number, at least 4)");
    strip.Vertices.Resize(0, count - 1);
    in_.Take(strip.Vertices.Items().data(), static_cast<size_t>(bytes));
    in_.I16(strip.TextureIndex);
    for (int i = 0; i < count; ++i) {
      const LitVertex& v = strip.Vertices(i);
      for (float c : {v.x, v.y, v.z})
        if (!(std::fabs(c) <= kMaxCoordinate))
          return Fail(what + " vertex " + std::to_string(i) + " has an unusable coordinate");
    }
    return true;
  }

  bool Strip_Section(const char* kind, int lowest, IndexedArray<TrackStrip>& strips, bool road) {
    const std::string section = std::string(kind) + " strip";
    i32 n = 0;
    if (!Section_Count(section, lowest, kMinStripBytes, n)) return false;
    // The walls' -1 means "no walls" but still stores one record, kept at index -1.
    if (n == -1)
      strips.Resize(-1, -1);
    else
      strips.Resize(0, n);
    for (int i = strips.Lower(); i <= strips.Upper(); ++i)
      if (!Strip(section + " " + std::to_string(i), strips(i), road)) return false;
    return true;
  }

  bool Sector_Section(IndexedArray<SectorRecord>& sectors) {
    i32 n = 0;
    if (!Section_Count("sector", 0, kMinSectorBytes, n)) return false;
    sectors.Resize(0, n);
    for (int i = 0; i <= n; ++i) {
      const std::string what = "sector " + std::to_string(i);
      SectorRecord& s = sectors(i);
      if (!in_.Take(s.Fixed, sizeof s.Fixed)) return Short(what, sizeof s.Fixed);
      for (IndexedArray<i16>& list : s.Lists) {
        i32 count = 0, lower = 0;
        if (!List_Header(what, count, lower)) return false;
        if (static_cast<long long>(lower) + count - 1 > std::numeric_limits<i32>::max())
          return Fail(what + " has a list whose index range overflows");
        const long long bytes = 2ll * count;
        if (bytes > in_.Left()) return Short(what + " (a list of " + std::to_string(count) + ")", bytes);
        // An empty list keeps no bounds: lower - 1 may not even be a 32-bit number.
        if (count == 0)
          list.Resize(0, -1);
        else
          list.Resize(lower, static_cast<int>(static_cast<long long>(lower) + count - 1));
        in_.Take(list.Items().data(), static_cast<size_t>(bytes));
      }
    }
    return true;
  }

  bool Texture_Section(IndexedArray<TextureEntry>& textures) {
    i32 n = 0;
    if (!Section_Count("texture name", 0, kMinNameBytes, n)) return false;
    textures.Resize(0, n);
    for (int i = 0; i <= n; ++i)
      if (!Counted_String("texture name " + std::to_string(i), textures(i).TextureName)) return false;
    return true;
  }

  bool Check_Texture_Indices(const ParsedTrack& t) {
    const int last = t.TrackTexture.Upper();
    auto check = [&](const char* kind, const IndexedArray<TrackStrip>& strips) {
      for (int i = 0; i <= strips.Upper(); ++i) {
        const int ti = strips(i).TextureIndex;
        if (ti < 0 || ti > last)
          return Fail(std::string(kind) + " strip " + std::to_string(i) + " uses texture " + std::to_string(ti) +
                      " but the table holds 0.." + std::to_string(last));
      }
      return true;
    };
    // The walls' placeholder record at -1 is never drawn, so its index does not matter.
    return check("road", t.Track) && check("grass", t.Grass) && check("wall", t.TrackWalls);
  }

  bool Check_Block_Count(const IndexedArray<TrackStrip>& road) {
    long long blocks = 0;
    for (const TrackStrip& s : road.Items()) blocks += s.Vertices.Count() / 2 - 1;
    if (blocks > kMaxTrackBlocks)
      return Fail("the road has " + std::to_string(blocks) + " blocks, more than the " +
                  std::to_string(kMaxTrackBlocks) + " a racer can count");
    return true;
  }

  Cursor in_;
  void (*yield_)();
  std::string fault_;
};

}  // namespace

bool Parse_Track(std::string_view bytes, ParsedTrack& out, std::string& fault, void (*yield)()) {
  Parser p(bytes, yield);
  if (p.Run(out)) return true;
  fault = p.Fault();
  return false;
}

}  // namespace modTracks::detail
