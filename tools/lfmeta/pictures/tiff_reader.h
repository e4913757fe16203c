// A TIFF picture as libtiff sees it, and libtiff's last words.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>

#include "pictures/picture.h"

namespace lfmeta {

class TiffReader {
 public:
  explicit TiffReader(const PictureFile& file);

  TIFF* get() const { return tiff_.get(); }
  template <typename Value>
  Value field(uint32_t tag) const {
    Value value{};
    TIFFGetFieldDefaulted(tiff_.get(), tag, &value);
    return value;
  }
  [[noreturn]] void fail() const;

  struct Source {
    PictureFile file;
    uint64_t readable;
  };

 private:
  Source source_;
  std::string message_;
  std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff_{nullptr, TIFFClose};
};

}  // namespace lfmeta
