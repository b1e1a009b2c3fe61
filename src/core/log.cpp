#include "core/log.h"

#include <cstdint>
#include <cstdio>

#include "platform/platform.h"

namespace modMain {

std::string Log_Path() { return platform::Player_Path("\\Brindlex Log File.txt"); }

void Create_Log() {
  std::FILE* f = std::fopen(Log_Path().c_str(), "wb");
  if (f == nullptr) return;
  std::fputs("Program Started\r\n \r\n", f);
  std::fclose(f);
}

void Write_Log(const std::string& text) {
  // Open, write, close: the log stays complete up to the last line whatever happens next.
  std::FILE* f = std::fopen(Log_Path().c_str(), "ab");
  if (f == nullptr) return;
  std::fwrite(text.data(), 1, text.size(), f);
  std::fputs("\r\n", f);
  std::fclose(f);
}

void Write_String(std::ostream& out, const std::string& text) {
  const auto n = static_cast<uint16_t>(static_cast<int16_t>(text.size()));
  out.put(static_cast<char>(n & 0xFF));
  out.put(static_cast<char>(n >> 8));
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

bool Read_String(std::istream& in, std::string& out) {
  out.clear();
  unsigned char len[2];
  if (!in.read(reinterpret_cast<char*>(len), 2)) return false;
  const auto n = static_cast<int16_t>(len[0] | (len[1] << 8));
  for (int i = 0; i < n; ++i) {
    const int c = in.get();
    if (c == std::char_traits<char>::eof()) return false;
    out.push_back(static_cast<char>(c));
  }
  return true;
}

}  // namespace modMain
