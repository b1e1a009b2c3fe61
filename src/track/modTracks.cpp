#include "track/modTracks.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "core/log.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"
#include "track/track_reader.h"

namespace modTracks {

// Before the first race the model looks as race teardown leaves it.
IndexedArray<TrackStrip> Track(0, 0);
IndexedArray<TrackStrip> Grass(0, 0);
IndexedArray<TrackStrip> TrackWalls(0, 0);
IndexedArray<TextureEntry> TrackTexture(0, 0);
IndexedArray<TrackBlockRecord> TrackBlock(0, 0);

namespace {
IndexedArray<SectorRecord> TrackSector(0, 0);

// Every strip of the loaded track kept on the device: road, ground and walls in that order,
// with where each set's first strip sits among the parts, and each strip's first vertex
// and length (a strip changed since is sent as it is).
struct KeptStrip {
  LitVertex first;
  size_t count = 0;
};
struct KeptStrips {
  platform::GeometryRef geometry;
  int first[3] = {0, 0, 0};
  std::vector<KeptStrip> strips;
} g_kept;

const IndexedArray<TrackStrip>& Set_Of(StripSet set) {
  return set == StripSet::Road ? Track : set == StripSet::Ground ? Grass : TrackWalls;
}

void Keep_Strips() {
  g_kept = KeptStrips{};
  if (mod3Denhance::D3DDevice == nullptr) return;
  std::vector<LitVertex> vertices;
  std::vector<int> lengths;
  for (StripSet set : {StripSet::Road, StripSet::Ground, StripSet::Walls}) {
    g_kept.first[int(set)] = int(lengths.size());
    for (const TrackStrip& s : Set_Of(set).Items()) {
      const std::vector<LitVertex>& v = s.Vertices.Items();
      g_kept.strips.push_back(KeptStrip{v.empty() ? LitVertex{} : v.front(), v.size()});
      vertices.insert(vertices.end(), v.begin(), v.end());
      lengths.push_back(int(v.size()));
    }
  }
  g_kept.geometry = mod3Denhance::D3DDevice->MakeGeometry(vertices.data(), lengths.data(), int(lengths.size()));
}

void Reset_Model() {
  g_kept = KeptStrips{};
  Track.Resize(0, 0);
  Grass.Resize(0, 0);
  TrackWalls.Resize(0, 0);
  TrackSector.Resize(0, 0);
  TrackTexture.Resize(0, 0);
  TrackBlock.Resize(0, 0);
}

void Pump() { platform::Pump_Messages(); }

bool Report(std::string* error, const std::string& name, const std::string& fault) {
  if (error != nullptr) *error = "Track file " + name + ": " + fault;
  Reset_Model();
  return false;
}

bool Parse_Into_Model(std::string_view bytes, const std::string& name, std::string* error, void (*yield)()) {
  detail::ParsedTrack parsed;
  std::string fault;
  if (!detail::Parse_Track(bytes, parsed, fault, yield)) return Report(error, name, fault);
  g_kept = KeptStrips{};
  Track = std::move(parsed.Track);
  Grass = std::move(parsed.Grass);
  TrackWalls = std::move(parsed.TrackWalls);
  TrackSector = std::move(parsed.TrackSector);
  TrackTexture = std::move(parsed.TrackTexture);
  // Blocks of an earlier track must not outlive it; Build_Track_Blocks makes the new ones.
  TrackBlock.Resize(0, 0);
  return true;
}

Vector3 Unit_Edge_Normal(const Vector3& from, const Vector3& to) {
  Vector3 n{to.z - from.z, 0.0f, from.x - to.x};
  modMATH::Vector_Normalize(n);
  return n;
}

}  // namespace

bool Load_Track_From_Bytes(std::string_view bytes, const std::string& name, std::string* error) {
  return Parse_Into_Model(bytes, name, error, nullptr);
}

bool Load_Track_From_Path(const std::string& path, std::string* error) {
  std::ifstream f(path, std::ios::binary);
  if (!f) return Report(error, path, "cannot be opened (missing or unreadable)");
  f.seekg(0, std::ios::end);
  const std::streamoff size = f.tellg();
  if (size < 0) return Report(error, path, "cannot be read");
  if (size > kMaxTrackFileBytes)
    return Report(error, path, "is " + std::to_string(size) + " bytes, more than a track file may be");
  std::string bytes(static_cast<size_t>(size), '\0');
  f.seekg(0, std::ios::beg);
  if (!f.read(bytes.data(), size)) return Report(error, path, "cannot be read");
  f.close();
  if (!Parse_Into_Model(bytes, path, error, &Pump)) return false;
  Load_Track_Textures();
  Keep_Strips();
  return true;
}

bool Load_Track(std::string* error) { return Load_Track_From_Path(platform::Game_Path(kTrackFile), error); }

void Load_Track_Textures() {
  for (int i = TrackTexture.Lower(); i <= TrackTexture.Upper(); ++i) {
    TextureEntry& t = TrackTexture(i);
    // Names are used exactly as stored: case matters on this file system.
    t.Texture = mod3Denhance::Create_Texture(platform::Game_Path("\\Textures\\" + t.TextureName), 0, 0, 0);
    Pump();
  }
}

void Draw_Strip(platform::Device3D& device, StripSet set, int i) {
  const IndexedArray<TrackStrip>& strips = Set_Of(set);
  if (!strips.Contains(i)) return;
  const std::vector<LitVertex>& v = strips(i).Vertices.Items();
  if (v.size() < 3) return;
  const int part = g_kept.first[int(set)] + i - strips.Lower();
  const bool kept = g_kept.geometry && size_t(part) < g_kept.strips.size() &&
                    g_kept.strips[size_t(part)].count == v.size() &&
                    std::memcmp(&g_kept.strips[size_t(part)].first, v.data(), sizeof(LitVertex)) == 0;
  if (kept)
    device.DrawGeometry(*g_kept.geometry, part, 1);
  else
    device.DrawPrimitive(platform::Primitive::TriangleStrip, v.data(), static_cast<int>(v.size()));
}

void Build_Track_Blocks() {
  // Count first so the list is sized once; the numbering is the same as growing it.
  int total = 0;
  for (const TrackStrip& s : Track.Items()) {
    // A strip of c vertices has (c - 2) / 2 quads; an odd count (which the loader
    // refuses) never makes us read a vertex the strip does not have.
    const int c = s.Vertices.Count();
    if (c >= 4) total += (c - 2) / 2;
  }
  TrackBlock.Resize(0, total > 0 ? total - 1 : 0);

  int b = 0;
  for (const TrackStrip& s : Track.Items()) {
    const std::vector<LitVertex>& v = s.Vertices.Items();
    const int m = v.size() >= 4 ? static_cast<int>(v.size() - 2) / 2 : 0;
    for (int k = 1; k <= m; ++k, ++b) {
      TrackBlockRecord& blk = TrackBlock(b);
      for (int j = 0; j < 4; ++j) {
        const LitVertex& p = v[static_cast<size_t>(2 * (k - 1) + j)];
        blk.Corner[j] = Vector3{p.x, p.y, p.z};
      }
      const Vector3* c = blk.Corner;
      blk.EdgeNormal[0] = Unit_Edge_Normal(c[0], c[2]);  // right side
      blk.EdgeNormal[1] = Unit_Edge_Normal(c[3], c[1]);  // left side
      blk.EdgeNormal[2] = Unit_Edge_Normal(c[2], c[3]);  // front
      blk.EdgeNormal[3] = Unit_Edge_Normal(c[1], c[0]);  // back
      // Strict comparisons: on a tie the lower corner index stays.
      blk.MinXCorner = blk.MinZCorner = blk.MaxXCorner = blk.MaxZCorner = 0;
      for (u8 j = 1; j < 4; ++j) {
        if (c[blk.MinXCorner].x > c[j].x) blk.MinXCorner = j;
        if (c[blk.MinZCorner].z > c[j].z) blk.MinZCorner = j;
        if (c[blk.MaxXCorner].x < c[j].x) blk.MaxXCorner = j;
        if (c[blk.MaxZCorner].z < c[j].z) blk.MaxZCorner = j;
      }
    }
  }
}

void Clear_Track() {
  Release_Track_Textures();
  Empty_Track_Arrays();
}

void Release_Track_Textures() {
  for (int i = TrackTexture.Lower(); i <= TrackTexture.Upper(); ++i) {
    TrackTexture(i).Texture.reset();
    modMain::Write_Log("TrackTexture(" + std::to_string(i) + ").Texture = Nothing");
  }
}

void Empty_Track_Arrays() {
  g_kept = KeptStrips{};
  Track.Resize(0, 0);
  modMain::Write_Log("Track");
  TrackWalls.Resize(0, 0);
  modMain::Write_Log("TrackWalls");
  Grass.Resize(0, 0);
  modMain::Write_Log("Grass");
  TrackTexture.Resize(0, 0);
  modMain::Write_Log("TrackTexture");
  TrackBlock.Resize(0, 0);
  modMain::Write_Log("TrackBlock");
  TrackSector.Resize(0, 0);
  modMain::Write_Log("TrackSector");
}

const IndexedArray<SectorRecord>& Sectors() { return TrackSector; }

}  // namespace modTracks
