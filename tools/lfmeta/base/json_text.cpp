#include "base/json_text.h"

#include <algorithm>

#include "base/characters.h"
#include "base/json.h"

namespace lfmeta {

namespace {

bool isPlain(char c) {
  return c >= ' ' && c < 0x7F && c != '"' && c != '\\';
}

}  // namespace

void appendJsonText(std::string& out, std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlain)) {
    out.append(1, '"').append(text).append(1, '"');
  } else {
    out += jsonLine(Json(std::string(text)));
  }
}

std::string bytesOfName(const std::string& name) {
  if (std::all_of(name.begin(), name.end(), isPlain) || isUtf8(name)) return {};
  std::string escaped;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte >= 0x7F || c == '\\') {
      escaped += "\\x";
      appendHex(escaped, byte, 2);
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace lfmeta
