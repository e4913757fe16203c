// A picture in memory, as a decoder leaves it and as the TIFF writer takes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "base/whole_file.h"

namespace lfmeta {

enum class Sample { integer8, integer16, half, float32 };

std::size_t sizeOf(Sample sample);

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
using Pixels = std::unique_ptr<unsigned char[], FreeMemory>;

struct Image {
  int width = 0;
  int height = 0;
  int channels = 0;     // 1 (gray) or 3 (RGB); opacity is left out
  int orientation = 0;  // TIFF code of how the rows lie, 0 when the picture does not say
  int resolution = 0;   // pixels per inch, 0 when the picture does not say
  Sample sample = Sample::integer8;
  Pixels pixels;     // rows without gaps, samples in the machine's order
  Bytes iccProfile;  // the one in the picture, empty when there is none

  std::size_t rowSize() const;
  std::size_t sampleCount() const;
  std::size_t pixelsSize() const { return sampleCount() * sizeOf(sample); }
  unsigned char* row(int y) const { return pixels.get() + rowSize() * static_cast<std::size_t>(y); }
};

// The most memory that pixels may take, unless a user says otherwise.
inline constexpr uint64_t kUsualMemory = uint64_t{2} << 30;

// A picture's file, from which a decoder reads row by row.
struct PictureFile {
  std::FILE* stream = nullptr;  // at its start, and able to seek
  uint64_t size = 0;
  uint64_t memory = 0;  // the most bytes that the pixels may take as they are decoded
};

// What the pixels of a file of that size may take: what the user says, else up to kUsualMemory,
// but above 64 MiB no more than deflate can pack into the file.
uint64_t memoryFor(uint64_t fileSize, std::optional<uint64_t> asked);

// Gives the image its size and pixels, which are not cleared: pages that no row reaches cost
// nothing, whatever size a damaged file claims. Throws std::runtime_error when they take more
// memory than the file is given, or rows are longer than the TIFF writer can take them.
void allocatePixels(const PictureFile& file, Image& image, uint64_t width, uint64_t height,
                    int channels, Sample sample);
// Throws std::runtime_error that says how to allow more.
void requireMemory(uint64_t needed, uint64_t allowed);

// A resolution in a file as Image has it: rounded, 0 when it is nothing that a file can mean.
int resolutionFrom(double pixelsPerInch);

// The file of that name as one of the formats below, known by its first bytes. Throws Failure.
Image decodeImage(const std::string& path, std::optional<uint64_t> memoryAsked);

// The same for an open file: all throw std::runtime_error with what is wrong.
Image decodePicture(const PictureFile& file);
Image decodePng(const PictureFile& file);
Image decodeJpeg(const PictureFile& file);
Image decodeNetpbm(const PictureFile& file);  // P1 to P7
Image decodePfm(const PictureFile& file);     // Pf and PF
Image decodeRadiance(const PictureFile& file);
Image decodeOpenExr(const PictureFile& file);
Image decodeTiff(const PictureFile& file);

}  // namespace lfmeta
