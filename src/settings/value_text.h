// Value texts of a packet, read into slots. Shared by the search for one tag and the reader of
// whole records. A text that does not parse leaves its slot as it was.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace lumenforge {

// How many bytes stand between a name's end and its value: ">", or "=" and a quote.
enum class Form : std::size_t { element = 1, attribute = 2 };

// The number at `offset`, or, when there is none, the one at the byte after it.
void readNumber(std::string_view text, std::size_t offset, float& slot);

// 1 for "Yes", 0 for anything else.
void readYesNo(std::string_view text, std::size_t offset, float& slot);

// The index of the word whose letters begin the text; the words' trailing blanks do not matter.
void readWord(std::string_view text, std::size_t offset, std::span<const std::string_view> words,
              float& slot);

// Eight numbers with commas between them, all or none.
void readList(std::string_view text, std::size_t offset, float* slots);

}  // namespace lumenforge
