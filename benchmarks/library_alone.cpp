// Reads the metadata of the JPEG files named, and tells nothing of it: the least that a tool can
// do.
#include "LumenforgeMetaLib.h"

int main(int count, char** names) {
  int read = 0;
  for (int i = 1; i < count; ++i) {
    ExifInfo info;
    if (getExifData(names[i], LUMENFORGE_JPEG, &info) > 0) ++read;
  }
  return read == count - 1 ? 0 : 1;
}
