#pragma once
// The game's 3D model: a mesh read from a text .x file, kept as one part per material group
// ready for indexed drawing, placed by a position, a rotation and a scale.
//
// Load takes only the file path: our device needs no display object to create textures,
// and nothing device-specific is decided at load time. Texture names in the file are
// resolved against the .x file's folder; parts naming the same file share one texture, and
// a texture that cannot be loaded leaves its part untextured. A part's lists hold exactly its vertices and indices (no
// spare element).
#include <cstdint>
#include <string>
#include <vector>

#include "core/types.h"
#include "gfx/mod3Denhance.h"
#include "mathmesh/xfile_reader.h"
#include "platform/records.h"
#include "platform/render.h"

// One material group.
struct MeshPart {
  std::vector<uint16_t> PartIndices;  // three per triangle
  std::vector<MeshVertex> PartVertices;
  D3DMaterial PartMaterial;
  mod3Denhance::Surface PartTexture;   // null: drawn untextured
  std::string PartTextureFile;         // full path of the file's texture, "" when none
  platform::GeometryRef PartGeometry;  // the lists kept on the device, made once
};

class XFileClass {
 public:
  // Added to the rotation every time Render runs.
  float SpinX = 0, SpinY = 0, SpinZ = 0;
  Matrix4 WorkMatrix;  // after Render: the last world matrix
  Matrix4 PositionMatrix, RotationMatrix, ScaleMatrix;
  i32 GroupCount = 0;
  std::vector<MeshPart> Parts;  // one empty part before the first Load
  Vector3 BoxMin, BoxMax;       // (0, 0, 0) until a Load succeeds
  Bool16 Loaded = kFalse;       // Render draws nothing while false

  XFileClass();   // identity matrices, one empty part
  ~XFileClass();  // releases every part's texture

  // Every part's texture becomes `texture` (a ship's skin over all its parts).
  void SetXTexture(const mod3Denhance::Surface& texture);
  // RotationMatrix = Rx(x) Rz(z) Ry(y) RotationMatrix: a model point turns about X, then Z, then Y.
  void Rotate(float x, float y, float z);
  // RotationMatrix = Rx(x) Rz(z) Ry(y).
  void SetRotation(float x, float y, float z);
  // PositionMatrix = T(dx, dy, dz) PositionMatrix.
  void MoveObject(float dx, float dy, float dz);
  // PositionMatrix = T(x, y, z).
  void SetPosition(float x, float y, float z);
  // Sets the diagonal of ScaleMatrix; its other entries keep their values.
  void AdjustScale(float x, float y, float z);

  // Loads the mesh at `file` (a full path), replacing the parts. On failure shows
  // "error loading xfile", logs the reason, leaves Loaded false and returns false.
  bool Load(const std::string& file);
  // Load without the message box or log line: "" on success, otherwise the reason.
  std::string Load_Quiet(const std::string& file);

  // While Loaded: adds the spin, sets the world transform to Scale x Rotation x Position
  // and draws every part with its texture and material. Call between begin and end scene.
  void Render(platform::Device3D* device);

  void GetMinExtent(float& x, float& y, float& z) const;
  void GetMaxExtent(float& x, float& y, float& z) const;
  // Recreates every part's texture from its PartTextureFile (parts without one keep theirs).
  void ReloadTextures();

  // The folder part of a path, up to and including its last '/' or '\', or "".
  static std::string Get_Path(const std::string& file);
  // The path of a texture named in a .x file, as found from the file's folder: backslashes
  // become slashes, and an absolute name keeps only its file name.
  static std::string Texture_Path(const std::string& folder, const std::string& name);
  // Appends the triangles of face data: each face of n vertices (n from the data when
  // vertices_per_face is 0) becomes the fan (i0 i1 i2) (i0 i2 i3) ... False, with `out`
  // unspecified, when the data is short or an index is not below vertex_count.
  static bool Append_Fan_Indices(const std::vector<int32_t>& face_data, int32_t vertices_per_face, int32_t vertex_count,
                                 std::vector<uint16_t>& out);

 private:
  std::string Build_Parts(const xfile::Model& model, const std::string& folder);
  void Draw_Part(MeshPart& part, platform::Device3D* device);
};
