// Where packet text goes: every byte is counted, those that fit are stored. Measuring a text is
// writing it to a sink that holds nothing.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace lumenforge {

inline constexpr std::size_t kUnlimited = SIZE_MAX;

class TextSink {
 public:
  TextSink() = default;
  TextSink(char* out, std::size_t capacity) : out_(out), capacity_(capacity) {}

  void add(std::string_view text) {
    if (length_ < capacity_) {
      std::memcpy(out_ + length_, text.data(), std::min(text.size(), capacity_ - length_));
    }
    length_ += text.size();
  }

  std::size_t length() const { return length_; }

 private:
  char* out_ = nullptr;
  std::size_t capacity_ = 0;
  std::size_t length_ = 0;
};

}  // namespace lumenforge
