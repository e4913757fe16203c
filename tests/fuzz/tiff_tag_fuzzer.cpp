// Entries looked up, and the profile replaced.
#include "fuzzing.h"

namespace fuzz {

static int look(MemoryFile& file, std::string_view bytes, int tag) {
  int fields[2] = {-77, -77};
  const int at = get_tif_tag(openAt(file, 0).get(), tag, &fields[0], &fields[1]);
  if (at < 0) {
    require(isOneOf(at, {-1, -2}) && fields[0] == -77 && fields[1] == -77);
    return at;
  }
  const std::string_view entry = bytes.substr(static_cast<std::size_t>(at), 12);
  require(at > 0 && entry.size() == 12);
  require(entry.starts_with(build::numbers(16, {static_cast<uint32_t>(tag) & 0xFFFF})));
  require(entry.substr(4, 4) == build::numbers(32, {static_cast<uint32_t>(fields[0])}));
  return at;
}

void check(Input input) {
  const int tag = input.take<uint16_t>();
  const int size = input.take<int8_t>();
  const Block profile(static_cast<std::size_t>(std::max(size, 0)), 'p');
  std::string bytes(input.rest);
  MemoryFile file(bytes);
  look(file, bytes, tag);
  const int at = look(file, bytes, 34675);
  const int result = update_tif_profile(size, profile.bytes(), file.path());
  require(result == (size <= 0 ? -1 : at < 0 ? 0 : size));
  if (result > 0) {
    const auto end = static_cast<uint32_t>(bytes.size());
    bytes.replace(static_cast<std::size_t>(at) + 4, 8,
                  build::numbers(32, {static_cast<uint32_t>(size), end}));
    bytes += profile.text();
  }
  require(file.bytes() == bytes);
}

}  // namespace fuzz
