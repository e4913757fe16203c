// Settings, lens and single elements of a packet.
#include "fuzzing.h"

static void checkSearch(std::string& input) {
  using namespace fuzz;
  const int slot = take<uint8_t>(input) % 53;
  const int kind = take<uint8_t>(input) % 22;
  const int form = take<uint8_t>(input) % 4;
  const Block text(input);
  int found[60] = {};
  float values[60] = {};
  const int at = searchForTag(slot, "lfst:Strength", kind, text.bytes(), form, text.size(), found, values);
  require(at <= text.size());
  if (found[slot] != 0) std::fill_n(values + slot, kind == 20 ? 8 : 1, 0.0F);
  require(bytesOf(values) == std::string(sizeof values, '\0'));
}

void fuzz::check(std::string input) {
  checkSearch(input);
  const Block text(input + '\0');
  const int length = text.size();
  const int count = lfsettings_occurences_in_xmp(length, text.bytes());
  const int method = get_settings_from_xmp(-1, length, text.bytes(), nullptr, nullptr);
  require(isOneOf(method, {-5, 0, 1, 2, 3, 4, 10, 11, 13, 14, 15}));
  MemoryFile file(input);
  for (int selector = 0; selector <= 15; ++selector) {
    SettingsParams params[2] = {};
    const int at = get_settings_from_xmp(selector, length, text.bytes(), nullptr, params[0]);
    require(read_xmp(file.path(), selector, params[1]) == at);
    require(bytesOf(params[0]) == bytesOf(params[1]));
    if (count > 0) require(at == -5 || at > 0);
    if (method > 0) require((at > 0) == (selector == method));
    if (at <= 0) require(bytesOf(params[0]) == std::string(sizeof params[0], '\0'));
    if (at > 0 && method >= 0) require(input.compare(static_cast<std::size_t>(at), 11, "lfst:Method") == 0);
  }
  const Block lens = emptyBlock(64);
  get_settings_from_xmp(100, length, text.bytes(), lens.chars(), nullptr);
  require(lens.bytes()[63] == 0);
}
