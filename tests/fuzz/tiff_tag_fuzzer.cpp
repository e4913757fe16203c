// Entries looked up, and the profile replaced.
#include "fuzzing.h"

static int look(const std::string& bytes, uint16_t tag) {
  using namespace fuzz;
  int count = -77;
  int value = -77;
  const int at = get_tif_tag(MemoryStream(bytes).get(), tag, &count, &value);
  if (at < 0) {
    require(isOneOf(at, {-1, -2, -3}) && count == -77 && value == -77);
  } else {
    const std::string entry = bytes.substr(static_cast<std::size_t>(at), 12);
    require(at > 0 && entry.size() == 12 && entry.starts_with(bytesOf(tag)));
    require(entry.substr(4, 4) == bytesOf(count));
  }
  return at;
}

void fuzz::check(std::string input) {
  const auto tag = take<uint16_t>(input);
  const int size = take<int8_t>(input);
  const std::string profile(static_cast<std::size_t>(std::max(size, 0)), 'p');
  MemoryFile file(input);
  look(input, tag);
  const int at = look(input, 34675);
  const int result = update_tif_profile(size, Block(profile).bytes(), file.path());
  require(result == (size <= 0 ? -1 : at < 0 ? 0 : size));
  if (result > 0) {
    const std::string fields = bytesOf(size) + u32(input.size(), ByteOrder::little);
    input.replace(static_cast<std::size_t>(at) + 4, 8, fields) += profile;
  }
  require(file.bytes() == input);
}
