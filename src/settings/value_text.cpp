#include "settings/value_text.h"

#include <algorithm>
#include <array>

#include "base/number_text.h"
#include "settings/schema.h"
#include "settings/text_search.h"

namespace lumenforge {

void readNumber(std::string_view text, std::size_t offset, float& slot) {
  ParsedFloat number = parseFloat(textFrom(text, offset));
  if (number.length == 0) number = parseFloat(textFrom(text, offset + 1));
  if (number.length > 0) slot = number.value;
}

void readYesNo(std::string_view text, std::size_t offset, float& slot) {
  slot = textFrom(text, offset).starts_with("Yes") ? 1.0F : 0.0F;
}

void readWord(std::string_view text, std::size_t offset, std::span<const std::string_view> words,
              float& slot) {
  const std::string_view value = textFrom(text, offset);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view letters = words[i].substr(0, words[i].find_last_not_of(' ') + 1);
    if (value.starts_with(letters)) {
      slot = static_cast<float>(i);
      return;
    }
  }
}

void readList(std::string_view text, std::size_t offset, float* slots) {
  std::array<float, kListLength> values;
  std::string_view rest = textFrom(text, offset);
  for (float& value : values) {
    if (&value != values.data()) {
      if (!rest.starts_with(',')) return;
      rest.remove_prefix(1);
    }
    const ParsedFloat number = parseFloat(rest);
    if (number.length == 0) return;
    value = number.value;
    rest.remove_prefix(number.length);
  }
  std::copy(values.begin(), values.end(), slots);
}

}  // namespace lumenforge
