#include "photos/finished_metadata.h"

#include "base/failure.h"
#include "photos/photo_source.h"

namespace lfmeta {

namespace {

void addKeywords(const FinishedMetadataOptions& options, Bytes& iptc) {
  constexpr std::size_t kMostAdded = 12;  // a new block's first dataset and the keyword's header
  for (const std::string& keyword : options.keywords) {
    Bytes longer(iptc.size() + kMostAdded + keyword.size());
    const int result = add_iptc_keyword(
        static_cast<int>(iptc.size()), iptc.data(), static_cast<int>(keyword.size()),
        reinterpret_cast<const unsigned char*>(keyword.data()), longer.data());
    if (result == -2) throw UsageFailure("--keyword", "takes at most 65535 bytes");
    if (result < 0) {
      throw Failure(*options.photo, "has a damaged IPTC block; no keyword can be added to it");
    }
    longer.resize(longer.size() - (iptc.empty() ? 0 : 7));
    iptc = std::move(longer);
  }
}

}  // namespace

void FinishedMetadataOptions::addTo(CLI::App& command) {
  command
      .add_option("--like", photo,
                  "Take camera, exposure, time, position, orientation, IPTC and XMP from it")
      ->type_name("PHOTO");
  command.add_option("--keyword", keywords, "IPTC keyword; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command.add_option("--icc", profile, "File with an ICC profile (that of IN, if any)")
      ->type_name("FILE");
  settings.addTo(command);
}

FinishedMetadata FinishedMetadataOptions::read() const {
  FinishedMetadata finished;
  finished.method = settings.read(finished.settings);
  if (photo) {
    PhotoSource source = readPhotoSource(*photo);
    exportRecords(source.info, finished.meta, finished.gps);
    finished.orientation = static_cast<int>(source.info.orientation);
    finished.iptc = std::move(source.iptc);
    // A packet that holds settings would win over the settings asked for.
    if (finished.method == 0) finished.xmp = std::move(source.xmp);
  }
  addKeywords(*this, finished.iptc);
  if (profile) finished.profile = readProfile(*profile);
  return finished;
}

void FinishedMetadataOptions::fitProfile(FinishedMetadata& finished, Bytes ofPicture,
                                         bool gray) const {
  if (!profile) finished.profile.bytes = std::move(ofPicture);
  const bool fits = profileFault(finished.profile.bytes) == nullptr &&
                    finished.profile.colourSpace() == (gray ? "GRAY" : "RGB ");
  if (fits) return;
  if (profile) {
    throw Failure(*profile, "is a profile for " + std::string(finished.profile.colourSpace()) +
                                ", and the picture is " + (gray ? "gray" : "RGB"));
  }
  finished.profile.bytes.clear();
}

}  // namespace lfmeta
