// One photograph's metadata, and how a person is told of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "photos/exif_tags.h"
#include "photos/photo_source.h"

namespace lfmeta {

struct PhotoReport {
  PhotoRecord record;
  ExifTags tags;
  uint32_t width = 0;  // pixels; 0 when it does not say
  uint32_t height = 0;
  int method = 0;  // of the settings in the XMP packet; 0 when there are none or it is unknown
  std::string lens;
  // Where another reader may say something else, and why. Holds texts of the file.
  std::vector<std::string> notices;
  std::string thumbnailFile;  // where the thumbnail has been written
};

// None, or a Failure thrown, as readPhotoRecord has it.
std::optional<PhotoReport> readPhotoReport(PhotoFile& file);

// Numbers for a person and for a program.
struct Position {
  std::optional<double> latitude;
  std::optional<double> longitude;
  std::optional<double> altitude;  // metres
};
Position positionOf(const ExifInfo& info);

std::string exposureText(float seconds);      // "1/250", "0.5" or "30"
const char* exposureModeName(uint32_t mode);  // empty when it is unknown

// A block of indented lines under the file's name, grouped; what is not known is left out.
std::string describeForPerson(const std::string& path, const PhotoReport& report);

}  // namespace lfmeta
