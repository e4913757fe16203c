// Keywords datasets (IPTC-IIM 4, record 2, dataset 25) added to an IPTC block.
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "LumenforgeMetaLib.h"
#include "base/bytes.h"

namespace lumenforge {
namespace {

constexpr int kBrokenBlock = -1;
constexpr int kTooLong = -2;  // the keyword for its length field, or the new block for a result

constexpr std::size_t kHeaderSize = 5;
constexpr uint8_t kMarker = 0x1C;
constexpr uint8_t kApplicationRecord = 2;
constexpr uint8_t kKeywords = 25;
constexpr std::array<uint8_t, 7> kRecordVersion = {kMarker, kApplicationRecord, 0, 0, 2, 0, 2};

// Where the dataset starts that a new keyword follows: the last keyword, else the last dataset of
// the application record, else the first dataset. Hosts rely on what looks like faults here:
// markers inside a dataset's data count, and a keyword at the very start does not count as one.
std::size_t findPredecessor(std::span<const uint8_t> iptc) {
  std::size_t lastOfRecord = 0;
  for (std::size_t i = iptc.size() - std::min(iptc.size(), kHeaderSize); i-- > 0;) {
    if (iptc[i] != kMarker || iptc[i + 1] != kApplicationRecord) continue;
    if (iptc[i + 2] == kKeywords && i > 0) return i;
    lastOfRecord = std::max(lastOfRecord, i);
  }
  return lastOfRecord;
}

// Where the predecessor ends; none where it runs past the block.
std::optional<std::size_t> findInsertionPoint(std::span<const uint8_t> iptc) {
  if (iptc.empty()) return 0;
  if (iptc.size() < kHeaderSize) return std::nullopt;
  const std::size_t dataset = findPredecessor(iptc);
  const std::size_t end = dataset + kHeaderSize + load16(&iptc[dataset + 3], ByteOrder::big);
  if (end > iptc.size()) return std::nullopt;
  return end;
}

uint8_t* writeKeyword(std::span<const uint8_t> keyword, uint8_t* out) {
  const std::array<uint8_t, 3> id = {kMarker, kApplicationRecord, kKeywords};
  out = std::ranges::copy(id, out).out;
  store16(out, static_cast<uint16_t>(keyword.size()), ByteOrder::big);
  return std::ranges::copy(keyword, out + 2).out;
}

// A block without datasets is begun with the record version.
int addKeyword(std::span<const uint8_t> iptc, std::size_t insertion,
               std::span<const uint8_t> keyword, uint8_t* out) {
  const std::span<const uint8_t> before = iptc.empty() ? kRecordVersion : iptc.first(insertion);
  out = std::ranges::copy(before, out).out;
  out = writeKeyword(keyword, out);
  std::ranges::copy(iptc.subspan(insertion), out);
  return static_cast<int>(before.size());
}

}  // namespace
}  // namespace lumenforge

int add_iptc_keyword(int iptcLength, const unsigned char* iptc, int keywordLength,
                     const unsigned char* keyword, unsigned char* out) {
  using namespace lumenforge;
  constexpr uint64_t kLongestBlock = std::numeric_limits<int>::max();
  if (iptcLength < 0) return kBrokenBlock;
  const std::span block(iptc, static_cast<std::size_t>(iptcLength));
  const std::optional<std::size_t> insertion = findInsertionPoint(block);
  if (!insertion) return kBrokenBlock;
  if (keywordLength < 0 || keywordLength > std::numeric_limits<uint16_t>::max()) return kTooLong;
  const std::span text(keyword, static_cast<std::size_t>(keywordLength));
  if (block.size() + kHeaderSize + text.size() > kLongestBlock) return kTooLong;
  return addKeyword(block, *insertion, text, out);
}
