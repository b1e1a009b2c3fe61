#pragma once
// Reader of text .x mesh files, the game's mesh builder: it reads the first mesh of the
// file, splits it into groups by material, keeps each polygon whole (the caller fans it)
// and regenerates the vertex normals with a crease angle. Binary and compressed .x files
// are refused. Nothing here touches the display.
//
// What is read: the first top-level `Mesh`; only when the file has none, every `Mesh` of
// its first top-level `Frame` hierarchy. Of each mesh: its first `MeshTextureCoords` and
// `MeshMaterialList`, `Material` inline or referenced by name, and `TextureFilename` /
// `TextureFileName`. Frame transforms are applied: each mesh's positions are multiplied by
// its frames' `FrameTransformMatrix` products, and under a mirroring transform each
// polygon's order is reversed so its front stays in front. Texture coordinates and
// material values a float cannot hold are refused, as are coordinates beyond 1e7.
// Skipped: templates, `MeshNormals` (normals are regenerated), vertex colours, skin data,
// animation and every other object. Frames referring to a mesh by name are not followed.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/records.h"

namespace xfile {

// Faces meeting at more than this angle keep separate normals (pi taken as 3.14 here).
inline constexpr float kCreaseAngle = 3.14f / 4;

// One material group as the mesh builder reports it.
struct Group {
  D3DMaterial material;
  std::string texture_name;  // exactly as written in the file; "" for none
  // Position, regenerated normal and texture coordinates; at most 65536 of them.
  std::vector<MeshVertex> vertices;
  // n when every face has n vertices; 0 when they differ and each face starts with its count.
  int32_t vertices_per_face = 0;
  // The faces' indices into `vertices`, in file order; every face has at least 3 vertices.
  std::vector<int32_t> face_data;
};

struct Model {
  std::vector<Group> groups;  // per mesh in file order, per material in list order; unused materials have none
  Vector3 box_min, box_max;   // over every position read (frame transforms applied)
};

// Parses a whole file held in memory. Returns "" on success, otherwise a one-line
// description of the first fault found (model is then left empty). Never reads outside
// `bytes`; every count and index is checked against the data before it is used.
std::string Read(std::string_view bytes, Model& model);

// Reads the file at `path` and parses it as Read does.
std::string Read_File(const std::string& path, Model& model);

}  // namespace xfile
