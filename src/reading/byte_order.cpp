// The byte-order readers on a C stream, as the host may call them. The library's own parsers read
// through base/window.h and load with base/bytes.h; here the end of the file is a byte, too: EOF.
#include "LumenforgeMetaLib.h"
#include "format/tiff.h"

namespace {

// Unsigned, so that EOF (-1) wraps instead of overflowing.
unsigned int nextByte(FILE* f) {
  return static_cast<unsigned int>(fgetc(f));
}

}  // namespace

unsigned int fgetm2(FILE* f) {
  const unsigned int high = nextByte(f);
  return (high << 8) + nextByte(f);
}

unsigned int fgetm4(FILE* f) {
  const unsigned int high = fgetm2(f);
  return (high << 16) + fgetm2(f);
}

unsigned int fgetmi2(FILE* f, int byteOrder) {
  if (lumenforge::byteOrderOfMark(byteOrder) == lumenforge::ByteOrder::big) return fgetm2(f);
  const unsigned int low = nextByte(f);
  return (nextByte(f) << 8) + low;
}

unsigned int fgetmi4(FILE* f, int byteOrder) {
  if (lumenforge::byteOrderOfMark(byteOrder) == lumenforge::ByteOrder::big) return fgetm4(f);
  const unsigned int low = fgetmi2(f, byteOrder);
  return (fgetmi2(f, byteOrder) << 16) + low;
}
