// Settings, lens and single elements of a packet.
#include "fuzzing.h"

namespace fuzz {

static constexpr const char* kTags[] = {"lfst:Method", "lfst:Strength", "aux:Lens", "x", ""};

static void checkSearch(Input& input) {
  const int slot = input.take<uint8_t>() % 53;
  const char* tag = kTags[input.take<uint8_t>() % std::size(kTags)];
  const int kind = input.take<uint8_t>() % 22;
  const int form = input.take<uint8_t>() % 4;
  const Block text(input.rest);
  int found[60] = {};
  float values[60] = {};
  const int at = searchForTag(slot, tag, kind, text.bytes(), form, text.size(), found, values);
  const int slots = kind == 20 ? 8 : 1;
  for (int i = 0; i < 60; ++i) {
    if (i < slot || i >= slot + slots) require(found[i] == 0 && values[i] == 0);
  }
  if (found[slot] == 0) return;
  require(at >= 0 && text.text()
                         .substr(static_cast<std::size_t>(at))
                         .starts_with(tag + (form == 2 ? "="s : ">"s)));
}

void check(Input input) {
  checkSearch(input);
  const Block text(std::string(input.rest) + '\0');
  const int length = text.size();
  const int declarations = lfsettings_occurences_in_xmp(length, text.bytes());
  const int method = get_settings_from_xmp(-1, length, text.bytes(), nullptr, nullptr);
  require(isOneOf(method, {-5, 0, 1, 2, 3, 4, 10, 11, 13, 14, 15}));
  require(declarations >= 0 && declarations <= length);

  MemoryFile file(input.rest);
  for (int selector = 0; selector <= 15; ++selector) {
    const Block params(240);
    const Block fromFile(240);
    auto* slots = reinterpret_cast<float*>(params.bytes());
    const int result = get_settings_from_xmp(selector, length, text.bytes(), nullptr, slots);
    require(read_xmp(file.path(), selector, reinterpret_cast<float*>(fromFile.bytes())) == result);
    require(params.text() == fromFile.text());
    if (declarations > 0) require(result == -5 || result > 0);
    if (method > 0) require((result > 0) == (selector == method));
    if (result <= 0) require(params.text() == Block(240).text());
    if (result > 0 && method >= 0) {
      require(text.text().substr(static_cast<std::size_t>(result)).starts_with("lfst:Method"));
    }
  }
  const Block lens(64, 0);
  get_settings_from_xmp(100, length, text.bytes(), lens.chars(), nullptr);
  require(lens.bytes()[63] == 0);

  const Block open(input.rest);  // mostly without a terminator
  if (!input.rest.empty() && input.rest.back() == '\0') return;
  require(get_settings_from_xmp(-1, open.size(), open.bytes(), nullptr, nullptr) == -3);
  require(lfsettings_occurences_in_xmp(open.size(), open.bytes()) == -3);
}

}  // namespace fuzz
