// Packets written, read back, and settings inserted into the packets of others.
#include "fuzzing.h"

namespace fuzz {

static std::string embed(int set, int method, const float* params, const std::string& lens) {
  const bool hasLens = !lens.empty();
  const int size = embed_xmp(0, method, params, hasLens, lens.c_str(), nullptr);
  const Block out(static_cast<std::size_t>(size));
  require(embed_xmp(set, method, params, hasLens, lens.c_str(), out.chars()) == size);
  return std::string(out.text());
}

static int readSettings(int selector, const std::string& text, char* lens, float* params) {
  return get_settings_from_xmp(selector, static_cast<int>(text.size() + 1), build::bytesAt(text),
                               lens, params);
}

static void checkInsertion(int set, int method, const float* params, int excess,
                           std::string_view packet) {
  const int size = insert_xmp(0, method, params, 0, 0, nullptr);
  if (method < 1) return require(size == -5);
  const std::string block = embed(set, method + 200, params, "");
  require(size == std::ssize(block));
  const int room = excess == -128 ? -1 : std::max(size + excess, 0);
  const Block memory(std::string(packet) + std::string(std::max(room, 0), 'Z'));
  const std::string before(memory.text());
  const int length = static_cast<int>(packet.size());
  const int result = insert_xmp(set, method, params, length, room, memory.chars());
  if (result < 0) {
    require(isOneOf(result, {-34, -length, -130, -1}));
    return require(memory.text() == before);
  }
  require(result == std::min(size, room) || result == size);
  if (room != size) return;
  std::size_t at = memory.text().find(block);
  while (at != std::string_view::npos && (std::string(packet).insert(at, block) != memory.text())) {
    at = memory.text().find(block, at + 1);
  }
  require(at != std::string_view::npos);
  if (packet.back() != '\0') return;
  const Block old(packet);
  require(lfsettings_occurences_in_xmp(memory.size(), memory.bytes()) ==
          lfsettings_occurences_in_xmp(length, old.bytes()) + 1);
}

void check(Input input) {
  const int set = 1 + input.take<uint8_t>() % 99;
  const int method = input.take<int8_t>() % 20;
  const int excess = input.take<int8_t>();
  const bool plain = input.take<uint8_t>() % 2 == 0;
  float params[60] = {};
  for (float& slot : params) {
    slot = plain ? static_cast<float>(input.take<uint16_t>()) / 10.0F : input.take<float>();
  }
  std::string lens(input.bytes(input.take<uint8_t>()));
  for (char& letter : lens) {
    if (letter == '<' || letter == '=' || letter == '\0') letter = '_';
  }

  const std::string written = embed(set, method, params, lens);
  char lensRead[64] = {};
  readSettings(100, written, lensRead, nullptr);
  require(lensRead == (lens.size() > 63 ? "" : lens));
  float again[60];
  const bool named = isOneOf(method, {1, 2, 3, 4, 10, 11, 13, 14, 15});
  if (method > 0) require(readSettings(-1, written, nullptr, nullptr) == (named ? method : -5));
  if (named) {
    require(readSettings(method, written, nullptr, again) > 0);
    if (plain) {  // what has been read once stays as it is
      const std::string second = embed(set, method, again, lens);
      require(readSettings(method, second, nullptr, again) > 0);
      require(embed(set, method, again, lens) == second);
    }
  }
  checkInsertion(set, method, params, excess, input.rest);
}

}  // namespace fuzz
