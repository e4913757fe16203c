// Settings in files: a region or a whole file read, a packet written, and declarations counted.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <span>

#include "LumenforgeMetaLib.h"
#include "base/file.h"
#include "base/growing_buffer.h"
#include "base/zeroed.h"
#include "settings/packet.h"
#include "settings/packet_query.h"
#include "settings/text_search.h"

namespace lumenforge {
namespace {

// Results of one function each.
constexpr int kRegionOutside = 0;    // extract_xmp
constexpr int kNoPlaceForLens = -5;  // read_xmp
constexpr int kTooFewBytes = -2;     // read_xmp
constexpr int kNoSuchMethod = -2;    // write_xmp
constexpr int kCannotCreate = -1;    // write_xmp
constexpr int kNotWritten = -3;      // write_xmp

// A file's text from its first settings declaration on; while there is none, what one may yet begin
// in.
class DeclaredText {
 public:
  // LUMENFORGE_OK, or why not all of the file's `size` bytes have been read.
  int read(InputFile& file, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
      const std::span<uint8_t> next = bytes_.extend(size - done);
      if (next.empty()) return LUMENFORGE_NO_MEMORY;
      if (file.read(done, next, next.size()) < next.size()) return kTooFewBytes;
      done += next.size();
      if (!declared_) dropUndeclared();
    }
    return LUMENFORGE_OK;
  }

  std::string_view text() const { return bytes_.text(); }
  std::size_t offset() const { return offset_; }  // of the text in the file

 private:
  void dropUndeclared() {
    const std::size_t place = findDeclaration(text(), 0);
    declared_ = place != kNowhere;
    const std::size_t begin = declared_ ? place : endOfPlaces(text(), 0, kDeclarationLength);
    bytes_.dropFirst(begin);
    offset_ += begin;
  }

  GrowingBuffer bytes_;
  std::size_t offset_ = 0;
  bool declared_ = false;
};

}  // namespace
}  // namespace lumenforge

int extract_xmp(const char* path, int size, int offset, unsigned char* buffer) {
  using namespace lumenforge;
  InputFile file(path);
  if (!file.isOpen()) return LUMENFORGE_CANNOT_READ;
  const auto fileSize = file.size();
  if (!fileSize || *fileSize == 0) return LUMENFORGE_CANNOT_READ;
  if (size < 0 || offset < 0) return kRegionOutside;
  const auto begin = static_cast<uint64_t>(offset);
  const auto length = static_cast<std::size_t>(size);
  if (begin + length >= *fileSize) return kRegionOutside;

  // A file that shrinks meanwhile leaves the caller's bytes; the reader takes them as they are.
  file.read(begin, {buffer, length}, length);
  const auto text = terminatedText(buffer, length + 1);
  if (!text) return LUMENFORGE_NOT_TERMINATED;
  return querySettings(LUMENFORGE_SELECT_METHOD, *text, 0, nullptr);
}

int read_xmp(const char* path, int selector, float* params) {
  using namespace lumenforge;
  if (selector == LUMENFORGE_SELECT_LENS) return kNoPlaceForLens;
  InputFile file(path);
  if (!file.isOpen()) return LUMENFORGE_CANNOT_READ;
  const auto fileSize = file.size();
  if (!fileSize || *fileSize > INT_MAX) return LUMENFORGE_CANNOT_READ;

  DeclaredText held;
  const int result = held.read(file, *fileSize);
  if (result != LUMENFORGE_OK) return result;
  return querySettings(selector, held.text(), held.offset(), params);
}

int lfsettings_occurences_in_xmp(int length, const unsigned char* xmp) {
  using namespace lumenforge;
  if (length < 1) return LUMENFORGE_NOT_TERMINATED;
  const auto text = terminatedText(xmp, static_cast<std::size_t>(length));
  if (!text) return LUMENFORGE_NOT_TERMINATED;
  int count = 0;
  std::size_t at = 0;
  while ((at = findDeclaration(*text, at)) != kNowhere) {
    ++count;
    at += kDeclarationLength;
  }
  return count;
}

int write_xmp(const char* path, int method, const float* params) {
  using namespace lumenforge;
  if (method < LUMENFORGE_DETAILS_ENHANCER || method > LUMENFORGE_FUSION_INTERIOR) {
    return kNoSuchMethod;
  }
  const PacketContent content{.method = method, .params = params};
  const std::size_t length = measurePacket(content);
  const ZeroedBuffer text = allocateZeroed(length);
  if (text == nullptr) return LUMENFORGE_NO_MEMORY;
  TextSink sink(reinterpret_cast<char*>(text.get()), length);
  writePacket(sink, content);

  const File file = openUnbuffered(path, "wb");
  if (file == nullptr) return kCannotCreate;
  return std::fwrite(text.get(), length, 1, file.get()) == 1 ? LUMENFORGE_OK : kNotWritten;
}
