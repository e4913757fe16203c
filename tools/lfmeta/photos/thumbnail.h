// The embedded thumbnails of photographs as files of their own.
#pragma once

#include <mutex>
#include <string>

#include "photos/photo_source.h"

namespace lfmeta {

// Used by several threads.
class ThumbnailFolder {
 public:
  // Makes the folder where it is missing. Throws Failure, as write does.
  explicit ThumbnailFolder(std::string folder);

  // Writes the photograph's thumbnail under the photograph's path within the folder, unless it is
  // there already, and returns that file's path; empty without a thumbnail. A file of other content
  // is not replaced but a Failure, as is a block that is no JPEG stream within the photograph.
  std::string write(const PhotoFile& photo, const ExifInfo& info);

 private:
  std::string folder_;
  std::mutex lock_;
};

}  // namespace lfmeta
