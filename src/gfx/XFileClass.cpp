#include "gfx/XFileClass.h"

#include <map>

#include "core/log.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"

namespace {

Matrix4 Identity() {
  Matrix4 m;
  modMATH::Identity_Matrix(m);
  return m;
}

// Rx(x) x Rz(z) x Ry(y): turns a model point about X, then Z, then Y.
Matrix4 Rotation_XZY(float x, float y, float z) {
  Matrix4 rx, ry, rz, r;
  modMATH::Rotate_X_Matrix(rx, x);
  modMATH::Rotate_Y_Matrix(ry, y);
  modMATH::Rotate_Z_Matrix(rz, z);
  modMATH::Matrix_Multiply(r, rx, rz);
  modMATH::Matrix_Multiply(r, r, ry);
  return r;
}

void Make_Geometry(MeshPart& part, platform::Device3D& device) {
  if (part.PartIndices.empty()) return;
  part.PartGeometry = device.MakeGeometry(part.PartVertices.data(), int(part.PartVertices.size()),
                                          part.PartIndices.data(), int(part.PartIndices.size()));
}

}  // namespace

XFileClass::XFileClass()
    : WorkMatrix(Identity()),
      PositionMatrix(Identity()),
      RotationMatrix(Identity()),
      ScaleMatrix(Identity()),
      Parts(1) {}

XFileClass::~XFileClass() {
  for (MeshPart& p : Parts) p.PartTexture = nullptr;
}

void XFileClass::SetXTexture(const mod3Denhance::Surface& texture) {
  for (MeshPart& p : Parts) p.PartTexture = texture;
}

void XFileClass::Rotate(float x, float y, float z) {
  modMATH::Matrix_Multiply(RotationMatrix, Rotation_XZY(x, y, z), RotationMatrix);
}

void XFileClass::SetRotation(float x, float y, float z) { RotationMatrix = Rotation_XZY(x, y, z); }

void XFileClass::MoveObject(float dx, float dy, float dz) {
  Matrix4 t;
  modMATH::Make_Translation_Matrix(t, Vector3{dx, dy, dz});
  modMATH::Matrix_Multiply(PositionMatrix, t, PositionMatrix);
}

void XFileClass::SetPosition(float x, float y, float z) {
  modMATH::Make_Translation_Matrix(PositionMatrix, Vector3{x, y, z});
}

void XFileClass::AdjustScale(float x, float y, float z) {
  ScaleMatrix._11 = x;
  ScaleMatrix._22 = y;
  ScaleMatrix._33 = z;
}

bool XFileClass::Load(const std::string& file) {
  const std::string error = Load_Quiet(file);
  if (error.empty()) return true;
  modMain::Write_Log("error loading xfile " + file + ": " + error);
  platform::Message_Box("error loading xfile");
  return false;
}

std::string XFileClass::Load_Quiet(const std::string& file) {
  Loaded = kFalse;
  xfile::Model model;
  std::string error = xfile::Read_File(file, model);
  if (error.empty()) error = Build_Parts(model, Get_Path(file));
  if (error.empty()) Loaded = kTrue;
  return error;
}

std::string XFileClass::Build_Parts(const xfile::Model& model, const std::string& folder) {
  // Built aside so that a fault leaves the previous parts as they were.
  std::vector<MeshPart> parts(model.groups.size());
  std::map<std::string, mod3Denhance::Surface> textures;  // parts naming one file share it
  for (size_t g = 0; g < model.groups.size(); ++g) {
    const xfile::Group& group = model.groups[g];
    MeshPart& part = parts[g];
    if (!Append_Fan_Indices(group.face_data, group.vertices_per_face, int32_t(group.vertices.size()), part.PartIndices))
      return "bad face data in group " + std::to_string(g);
    part.PartVertices = group.vertices;
    part.PartMaterial = group.material;
    if (!group.texture_name.empty()) {
      part.PartTextureFile = Texture_Path(folder, group.texture_name);
      const auto [it, fresh] = textures.emplace(part.PartTextureFile, nullptr);
      if (fresh) it->second = mod3Denhance::Create_Texture(part.PartTextureFile, 0, 0, 0);
      part.PartTexture = it->second;
    }
  }
  // Kept on the device now, so the first frame that draws the mesh uploads nothing.
  if (mod3Denhance::D3DDevice != nullptr)
    for (MeshPart& part : parts) Make_Geometry(part, *mod3Denhance::D3DDevice);
  Parts = std::move(parts);
  if (Parts.empty()) Parts.resize(1);  // the upper bound stays 0 as before any load
  GroupCount = int32_t(model.groups.size());
  BoxMin = model.box_min;
  BoxMax = model.box_max;
  return {};
}

bool XFileClass::Append_Fan_Indices(const std::vector<int32_t>& face_data, int32_t vertices_per_face,
                                    int32_t vertex_count, std::vector<uint16_t>& out) {
  if (vertices_per_face < 0 || vertex_count > 65536) return false;
  size_t i = 0;
  while (i < face_data.size()) {
    int64_t n = vertices_per_face;
    if (n == 0) n = face_data[i++];
    if (n < 0 || int64_t(face_data.size() - i) < n) return false;
    for (int64_t k = 0; k < n; ++k) {
      const int32_t v = face_data[i + size_t(k)];
      if (v < 0 || v >= vertex_count) return false;
    }
    for (int64_t k = 0; k + 2 < n; ++k) {
      out.push_back(uint16_t(face_data[i]));
      out.push_back(uint16_t(face_data[i + size_t(k) + 1]));
      out.push_back(uint16_t(face_data[i + size_t(k) + 2]));
    }
    i += size_t(n);
  }
  return true;
}

void XFileClass::Render(platform::Device3D* device) {
  if (!Is_Set(Loaded) || device == nullptr) return;
  modMATH::Matrix_Multiply(RotationMatrix, Rotation_XZY(SpinX, SpinY, SpinZ), RotationMatrix);
  modMATH::Matrix_Multiply(WorkMatrix, ScaleMatrix, RotationMatrix);
  modMATH::Matrix_Multiply(WorkMatrix, WorkMatrix, PositionMatrix);
  device->SetTransform(platform::TransformKind::World, WorkMatrix);
  for (MeshPart& p : Parts) Draw_Part(p, device);
}

void XFileClass::Draw_Part(MeshPart& part, platform::Device3D* device) {
  if (part.PartIndices.empty()) return;
  if (!part.PartGeometry) Make_Geometry(part, *device);
  device->SetTexture(0, part.PartTexture);
  device->SetMaterial(part.PartMaterial);
  device->DrawGeometry(*part.PartGeometry, 0, 1);
}

void XFileClass::GetMinExtent(float& x, float& y, float& z) const {
  x = BoxMin.x;
  y = BoxMin.y;
  z = BoxMin.z;
}

void XFileClass::GetMaxExtent(float& x, float& y, float& z) const {
  x = BoxMax.x;
  y = BoxMax.y;
  z = BoxMax.z;
}

void XFileClass::ReloadTextures() {
  std::map<std::string, mod3Denhance::Surface> textures;
  for (MeshPart& p : Parts) {
    if (p.PartTextureFile.empty()) continue;
    const auto [it, fresh] = textures.emplace(p.PartTextureFile, nullptr);
    if (fresh) it->second = mod3Denhance::Create_Texture(p.PartTextureFile, 0, 0, 0);
    p.PartTexture = it->second;
  }
}

std::string XFileClass::Get_Path(const std::string& file) {
  const size_t cut = file.find_last_of("/\\");
  return cut == std::string::npos ? std::string() : file.substr(0, cut + 1);
}

std::string XFileClass::Texture_Path(const std::string& folder, const std::string& name) {
  std::string n;
  for (char c : name) {
    if (c == '\\') c = '/';
    if (c == '/' && !n.empty() && n.back() == '/') continue;  // exporters often double the backslashes
    n.push_back(c);
  }
  const bool absolute = (!n.empty() && n.front() == '/') || (n.size() >= 2 && n[1] == ':');
  if (absolute) n = n.substr(n.find_last_of("/:") + 1);  // another machine's folder: look beside the mesh
  if (n.rfind("./", 0) == 0) n.erase(0, 2);
  return folder + n;
}
