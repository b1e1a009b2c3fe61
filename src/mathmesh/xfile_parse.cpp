// Tokenizer and parser of the text .x format. Separators (',' and ';') carry no meaning for
// the objects the game reads, so they are skipped like blanks; the builder checks the
// counts instead.
#include <charconv>
#include <cmath>
#include <optional>

#include "mathmesh/xfile_tree.h"

namespace xfile::detail {
namespace {

enum class Tok { End, Name, Number, String, Open, Close, Error };

struct Token {
  Tok kind = Tok::End;
  std::string_view text;  // name, string contents or error message
  double number = 0;
};

bool Is_Name_Start(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80;
}
bool Is_Name_Char(unsigned char c) {
  return Is_Name_Start(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '+';
}

bool Equal_No_Case(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = char(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = char(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

std::optional<Kind> Kind_Of(std::string_view type) {
  // Exporters disagree on the case of some names (TextureFilename / TextureFileName).
  static constexpr std::pair<std::string_view, Kind> kKinds[] = {
      {"Frame", Kind::Frame},
      {"FrameTransformMatrix", Kind::FrameTransformMatrix},
      {"Mesh", Kind::Mesh},
      {"MeshTextureCoords", Kind::MeshTextureCoords},
      {"MeshMaterialList", Kind::MeshMaterialList},
      {"Material", Kind::Material},
      {"TextureFilename", Kind::TextureFilename},
  };
  for (const auto& [name, kind] : kKinds)
    if (Equal_No_Case(type, name)) return kind;
  return std::nullopt;
}

class Lexer {
 public:
  explicit Lexer(std::string_view s, size_t start) : s_(s), pos_(start) {}

  int Line() const { return line_; }

  Token Next() {
    Skip_Blanks();
    if (pos_ >= s_.size()) return {Tok::End, {}, 0};
    const unsigned char c = static_cast<unsigned char>(s_[pos_]);
    if (c == '{') return ++pos_, Token{Tok::Open, {}, 0};
    if (c == '}') return ++pos_, Token{Tok::Close, {}, 0};
    if (c == '"') {
      const size_t end = s_.find('"', pos_ + 1);
      if (end == std::string_view::npos) return {Tok::Error, "unterminated string", 0};
      const std::string_view text = s_.substr(pos_ + 1, end - pos_ - 1);
      for (char ch : text) line_ += ch == '\n';
      pos_ = end + 1;
      return {Tok::String, text, 0};
    }
    if (Is_Name_Char(c)) {
      const size_t start = pos_;
      while (pos_ < s_.size() && Is_Name_Char(static_cast<unsigned char>(s_[pos_]))) ++pos_;
      const std::string_view word = s_.substr(start, pos_ - start);
      if (Is_Name_Start(c)) return {Tok::Name, word, 0};
      return Number(word);
    }
    return {Tok::Error, "unexpected character", 0};
  }

  // Skips a template body: everything up to the brace that closes the one just read.
  bool Skip_Braced() {
    int depth = 1;
    while (pos_ < s_.size()) {
      const char c = s_[pos_++];
      if (c == '\n') ++line_;
      if (c == '{') ++depth;
      if (c == '}' && --depth == 0) return true;
    }
    return false;
  }

 private:
  static Token Number(std::string_view word) {
    std::string_view digits = word;
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    double v = 0;
    const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), v);
    if (ec != std::errc() || end != digits.data() + digits.size() || !std::isfinite(v))
      return {Tok::Error, "bad number", 0};
    return {Tok::Number, word, v};
  }

  void Skip_Blanks() {
    while (pos_ < s_.size()) {
      const char c = s_[pos_];
      if (c == '\n') {
        ++line_;
        ++pos_;
      } else if (c == ' ' || c == '\t' || c == '\r' || c == ',' || c == ';' || c == '\f' || c == '\v') {
        ++pos_;
      } else if (c == '#' || (c == '/' && pos_ + 1 < s_.size() && s_[pos_ + 1] == '/')) {
        while (pos_ < s_.size() && s_[pos_] != '\n') ++pos_;
      } else if (c == '<') {
        // A GUID: meaningless to the reader.
        const size_t end = s_.find('>', pos_);
        if (end == std::string_view::npos) return;  // Next() reports the stray '<'
        for (size_t i = pos_; i < end; ++i) line_ += s_[i] == '\n';
        pos_ = end + 1;
      } else {
        return;
      }
    }
  }

  std::string_view s_;
  size_t pos_;
  int line_ = 1;
};

class Parser {
 public:
  explicit Parser(std::string_view s) : lex_(s, 16) {}

  std::string Run(std::vector<Node>& top) {
    for (;;) {
      const Token t = lex_.Next();
      if (t.kind == Tok::End) return {};
      if (t.kind == Tok::Error) return Fail(t.text);
      if (t.kind != Tok::Name) return Fail("expected an object");
      if (t.text == "template") {
        const Token name = lex_.Next();
        if (name.kind != Tok::Name || lex_.Next().kind != Tok::Open) return Fail("bad template");
        if (!lex_.Skip_Braced()) return Fail("unterminated template");
        continue;
      }
      Node node;
      const bool keep = Object(t.text, node, 1);
      if (!error_.empty()) return error_;
      if (keep) top.push_back(std::move(node));
    }
  }

 private:
  std::string Fail(std::string_view what) {
    if (error_.empty()) error_ = std::string(what) + " at line " + std::to_string(lex_.Line());
    return error_;
  }

  // Reads the rest of an object whose type word was just read: optional name, '{', body.
  // Returns whether the object is of a kind worth keeping (then it is in `node`).
  bool Object(std::string_view type, Node& node, int depth) {
    if (depth > kMaxDepth) return Fail("objects nested too deeply"), false;
    Token t = lex_.Next();
    std::string_view name;
    if (t.kind == Tok::Name) {
      name = t.text;
      t = lex_.Next();
    }
    if (t.kind != Tok::Open) return Fail("expected '{'"), false;
    const std::optional<Kind> kind = Kind_Of(type);
    if (kind) {
      node.kind = *kind;
      node.name = std::string(name);
    }
    Body(kind ? &node : nullptr, depth);
    return kind.has_value() && error_.empty();
  }

  // The body up to and including its closing brace. With no node, only checks syntax.
  void Body(Node* node, int depth) {
    for (;;) {
      const Token t = lex_.Next();
      switch (t.kind) {
        case Tok::Close:
          return;
        case Tok::End:
          Fail("file ends inside an object");
          return;
        case Tok::Error:
          Fail(t.text);
          return;
        case Tok::Number:
          if (node) node->numbers.push_back(t.number);
          break;
        case Tok::String:
          if (node) node->strings.emplace_back(t.text);
          break;
        case Tok::Open: {
          Token r = lex_.Next();
          std::string_view target;
          if (r.kind == Tok::Name) {
            target = r.text;
            r = lex_.Next();
          }
          if (r.kind != Tok::Close) {
            Fail("bad reference");
            return;
          }
          if (node) {
            Node ref;
            ref.reference = true;
            ref.name = std::string(target);
            node->children.push_back(std::move(ref));
          }
          break;
        }
        case Tok::Name: {
          Node child;
          const bool keep = Object(t.text, child, depth + 1);
          if (!error_.empty()) return;
          if (node && keep) node->children.push_back(std::move(child));
          break;
        }
      }
    }
  }

  Lexer lex_;
  std::string error_;
};

}  // namespace

std::string Parse(std::string_view bytes, std::vector<Node>& top) {
  // "xof " version(4) format(4) float size(4)
  if (bytes.size() < 16 || bytes.substr(0, 4) != "xof ") return "not a .x file";
  const std::string_view format = bytes.substr(8, 4);
  if (format == "bin " || format == "tzip" || format == "bzip")
    return "binary and compressed .x files are not supported";
  if (format != "txt ") return "unknown .x format";
  return Parser(bytes).Run(top);
}

}  // namespace xfile::detail
