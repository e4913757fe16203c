// Settings in files: a region or a whole file read, a packet written, and declarations counted.
#include <climits>
#include <cstdint>

#include "LumenforgeMetaLib.h"
#include "base/file.h"
#include "base/result.h"
#include "base/zeroed.h"
#include "settings/packet_writer.h"
#include "settings/schema.h"
#include "settings/settings_reader.h"
#include "settings/text_search.h"

using namespace lumenforge;

int extract_xmp(const char* path, int size, int offset, unsigned char* buffer) {
  const File file = openUnbuffered(path, "rb");
  if (file == nullptr) return kCannotRead;
  const auto fileSize = sizeOf(file.get());
  if (!fileSize || *fileSize == 0) return kCannotRead;
  if (size < 0 || offset < 0) return 0;
  const auto begin = static_cast<uint64_t>(offset);
  const auto length = static_cast<std::size_t>(size);
  if (begin + length >= *fileSize || !seekTo(file.get(), begin)) return 0;

  // A file that shrinks meanwhile leaves the caller's bytes; the reader takes them as they are.
  (void)std::fread(buffer, 1, length, file.get());
  return readSettings(kMethodQuery, asText(buffer, length + 1), nullptr, nullptr);
}

int read_xmp(const char* path, int selector, float* params) {
  if (selector == kLensQuery) return kOtherMethod;  // there is no place for a lens
  File file = openUnbuffered(path, "rb");
  if (file == nullptr) return kCannotRead;
  const auto fileSize = sizeOf(file.get());
  if (!fileSize || *fileSize > INT_MAX || !seekTo(file.get(), 0)) return kCannotRead;

  const std::size_t length = *fileSize;
  const ZeroedBuffer text = allocateZeroed(length + 1);
  if (text == nullptr) return kNoMemory;
  if (std::fread(text.get(), 1, length, file.get()) < length) return kTooFewBytes;
  file.reset();
  return readSettings(selector, asText(text.get(), length + 1), nullptr, params);
}

int lfsettings_occurences_in_xmp(int length, const unsigned char* xmp) {
  if (length < 1 || xmp[length - 1] != '\0') return kNotTerminated;
  const std::string_view text = asText(xmp, static_cast<std::size_t>(length));
  int count = 0;
  std::size_t at = 0;
  while ((at = findDeclaration(text, at)) != kNowhere) {
    ++count;
    at += kDeclarationLength;
  }
  return count;
}

int write_xmp(const char* path, int method, const float* params) {
  if (method < 1 || method > kHighestMethod) return kNoSuchMethod;
  const PacketContent content{.method = method, .params = params};
  const std::size_t length = measurePacket(content);
  const ZeroedBuffer text = allocateZeroed(length + 1);
  if (text == nullptr) return kNoMemory;
  TextSink sink(reinterpret_cast<char*>(text.get()), length);
  writePacket(sink, content);

  const File file = openUnbuffered(path, "wb");
  if (file == nullptr) return kCannotRead;
  return std::fwrite(text.get(), length, 1, file.get()) == 1 ? kOk : kCannotWrite;
}
