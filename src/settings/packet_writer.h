// The text of a settings packet, or of its description blocks alone.
#pragma once

#include "settings/text_sink.h"

namespace lumenforge {

struct PacketContent {
  int setNumber = 1;
  int method = 0;  // below 1: no settings block
  const float* params = nullptr;
  const char* lens = nullptr;  // null: no lens block
  bool wrapped = true;         // in x:xmpmeta and rdf:RDF
};

void writePacket(TextSink& sink, const PacketContent& content);

// The length of the packet's text.
std::size_t measurePacket(const PacketContent& content);

// Set numbers below 1 stand for the first set.
constexpr int setNumberWritten(int setNumber) {
  return setNumber < 1 ? 1 : setNumber;
}

}  // namespace lumenforge
