// ICC profiles (ICC.1) as files and in TIFF files.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/whole_file.h"

namespace lfmeta {

struct IccProfile {
  Bytes bytes;

  // Four letters each, as the header has them: "RGB ", "mntr".
  std::string_view colourSpace() const { return letters(16); }
  std::string_view deviceClass() const { return letters(12); }
  std::string version() const;      // "2.1.0"
  std::string description() const;  // the profile's own name for people, UTF-8; empty without one

 private:
  std::string_view letters(std::size_t at) const;
};

// Why these bytes are no profile that an image can have; nothing when they are one.
const char* profileFault(std::span<const unsigned char> bytes);

// A file that is a profile. Throws Failure for any other.
IccProfile readProfile(const std::string& path);

// The profile of the first image of a TIFF file, as it stands there; nothing without one. Throws
// Failure when the file is no TIFF, is damaged or cannot be read.
std::optional<IccProfile> readTiffProfile(const std::string& path);

// Gives the first image another profile, or its first one. Throws Failure, with nothing changed,
// also when the profile is of another colour space than the image. `profilePath` is named when the
// profile is at fault.
void setTiffProfile(const std::string& path, const IccProfile& profile,
                    const std::string& profilePath);

}  // namespace lfmeta
