// One photograph's metadata, for a person and for a program.
#pragma once

#include <string>

#include "photos/photo_source.h"

namespace lfmeta {

struct PhotoReport {
  PhotoRecord record;
  int method = 0;  // of the settings in the XMP packet; 0 when there are none or it is unknown
  std::string lens;
};

// None, or a Failure thrown, as readPhotoRecord has it.
std::optional<PhotoReport> readPhotoReport(const std::string& path);

// A block of indented lines under the file's name, grouped; what is not known is left out.
std::string describeForPerson(const std::string& path, const PhotoReport& report);

// One JSON object on a line: the fields of the records under their names.
std::string describeAsJson(const std::string& path, const PhotoReport& report);

}  // namespace lfmeta
