// A settings block spliced into a packet held in memory, behind the opening tag of its rdf:RDF.
#include <cstring>

#include "LumenforgeMetaLib.h"
#include "settings/packet.h"
#include "settings/text_search.h"
#include "settings/xmp_texts.h"

namespace lumenforge {
namespace {

constexpr Needle kPacketOpening{"<x:xmpmeta xmlns:x=", 4};  // "mp"
constexpr Needle kRdfOpening{"<rdf:RDF xmlns:rdf=", 6};     // "DF"

constexpr std::size_t kPacketOpeningSize = kPacketOpening.text.size() + 1 + kXmpNamespace.size();
constexpr std::size_t kRdfTagSize = kRdfOpening.text.size() + 1 + kRdfNamespace.size() + 2;
static_assert(kPacketOpeningSize == 34 && kRdfTagSize == 65);

// The tag is searched from here. In the packets that this library writes it stands before: they are
// no place for a second block.
constexpr std::size_t kTagSearchStart = 65;

// A packet must be longer than its opening, and than a tag at the first place where it is searched.
constexpr int kOpeningLimit = static_cast<int>(kPacketOpeningSize);
constexpr int kTagLimit = static_cast<int>(kTagSearchStart + kRdfTagSize);

constexpr std::size_t kShortestTail = 3;

constexpr int kNoTail = -1;  // or one that would move down

// The tag with one kind of quotes; its first quote has been matched.
bool closesWithSameQuote(std::string_view tag) {
  return tag.size() >= kRdfTagSize && tag[kRdfTagSize - 2] == tag[kRdfOpening.text.size()] &&
         tag[kRdfTagSize - 1] == '>';
}

std::size_t findRdfTag(std::string_view packet) {
  std::size_t at = findQuoted(packet, kTagSearchStart, kRdfOpening, kRdfNamespace);
  while (at != kNowhere && !closesWithSameQuote(packet.substr(at))) {
    at = findQuoted(packet, at + 1, kRdfOpening, kRdfNamespace);
  }
  return at;
}

// Behind the tag, or behind the first or second of the line feeds that follow the byte after it.
std::size_t insertionPoint(std::string_view packet, std::size_t tag) {
  const std::size_t end = tag + kRdfTagSize;
  if (end + 2 >= packet.size() || packet[end + 1] != '\n') return end;
  return packet[end + 2] == '\n' ? end + 2 : end + 1;
}

// Where the block goes, or the code of the refusal.
int findInsertionPoint(std::string_view packet) {
  const auto length = static_cast<int>(packet.size());
  // An opening or a tag must end before the packet's last byte.
  const std::string_view searched = packet.substr(0, packet.size() - 1);
  if (findQuoted(searched, 0, kPacketOpening, kXmpNamespace) == kNowhere) return -length;
  if (length <= kTagLimit) return LUMENFORGE_TOO_SHORT_FOR_TAG;
  const std::size_t tag = findRdfTag(searched);
  if (tag == kNowhere) return -length;
  return static_cast<int>(insertionPoint(packet, tag));
}

}  // namespace
}  // namespace lumenforge

int insert_xmp(int setNumber, int method, const float* params, int xmpLength, int insertLength,
               char* xmp) {
  using namespace lumenforge;
  if (method < 1) return LUMENFORGE_OTHER_METHOD;
  const PacketContent block{
      .setNumber = setNumber, .method = method, .params = params, .wrapped = false};
  if (setNumber == 0) return static_cast<int>(measurePacket(block));

  if (xmpLength <= kOpeningLimit) return LUMENFORGE_TOO_SHORT_FOR_PACKET;
  const int point = findInsertionPoint({xmp, static_cast<std::size_t>(xmpLength)});
  if (point < 0) return point;
  const auto tail = static_cast<std::size_t>(xmpLength - point);
  if (tail < kShortestTail || insertLength < 0) return kNoTail;

  // The room between is all that the block may fill, whatever length was announced for it.
  const auto room = static_cast<std::size_t>(insertLength);
  std::memmove(xmp + point + room, xmp + point, tail);
  TextSink sink(xmp + point, room);
  writePacket(sink, block);
  return static_cast<int>(sink.length());
}
