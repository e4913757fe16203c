// The search for one element by its name, as a host may do it by itself. The reader of whole
// records finds all elements in one pass instead, and reads their values in the same way.
#include <cstring>

#include "LumenforgeMetaLib.h"
#include "settings/text_search.h"
#include "settings/value_text.h"

namespace lumenforge {

namespace {

enum ValueKind : int { kNumber = 0, kYesNo = 1, kList = 20 };

constexpr int kAttributeForm = 2;

// The first place where `tag` stands before `terminator`. Any text may be a tag, also an empty one,
// so it is the terminators that are looked for.
std::size_t findTag(std::string_view text, std::string_view tag, char terminator) {
  std::size_t end = text.find(terminator, tag.size());
  while (end != kNowhere && text.substr(end - tag.size(), tag.size()) != tag) {
    end = text.find(terminator, end + 1);
  }
  return end != kNowhere ? end - tag.size() : kNowhere;
}

void readValue(ValueKind kind, std::string_view text, std::size_t offset, float* slots) {
  switch (kind) {
    case kNumber:
      return readNumber(text, offset, *slots);
    case kYesNo:
      return readYesNo(text, offset, *slots);
    case kList:
      return readList(text, offset, slots);
  }
}

}  // namespace

}  // namespace lumenforge

int searchForTag(int slot, const char* tag, int kind, const unsigned char* buffer, int form,
                 int length, int* found, float* values) {
  using namespace lumenforge;
  if (found[slot] != 0) return 0;
  const std::string_view name(tag);
  const auto patternLength = static_cast<int64_t>(name.size()) + 1;
  if (patternLength >= length) return 0;

  const int notFound = static_cast<int>(length - patternLength);
  if (kind != kNumber && kind != kYesNo && kind != kList) return notFound;
  const std::string_view text = asText(buffer, static_cast<std::size_t>(length));
  // A match must end before the last byte.
  const char terminator = form == kAttributeForm ? '=' : '>';
  const std::size_t match = findTag(text.substr(0, text.size() - 1), name, terminator);
  if (match == kNowhere) return notFound;

  // A form may place the value anywhere; what lies outside the text is an empty value.
  const int64_t value = static_cast<int64_t>(match) + patternLength + form - 1;
  const std::size_t offset = value >= 0 ? static_cast<std::size_t>(value) : text.size();
  readValue(static_cast<ValueKind>(kind), text, offset, values + slot);
  found[slot] = 1;
  return static_cast<int>(match);
}
