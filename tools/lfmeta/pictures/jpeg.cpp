// JPEG pictures, through libjpeg-turbo: gray or RGB in 8 bits. A picture that is cut short or
// damaged is refused, where the decoder by itself would fill in gray.
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <jerror.h>
#include <jpeglib.h>

#include "pictures/picture.h"

namespace lfmeta {

namespace {

struct Errors {
  jpeg_error_mgr base;  // first, so that libjpeg's pointer is a pointer to this
  std::jmp_buf target;
  char message[JMSG_LENGTH_MAX];
};

[[noreturn]] void leave(j_common_ptr jpeg) {
  auto* errors = reinterpret_cast<Errors*>(jpeg->err);
  jpeg->err->format_message(jpeg, errors->message);
  std::longjmp(errors->target, 1);
}

[[noreturn]] void leaveSaying(j_common_ptr jpeg, std::string_view message) {
  auto* errors = reinterpret_cast<Errors*>(jpeg->err);
  message.copy(errors->message, sizeof errors->message - 1);
  std::longjmp(errors->target, 1);
}

void judgeWarning(j_common_ptr jpeg, int level) {
  constexpr std::array<int, 4> kHarmless{JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM,
                                         JWRN_BOGUS_ICC};
  if (level >= 0) return;
  for (const int code : kHarmless) {
    if (jpeg->err->msg_code == code) return;
  }
  leave(jpeg);
}

struct Reader {
  jpeg_decompress_struct jpeg{};
  Errors errors{};
  jpeg_progress_mgr progress{};
  JOCTET* profile = nullptr;  // allocated by libjpeg
  unsigned int profileSize = 0;
  ~Reader() {
    jpeg_destroy_decompress(&jpeg);
    std::free(profile);
  }
};

// An error of libjpeg leaves `run` by a jump, so that it must hold nothing to be released.
bool guarded(Reader& reader, void (*run)(Reader&, const PictureFile&, Image&),
             const PictureFile& file, Image& image) {
  if (setjmp(reader.errors.target) != 0) return false;
  run(reader, file, image);
  return true;
}

// Each scan of a progressive picture goes through all of its coefficients.
void limitScans(j_common_ptr jpeg) {
  constexpr int kMostScans = 100;
  if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > kMostScans) {
    leaveSaying(jpeg, "it has more than 100 scans");
  }
}

int resolutionOf(const jpeg_decompress_struct& jpeg) {
  constexpr std::array kInches{0.0, 1.0, 2.54};  // of a unit; the first is none
  if (jpeg.saw_JFIF_marker == FALSE || jpeg.density_unit >= kInches.size()) return 0;
  return resolutionFrom(kInches[jpeg.density_unit] * jpeg.X_density);
}

void readHeader(Reader& reader, const PictureFile& file, Image& image) {
  constexpr uint64_t kRowsAndTables = 16U << 20;
  jpeg_create_decompress(&reader.jpeg);
  reader.jpeg.progress = &reader.progress;
  reader.progress.progress_monitor = limitScans;
  // A progressive picture's coefficients are kept while it is read: 16 bits for each sample.
  reader.jpeg.mem->max_memory_to_use = static_cast<long>(kRowsAndTables + 3 * file.memory);
  jpeg_save_markers(&reader.jpeg, JPEG_APP0 + 2, 0xFFFF);
  jpeg_stdio_src(&reader.jpeg, file.stream);
  jpeg_read_header(&reader.jpeg, TRUE);
  jpeg_read_icc_profile(&reader.jpeg, &reader.profile, &reader.profileSize);
  reader.jpeg.out_color_space =
      reader.jpeg.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
  image.resolution = resolutionOf(reader.jpeg);
}

void readRows(Reader& reader, const PictureFile&, Image& image) {
  jpeg_start_decompress(&reader.jpeg);
  const std::size_t rowSize = std::size_t{reader.jpeg.output_width} *
                              static_cast<std::size_t>(reader.jpeg.output_components);
  if (rowSize != image.rowSize()) {
    leaveSaying(reinterpret_cast<j_common_ptr>(&reader.jpeg), "its rows have another size");
  }
  while (reader.jpeg.output_scanline < reader.jpeg.output_height) {
    JSAMPROW row = image.row(static_cast<int>(reader.jpeg.output_scanline));
    jpeg_read_scanlines(&reader.jpeg, &row, 1);
  }
  jpeg_finish_decompress(&reader.jpeg);
}

}  // namespace

Image decodeJpeg(const PictureFile& file) {
  Image image;
  Reader reader;
  reader.jpeg.err = jpeg_std_error(&reader.errors.base);
  reader.errors.base.error_exit = leave;
  reader.errors.base.emit_message = judgeWarning;
  if (!guarded(reader, readHeader, file, image)) {
    throw std::runtime_error(std::string("is a damaged JPEG picture: ") + reader.errors.message);
  }
  if (reader.jpeg.num_components == 4) {
    throw std::runtime_error("is a CMYK picture; convert it to RGB first");
  }
  image.iccProfile.assign(reader.profile, reader.profile + reader.profileSize);
  allocatePixels(file, image, reader.jpeg.image_width, reader.jpeg.image_height,
                 reader.jpeg.out_color_space == JCS_GRAYSCALE ? 1 : 3, Sample::integer8);
  if (!guarded(reader, readRows, file, image)) {
    throw std::runtime_error(std::string("is a damaged JPEG picture: ") + reader.errors.message);
  }
  return image;
}

}  // namespace lfmeta
