#include "tiff/camera_make.h"

#include <array>

namespace lumenforge {

namespace {

struct MakeRule {
  std::string_view modelPrefix;
  std::string_view make;
};

// The prefixes exclude one another; as everywhere in EXIF, they are case-sensitive.
constexpr std::array kMakeRules = {
    MakeRule{"Canon", "Canon"},       MakeRule{"NIKON", "NIKON CORPORATION"},
    MakeRule{"SLT-A", "SONY"},        MakeRule{"SONY", "SONY"},
    MakeRule{"DMC-", "Panasonic"},    MakeRule{"NEX-", "SONY"},
    MakeRule{"X10 ", "FUJIFILM"},     MakeRule{"PENTAX", "PENTAX"},
    MakeRule{"DSLR-A", "SONY"},       MakeRule{"E-1", "OLYMPUS"},
    MakeRule{"E-2", "OLYMPUS"},       MakeRule{"E-3", "OLYMPUS"},
    MakeRule{"E-4", "OLYMPUS"},       MakeRule{"E-5", "OLYMPUS"},
    MakeRule{"E-6", "OLYMPUS"},       MakeRule{"E-7", "OLYMPUS"},
    MakeRule{"E-P", "OLYMPUS"},       MakeRule{"E-M", "OLYMPUS"},
    MakeRule{"SP3", "OLYMPUS"},       MakeRule{"SP5", "OLYMPUS"},
    MakeRule{"OLYMPUS", "OLYMPUS"},   MakeRule{"FinePix", "FUJIFILM"},
    MakeRule{"FUJIFILM", "FUJIFILM"}, MakeRule{"Panasonic", "Panasonic"},
};

}  // namespace

std::string_view makeOfModel(std::string_view model) {
  for (const MakeRule& rule : kMakeRules) {
    if (model.starts_with(rule.modelPrefix)) return rule.make;
  }
  return {};
}

}  // namespace lumenforge
