// The search for one element by its name, as a host may do it by itself. The reader of whole
// records finds all elements in one pass instead, and reads their values in the same way.
#include <cstring>

#include "LumenforgeMetaLib.h"
#include "base/zeroed.h"
#include "settings/value_text.h"

namespace lumenforge {
namespace {

bool readValue(int kind, std::string_view text, std::size_t offset, float* slots) {
  switch (kind) {
    case LUMENFORGE_NUMBER:
      readNumber(text, offset, *slots);
      return true;
    case LUMENFORGE_YES_NO:
      readYesNo(text, offset, *slots);
      return true;
    case LUMENFORGE_LIST:
      readList(text, offset, slots);
      return true;
    default:
      return false;
  }
}

}  // namespace
}  // namespace lumenforge

int searchForTag(int slot, const char* tag, int kind, const unsigned char* buffer, int form,
                 int length, int* found, float* values) {
  using namespace lumenforge;
  if (found[slot] != 0) return 0;
  const std::size_t tagSize = std::strlen(tag);
  const auto patternSize = static_cast<int64_t>(tagSize) + 1;
  if (patternSize >= length) return 0;

  // Any text may be a tag: one of megabytes takes a search that is linear whatever it holds.
  const ZeroedBuffer pattern = allocateZeroed(tagSize + 1);
  if (pattern == nullptr) return 0;
  std::memcpy(pattern.get(), tag, tagSize);
  pattern[tagSize] = form == static_cast<int>(Form::attribute) ? '=' : '>';

  const std::string_view text(reinterpret_cast<const char*>(buffer),
                              static_cast<std::size_t>(length));
  // A match must end before the last byte.
  const void* match = memmem(text.data(), text.size() - 1, pattern.get(), tagSize + 1);
  if (match == nullptr) return static_cast<int>(length - patternSize);
  const auto place = static_cast<const char*>(match) - text.data();

  // A form may place the value anywhere; what lies outside the text is an empty value.
  const int64_t value = place + patternSize + form - 1;
  const std::size_t offset = value >= 0 ? static_cast<std::size_t>(value) : text.size();
  if (!readValue(kind, text, offset, values + slot)) return static_cast<int>(length - patternSize);
  found[slot] = 1;
  return static_cast<int>(place);
}
