#include "pictures/openexr_header.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include "pictures/header_text.h"

namespace lfmeta {

namespace {

struct FixedSize {
  std::string_view type;
  uint32_t size;
};

constexpr std::array kFixedSizes{
    FixedSize{"box2f", 16},
    FixedSize{"box2i", 16},
    FixedSize{"chromaticities", 32},
    FixedSize{"compression", 1},
    FixedSize{"deepImageState", 1},
    FixedSize{"double", 8},
    FixedSize{"envmap", 1},
    FixedSize{"float", 4},
    FixedSize{"int", 4},
    FixedSize{"keycode", 28},
    FixedSize{"lineOrder", 1},
    FixedSize{"m33d", 72},
    FixedSize{"m33f", 36},
    FixedSize{"m44d", 128},
    FixedSize{"m44f", 64},
    FixedSize{"rational", 8},
    FixedSize{"tiledesc", 9},
    FixedSize{"timecode", 8},
    FixedSize{"v2d", 16},
    FixedSize{"v2f", 8},
    FixedSize{"v2i", 8},
    FixedSize{"v3d", 24},
    FixedSize{"v3f", 12},
    FixedSize{"v3i", 12},
};

class Walk {
 public:
  explicit Walk(const PictureFile& file) : file_(file), text_(file.stream) {}

  void run() {
    constexpr unsigned char kManyParts = 0x10;  // in the version's second byte
    std::array<unsigned char, 8> magicAndVersion{};
    text_.bytes(magicAndVersion);
    const bool manyParts = (magicAndVersion[5] & kManyParts) != 0;
    for (bool inHeader = false;;) {
      if (!readName().empty()) {
        inHeader = true;
        readAttribute();
        continue;
      }
      // The end of a header; behind the last of many stands an empty one.
      if (!manyParts || !inHeader) break;
      inHeader = false;
    }
    std::rewind(file_.stream);
  }

 private:
  [[noreturn]] static void refuse() {
    throw std::runtime_error("is a damaged OpenEXR picture: its header is damaged");
  }

  // Up to its NUL, which is taken, too.
  std::string readName() {
    constexpr std::size_t kLongest = 255;
    std::string name;
    for (unsigned char c = text_.byte(); c != 0; c = text_.byte()) {
      if (name.size() == kLongest) refuse();
      name += static_cast<char>(c);
    }
    return name;
  }

  uint32_t readSize() {
    std::array<unsigned char, 4> bytes{};
    text_.bytes(bytes);
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
  }

  uint64_t position() const { return static_cast<uint64_t>(ftello(file_.stream)); }
  void go(uint64_t position) {
    if (fseeko(file_.stream, static_cast<off_t>(position), SEEK_SET) != 0) refuse();
  }

  // Behind the attribute's name.
  void readAttribute() {
    const std::string type = readName();
    const uint32_t size = readSize();
    const uint64_t end = position() + size;
    if (end > file_.size) refuse();
    for (const FixedSize& fixed : kFixedSizes) {
      if (fixed.type == type && fixed.size != size) refuse();
    }
    if (type == "chlist") passChannels(end);
    if (type == "stringvector") passStrings(end);
    go(end);
  }

  void passChannels(uint64_t end) {
    constexpr uint64_t kTypeAndSampling = 16;
    while (!readName().empty()) go(position() + kTypeAndSampling);
    if (position() != end) refuse();
  }

  void passStrings(uint64_t end) {
    while (position() < end) {
      const uint64_t size = readSize();
      go(position() + size);
    }
    if (position() != end) refuse();
  }

  const PictureFile& file_;
  TextReader text_;
};

}  // namespace

void requireSoundOpenExrHeaders(const PictureFile& file) {
  Walk(file).run();
}

}  // namespace lfmeta
