// PNG pictures, through libpng: gray or colour in 8 or 16 bits, smaller depths and palettes
// widened.
#include <png.h>

#include <csetjmp>
#include <new>
#include <stdexcept>
#include <string>

#include "pictures/picture.h"

namespace lfmeta {

namespace {

[[noreturn]] void leave(png_structp png, png_const_charp message) {
  *static_cast<std::string*>(png_get_error_ptr(png)) = message;
  png_longjmp(png, 1);
}

void ignore(png_structp, png_const_charp) {}

// Of the chunks that a picture can do without, two say what is kept here. The others cost nothing.
void chooseChunks(png_structp png) {
  constexpr png_alloc_size_t kLargestChunk = 8U << 20;
  constexpr png_byte kKept[] = "iCCP\0pHYs";
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT, kKept, 2);
  png_set_chunk_malloc_max(png, kLargestChunk);
  png_set_chunk_cache_max(png, 1);
}

// Palettes, small depths and transparent colours are widened, opacity is left out: what remains is
// gray or RGB in 8 or 16 bits.
void chooseTransformations(png_structp png) {
  png_set_expand(png);
  png_set_strip_alpha(png);
  png_set_swap(png);  // 16-bit samples: from the file's order to the machine's
}

void copyProfile(png_structp png, png_infop info, Bytes& profile) {
  png_charp name = nullptr;
  int compression = 0;
  png_bytep bytes = nullptr;
  png_uint_32 size = 0;
  if (png_get_iCCP(png, info, &name, &compression, &bytes, &size) != 0) {
    profile.assign(bytes, bytes + size);
  }
}

// An error of libpng leaves `run` by a jump, so that it must hold nothing to be released.
bool guarded(png_structp png, void (*run)(png_structp, png_infop, Image&), png_infop info,
             Image& image) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  run(png, info, image);
  return true;
}

void readHeader(png_structp png, png_infop info, Image& image) {
  constexpr double kMetresOfInch = 0.0254;
  chooseChunks(png);
  png_read_info(png, info);
  image.resolution = resolutionFrom(kMetresOfInch * png_get_pixels_per_meter(png, info));
  copyProfile(png, info, image.iccProfile);
  chooseTransformations(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);  // from here on `info` describes the rows as they are read
}

void readRows(png_structp png, png_infop info, Image& image) {
  if (png_get_rowbytes(png, info) != image.rowSize()) png_error(png, "its rows have another size");
  const int passes = png_get_interlace_type(png, info) == PNG_INTERLACE_NONE ? 1 : 7;
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < image.height; ++y) png_read_row(png, image.row(y), nullptr);
  }
  png_read_end(png, nullptr);
}

struct Reader {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

}  // namespace

Image decodePng(const PictureFile& file) {
  std::string message;
  Image image;
  Reader reader;
  reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, leave, ignore);
  reader.info = reader.png == nullptr ? nullptr : png_create_info_struct(reader.png);
  if (reader.info == nullptr) throw std::bad_alloc();
  png_init_io(reader.png, file.stream);
  if (!guarded(reader.png, readHeader, reader.info, image)) {
    throw std::runtime_error("is a damaged PNG picture: " + message);
  }
  allocatePixels(
      file, image, png_get_image_width(reader.png, reader.info),
      png_get_image_height(reader.png, reader.info), png_get_channels(reader.png, reader.info),
      png_get_bit_depth(reader.png, reader.info) == 16 ? Sample::integer16 : Sample::integer8);
  if (!guarded(reader.png, readRows, reader.info, image)) {
    throw std::runtime_error("is a damaged PNG picture: " + message);
  }
  return image;
}

}  // namespace lfmeta
