// JPEG pictures, through libjpeg-turbo: gray or RGB in 8 bits. A picture that is cut short or
// damaged is refused, where the decoder by itself would fill in gray.
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

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
  JOCTET* profile = nullptr;  // allocated by libjpeg
  unsigned int profileSize = 0;
  ~Reader() {
    jpeg_destroy_decompress(&jpeg);
    std::free(profile);
  }
};

// An error of libjpeg leaves `run` by a jump, so that it must hold nothing to be released.
bool guarded(Reader& reader, void (*run)(Reader&, std::span<const unsigned char>, Image&),
             std::span<const unsigned char> file, Image& image) {
  if (setjmp(reader.errors.target) != 0) return false;
  run(reader, file, image);
  return true;
}

void readHeader(Reader& reader, std::span<const unsigned char> file, Image&) {
  jpeg_create_decompress(&reader.jpeg);
  // Progressive pictures are kept whole while they are read: no more than such a file can need.
  reader.jpeg.mem->max_memory_to_use = static_cast<long>((64U << 20) + 512 * file.size());
  jpeg_save_markers(&reader.jpeg, JPEG_APP0 + 2, 0xFFFF);
  jpeg_mem_src(&reader.jpeg, file.data(), file.size());
  jpeg_read_header(&reader.jpeg, TRUE);
  jpeg_read_icc_profile(&reader.jpeg, &reader.profile, &reader.profileSize);
  reader.jpeg.out_color_space =
      reader.jpeg.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
}

void readRows(Reader& reader, std::span<const unsigned char>, Image& image) {
  jpeg_start_decompress(&reader.jpeg);
  const std::size_t rowSize = std::size_t{reader.jpeg.output_width} *
                              static_cast<std::size_t>(reader.jpeg.output_components);
  if (rowSize != image.rowSize()) ERREXIT(&reader.jpeg, JERR_BAD_LENGTH);
  while (reader.jpeg.output_scanline < reader.jpeg.output_height) {
    JSAMPROW row = image.row(static_cast<int>(reader.jpeg.output_scanline));
    jpeg_read_scanlines(&reader.jpeg, &row, 1);
  }
  jpeg_finish_decompress(&reader.jpeg);
}

}  // namespace

Image decodeJpeg(std::span<const unsigned char> file) {
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
  allocatePixels(image, reader.jpeg.image_width, reader.jpeg.image_height,
                 reader.jpeg.out_color_space == JCS_GRAYSCALE ? 1 : 3, Sample::integer8);
  if (!guarded(reader, readRows, file, image)) {
    throw std::runtime_error(std::string("is a damaged JPEG picture: ") + reader.errors.message);
  }
  return image;
}

}  // namespace lfmeta
