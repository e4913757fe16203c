/*
 * Settings into an XMP file and back:   settings OUT.xmp
 */
#include <LumenforgeMetaLib.h>

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : "settings.xmp";
  SettingsParams settings;
  int method;

  def_param(LUMENFORGE_TONE_BALANCER, settings);
  settings[0] = 72.5F; /* strength */
  if (write_xmp(path, LUMENFORGE_TONE_BALANCER, settings) < 0) {
    fprintf(stderr, "%s cannot be written.\n", path);
    return 1;
  }

  method = read_xmp(path, LUMENFORGE_SELECT_METHOD, NULL);
  if (method <= 0 || read_xmp(path, method, settings) < 0) {
    fprintf(stderr, "%s holds no settings.\n", path);
    return 1;
  }
  printf("method %d, strength %.1f, white clip %.3f\n", method, (double)settings[0],
         (double)settings[3]);
  return 0;
}
