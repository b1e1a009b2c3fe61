#include "track/modTracks.h"

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

void Reset_Model() {
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
