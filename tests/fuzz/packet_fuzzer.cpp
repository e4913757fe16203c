// Packets of any settings and lens, and settings inserted into the packets of others.
#include "fuzzing.h"

using namespace fuzz;

static std::string embed(int set, int method, const float* params, const char* lens) {
  const Block out = emptyBlock(embed_xmp(0, method, params, lens != nullptr, lens, nullptr));
  require(embed_xmp(set, method, params, lens != nullptr, lens, out.chars()) == out.size());
  return out.text();
}

static void checkInsertion(int set, int method, const float* params, int excess, const std::string& packet) {
  const int size = insert_xmp(0, method, params, 0, 0, nullptr);
  if (method < 1) return require(size == -5);
  const std::string block = embed(set, method + 200, params, nullptr);
  const auto length = static_cast<int>(packet.size());
  const int room = std::max(size + excess, -1);
  const Block memory(packet + std::string(static_cast<std::size_t>(std::max(room, 0)), 'Z'));
  const int result = insert_xmp(set, method, params, length, room, memory.chars());
  if (result < 0) return require(isOneOf(result, {-34, -length, -130, -1}) && memory.untouched());
  if (room < size) return;
  require(result == size && size == std::ssize(block) && memory.text().find(block) < packet.size());
}

void fuzz::check(std::string input) {
  const int set = 1 + take<uint8_t>(input) % 99;
  const int method = take<int8_t>(input) % 20;
  const int excess = take<int8_t>(input);
  const bool plain = take<uint8_t>(input) % 2 == 0;
  SettingsParams params;
  for (float& slot : params) {
    slot = plain ? static_cast<float>(take<uint16_t>(input)) / 10.0F : take<float>(input);
  }
  const std::string lens = input.substr(0, take<uint8_t>(input));
  checkInsertion(set, method, params, excess, input);
  embed(set, method, params, lens.c_str());
}
