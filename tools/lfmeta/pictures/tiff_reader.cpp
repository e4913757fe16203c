#include "pictures/tiff_reader.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace lfmeta {

namespace {

// Of a directory's values libtiff holds all that the file delivers, whether they matter or not, and
// passes over what it cannot read.
constexpr uint64_t kMostOfDirectory = 64U << 20;

TiffReader::Source& sourceOf(thandle_t handle) {
  return *static_cast<TiffReader::Source*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* out, tmsize_t size) {
  TiffReader::Source& source = sourceOf(handle);
  const auto wanted = static_cast<uint64_t>(size);
  if (wanted > source.readable) return 0;
  source.readable -= wanted;
  return static_cast<tmsize_t>(std::fread(out, 1, wanted, source.file.stream));
}
tmsize_t writeBytes(thandle_t, void*, tmsize_t) {
  return -1;
}
toff_t seek(thandle_t handle, toff_t offset, int from) {
  std::FILE* stream = sourceOf(handle).file.stream;
  if (fseeko(stream, static_cast<off_t>(offset), from) != 0) return static_cast<toff_t>(-1);
  return static_cast<toff_t>(ftello(stream));
}
int leaveOpen(thandle_t) {
  return 0;
}
toff_t sizeOfFile(thandle_t handle) {
  return sourceOf(handle).file.size;
}

// The first message is kept: later ones follow from it.
int keepMessage(TIFF*, void* target, const char*, const char* format, va_list values) {
  auto& message = *static_cast<std::string*>(target);
  std::array<char, 200> text{};
  std::vsnprintf(text.data(), text.size(), format, values);
  if (message.empty()) message = text.data();
  return 1;
}
int ignore(TIFF*, void*, const char*, const char*, va_list) {
  return 1;
}

}  // namespace

TiffReader::TiffReader(const PictureFile& file) : source_{file, kMostOfDirectory} {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options, keepMessage, &message_);
  TIFFOpenOptionsSetWarningHandlerExtR(options, ignore, nullptr);
  // The largest of what it holds at a time is a packed strip or the list of all of them.
  TIFFOpenOptionsSetMaxSingleMemAlloc(options,
                                      static_cast<tmsize_t>(std::max(file.size, file.memory)));
  tiff_.reset(TIFFClientOpenExt("picture", "rmO", &source_, readBytes, writeBytes, seek, leaveOpen,
                                sizeOfFile, nullptr, nullptr, options));
  TIFFOpenOptionsFree(options);
  if (!tiff_) fail();
  source_.readable = UINT64_MAX;  // pixels and the list of strips have bounds of their own
}

void TiffReader::fail() const {
  throw std::runtime_error("is a damaged TIFF picture: " +
                           (message_.empty() ? "it cannot be read" : message_));
}

}  // namespace lfmeta
