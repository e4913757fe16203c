#include "tiff/camera_make.h"

namespace lumenforge {
namespace {

struct MakeRule {
  std::string_view modelPrefix;
  std::string_view make;
};

// The prefixes exclude one another; as everywhere in EXIF, they are case-sensitive.
constexpr MakeRule kMakeRules[] = {
    {"Canon", "Canon"},       {"NIKON", "NIKON CORPORATION"},
    {"SLT-A", "SONY"},        {"SONY", "SONY"},
    {"DMC-", "Panasonic"},    {"NEX-", "SONY"},
    {"X10 ", "FUJIFILM"},     {"PENTAX", "PENTAX"},
    {"DSLR-A", "SONY"},       {"E-1", "OLYMPUS"},
    {"E-2", "OLYMPUS"},       {"E-3", "OLYMPUS"},
    {"E-4", "OLYMPUS"},       {"E-5", "OLYMPUS"},
    {"E-6", "OLYMPUS"},       {"E-7", "OLYMPUS"},
    {"E-P", "OLYMPUS"},       {"E-M", "OLYMPUS"},
    {"SP3", "OLYMPUS"},       {"SP5", "OLYMPUS"},
    {"OLYMPUS", "OLYMPUS"},   {"FinePix", "FUJIFILM"},
    {"FUJIFILM", "FUJIFILM"}, {"Panasonic", "Panasonic"},
};

}  // namespace

std::string_view makeOfModel(std::string_view model) {
  for (const MakeRule& rule : kMakeRules) {
    if (model.starts_with(rule.modelPrefix)) return rule.make;
  }
  return {};
}

}  // namespace lumenforge
