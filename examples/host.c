/*
 * A host of the library, in C99: reads a photograph, writes a small TIFF image with the
 * photograph's metadata and settings of its own, reads that back, adds a second set of settings to
 * a packet in memory, and replaces the TIFF's ICC profile.
 *
 *   cc host.c -lLumenforgeMetaLib -o host && ./host PHOTO.jpg OUT.tif
 */
#include <LumenforgeMetaLib.h>
#include <stdlib.h>
#include <string.h>

enum { kWidth = 64, kHeight = 48 };

static int failed(const char* what, int result) {
  fprintf(stderr, "%s: result %d\n", what, result);
  return 1;
}

/* A profile is but its header here: its size, and the colour space at byte 16. */
static void makeProfile(unsigned char* profile, unsigned char size) {
  memset(profile, 0, size);
  profile[3] = size;
  memcpy(profile + 16, "RGB ", 4);
}

static int writeImage(const char* path, const MetadataBuf* meta, const GpsBuf* gps) {
  static unsigned char pixels[kHeight][kWidth][3];
  unsigned char profile[128];
  unsigned char iptc[64];
  const char* keyword = "lake";
  SettingsParams settings;
  TifImageInfo info;
  int x, y;

  for (y = 0; y < kHeight; ++y) {
    for (x = 0; x < kWidth; ++x) {
      pixels[y][x][0] = (unsigned char)(4 * x);
      pixels[y][x][1] = (unsigned char)(5 * y);
      pixels[y][x][2] = 128;
    }
  }
  makeProfile(profile, sizeof profile);
  add_iptc_keyword(0, NULL, (int)strlen(keyword), (const unsigned char*)keyword, iptc);
  def_param(LUMENFORGE_TONE_BALANCER, settings);

  memset(&info, 0, sizeof info);
  info.width = kWidth;
  info.height = kHeight;
  info.channels = 3;
  info.bitsPerSample = 8;
  info.resolution = 300;
  info.iccLength = sizeof profile;
  info.orientation = (int32_t)meta->orientation;
  return buf2tif(pixels, &info, sizeof pixels[0], profile, meta, gps, 12 + (int)strlen(keyword),
                 iptc, LUMENFORGE_TONE_BALANCER, settings, 0, NULL, path);
}

/* The settings that the file's packet holds; its method, or what says that there is none. */
static int readSettings(const char* path, const ExifInfo* info, float* settings) {
  const int size = (int)info->xmpLength;
  unsigned char* packet = calloc((size_t)size + 1, 1);
  int method = -4;
  if (packet != NULL) {
    method = extract_xmp(path, size, (int)info->xmpOffset, packet);
    if (method > 0) get_settings_from_xmp(method, size + 1, packet, NULL, settings);
  }
  free(packet);
  return method;
}

/* A second set of settings in a packet that another program began. Returns the number of sets. */
static int addSettings(const float* settings) {
  static const char begun[] =
      "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n"
      "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end='w'?>";
  int length = sizeof begun;
  int set;
  int sets = -4;
  const int room = insert_xmp(0, LUMENFORGE_AVERAGE, settings, 0, 0, NULL);
  char* packet = calloc(sizeof begun + 2 * (size_t)room, 1);
  if (packet == NULL) return sets;
  memcpy(packet, begun, sizeof begun);
  for (set = 1; set <= 2; ++set) {
    const int inserted = insert_xmp(set, LUMENFORGE_AVERAGE, settings, length, room, packet);
    if (inserted > 0) length += inserted;
  }
  sets = lfsettings_occurences_in_xmp(length, (const unsigned char*)packet);
  free(packet);
  return sets;
}

int main(int argc, char** argv) {
  ExifInfo photo;
  MetadataBuf meta;
  GpsBuf gps;
  SettingsParams settings;
  unsigned char profile[200];
  int result;

  if (argc != 3) {
    fprintf(stderr, "usage: host PHOTO.jpg OUT.tif\n");
    return 2;
  }
  result = getExifData(argv[1], LUMENFORGE_JPEG, &photo);
  if (result < 0) return failed("reading the photograph", result);
  printf("%s: 1/%.0f s, ISO %u\n", photo.model, 1.0 / (double)photo.exposureTime,
         (unsigned)photo.iso);
  memset(&meta, 0, sizeof meta);
  memset(&gps, 0, sizeof gps);
  metadataBufFromExifInfo(&photo, &meta, &gps);

  result = writeImage(argv[2], &meta, &gps);
  if (result != kHeight) return failed("writing the image", result);

  result = getExifData(argv[2], LUMENFORGE_TIFF, &photo);
  if (result < 0) return failed("reading the image back", result);
  result = readSettings(argv[2], &photo, settings);
  if (result != LUMENFORGE_TONE_BALANCER) return failed("reading the settings back", result);
  printf("%s: %s, method %d, strength %.1f\n", argv[2], photo.model, result, (double)settings[0]);

  result = addSettings(settings);
  if (result != 2) return failed("adding settings to a packet", result);

  makeProfile(profile, sizeof profile);
  result = update_tif_profile(sizeof profile, profile, argv[2]);
  if (result != (int)sizeof profile) return failed("replacing the profile", result);
  printf("%s: profile replaced\n", argv[2]);
  return 0;
}
