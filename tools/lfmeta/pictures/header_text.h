// The header texts of the simple picture formats, read from a stream that pixels may follow in.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace lfmeta {

// All throw std::runtime_error when the file ends too early.
class TextReader {
 public:
  explicit TextReader(std::FILE* stream) : stream_(stream) {}

  unsigned char byte();
  void bytes(std::span<unsigned char> out);
  // The next run of characters that are no white space; comments from # to the line's end are
  // passed over. Takes the one white-space character behind it, too. Longer words than the formats
  // have are cut.
  std::string word();
  // Up to the line feed, which is taken, too; cut in the same way.
  std::string line();
  // The next word as a decimal number of at most `largest`.
  uint32_t number(uint32_t largest);
  // The next character that is neither white space nor in a comment.
  char character();

 private:
  std::FILE* stream_;
};

}  // namespace lfmeta
