/*
 * Another ICC profile for a TIFF file, in place:   profile FILE.tif PROFILE.icc
 */
#include <LumenforgeMetaLib.h>

enum { kProfileTag = 34675 };

int main(int argc, char** argv) {
  static unsigned char profile[1 << 20];
  char name[33] = ""; /* a name that fills its 32 bytes has no terminator */
  FILE* file;
  int size, result, offset;

  if (argc < 3 || (file = fopen(argv[2], "rb")) == NULL) return 2;
  size = (int)fread(profile, 1, sizeof profile, file);
  fclose(file);

  result = update_tif_profile(size, profile, argv[1]);
  if (result == LUMENFORGE_NO_PROFILE_ENTRY) {
    fprintf(stderr, "%s has no profile that could be replaced.\n", argv[1]);
    return 1;
  }
  if (result < 0) {
    fprintf(stderr, "%s cannot be changed, and is as it was (result %d).\n", argv[1], result);
    return 1;
  }

  /* Where it stands now. */
  if ((file = fopen(argv[1], "rb")) == NULL) return 1;
  result = get_tif_tag(file, kProfileTag, &size, &offset);
  fclose(file);
  if (result < 0 || get_profile_name(size, profile, name) < 0) return 1;
  printf("%s: %s, %d bytes\n", argv[1], name, size);
  return 0;
}
