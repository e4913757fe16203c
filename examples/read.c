/* What a photograph says of its taking:   read PHOTO.jpg */
#include <LumenforgeMetaLib.h>

int main(int argc, char** argv) {
  ExifInfo info;
  const int result = getExifData(argc > 1 ? argv[1] : "photo.jpg", LUMENFORGE_JPEG, &info);
  if (result < 0) {
    fprintf(stderr, "The photograph cannot be read (result %d).\n", result);
    return 1;
  }
  printf("%s, 1/%.0f s, f/%.1f, ISO %u\n", info.model, 1.0 / (double)info.exposureTime,
         (double)info.fNumber, (unsigned)info.iso);
  return 0;
}
