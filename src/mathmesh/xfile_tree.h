#pragma once
// Inside the .x reader: the generic tree of data objects that the parser produces and the
// mesh builder interprets. Only the object kinds the builder uses keep their contents.
#include <string>
#include <string_view>
#include <vector>

namespace xfile::detail {

enum class Kind { Frame, FrameTransformMatrix, Mesh, MeshTextureCoords, MeshMaterialList, Material, TextureFilename };

struct Node {
  Kind kind = Kind::Frame;
  std::string name;        // the object's name, or the name a reference points at
  bool reference = false;  // a `{ Name }` reference rather than an object
  std::vector<double> numbers;
  std::vector<std::string> strings;
  std::vector<Node> children;  // kept objects and references, in file order
};

// Deepest nesting of data objects accepted; deeper files are refused.
inline constexpr int kMaxDepth = 48;

// Checks the header and parses every data object. Templates are skipped; objects of
// other kinds are checked for syntax and dropped. Returns "" or the fault.
std::string Parse(std::string_view bytes, std::vector<Node>& top);

}  // namespace xfile::detail
