// Exposure brackets: photographs that one camera took in a row, each with another exposure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "photos/read_report.h"

namespace lfmeta {

// What is asked of a photograph.
struct Shot {
  std::string file;
  std::string make;
  std::string model;
  std::string serialNumber;
  std::string lens;
  std::string takenText;
  double taken = 0;    // seconds of the camera's own clock
  bool exact = false;  // which counts fractions of them
  float exposureTime = 0;
  float fNumber = 0;
  uint32_t iso = 0;
  float focalLength = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  std::optional<float> exposureBias;
  bool automatic = false;  // the camera says that it brackets
  bool metered = false;    // or that it chose the exposure of each by its meter

  // How bright the same scene becomes, in EV.
  double brightness() const;
};

// None without capture time and exposure time. The time zone must be UTC: a camera's clock knows
// none, and must not jump where a time zone does.
std::optional<Shot> shotOf(const std::string& file, const PhotoReport& report);

struct BracketSet {
  std::vector<const Shot*> frames;  // in the order taken
  std::vector<double> ev;           // of each, against the reference
  std::size_t reference = 0;        // the frame that the others lie around
  std::vector<double> steps;        // EV between neighbours, from the darkest to the brightest
  std::vector<double> gaps;         // seconds between the end of a frame and the next
  std::vector<std::string> odd;     // what speaks against its being whole
};

// The sets among the shots, by the time of their first frames. No set has frames of two folders,
// cameras, lenses or kinds of file, nor a pause of more than `longestGap` seconds.
std::vector<BracketSet> findBrackets(const std::vector<Shot>& shots, double longestGap);

}  // namespace lfmeta
