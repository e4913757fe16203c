/*
 * A picture as a finished TIFF file, with what a photograph says of its taking:
 *   finished_tiff PHOTO.jpg OUT.tif
 */
#include <LumenforgeMetaLib.h>
#include <string.h>

enum { kWidth = 320, kHeight = 200 };

int main(int argc, char** argv) {
  static uint16_t pixels[kHeight][kWidth][3]; /* 16 bits a sample, in the machine's byte order */
  static MetadataBuf meta;                    /* zero, as all that is static */
  static GpsBuf gps;
  static TifImageInfo image;
  ExifInfo photo;
  const char* keyword = "lake";
  unsigned char iptc[64];
  int x, y, result;

  if (argc < 3) return 2;
  result = getExifData(argv[1], LUMENFORGE_JPEG, &photo);
  if (result < 0) {
    fprintf(stderr, "%s cannot be read (result %d).\n", argv[1], result);
    return 1;
  }
  metadataBufFromExifInfo(&photo, &meta, &gps);

  for (y = 0; y < kHeight; ++y) {
    for (x = 0; x < kWidth; ++x) {
      pixels[y][x][0] = (uint16_t)(x * 65535 / (kWidth - 1));
      pixels[y][x][1] = (uint16_t)(y * 65535 / (kHeight - 1));
      pixels[y][x][2] = 32768;
    }
  }
  image.width = kWidth;
  image.height = kHeight;
  image.channels = 3;
  image.bitsPerSample = 16;
  image.resolution = 300;
  image.orientation = (int32_t)photo.orientation;
  /* A new block is 12 bytes longer than its first keyword. */
  add_iptc_keyword(0, NULL, (int)strlen(keyword), (const unsigned char*)keyword, iptc);

  result = buf2tif(pixels, &image, sizeof pixels[0], NULL, &meta, &gps, 12 + (int)strlen(keyword),
                   iptc, LUMENFORGE_UNKNOWN_METHOD, NULL, 0, NULL, argv[2]);
  if (result < 0) {
    fprintf(stderr, "%s cannot be written (result %d).\n", argv[2], result);
    return 1;
  }
  printf("%s: %d x %d pixels, %s\n", argv[2], kWidth, kHeight, meta.model);
  return 0;
}
