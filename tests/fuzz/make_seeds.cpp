// Writes the inputs that fuzzing starts from: make_seeds FOLDER gives a folder for each target.
#include <filesystem>
#include <map>

#include "support/calls.h"

namespace {

using namespace calls;

std::string little(uint32_t value) {
  return u32(value, ByteOrder::little);
}

template <typename T>
std::string bytesOf(const T& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Settings as the packet target takes them, one method each.
std::vector<std::string> packetSeeds() {
  std::vector<std::string> seeds;
  for (const char method : {1, 2, 3, 4, 10, 11, 13, 14, 15}) {
    seeds.push_back("\1"s + method + "\0\0"s + std::string(120, '\1') + "\7EF 50mm" + kHostXmp);
  }
  return seeds;
}

std::vector<std::string> settingsSeeds() {
  std::vector<std::string> seeds;
  SettingsParams params{};
  for (const int method : {1, 2, 3, 4, 10, 11, 13, 14, 15}) {
    def_param(method, params);
    std::string text(static_cast<std::size_t>(embed_xmp(0, method, params, 1, "L", nullptr)), ' ');
    embed_xmp(1, method, params, 1, "L", text.data());
    seeds.push_back("\0\0\0\1"s + text);
    for (std::size_t at; (at = text.find("lfst:Strength>")) != std::string::npos;) {
      text.replace(at + 13, 1, "='");
    }
    seeds.push_back("\1\1\0\2"s + text);
  }
  return seeds;
}

std::string tiffFileSeed(char channels, char depth, char conversion, const std::string& xmp) {
  return "\5\0\4\0"s + channels + depth + conversion + "\1\6\1\0\0"s + little(300) + "\x40\7"s +
         bytesOf(kMeta) + bytesOf(kCameraGps) + std::string(60, '\1') + std::string(16, 'i') +
         "RGB " + std::string(44, 'i') + "\x1C\2\x19\0\2se"s + xmp;
}

}  // namespace

int main(int, char** arguments) {
  const std::string places = "\0\0\0\0"s;
  const Tiff big{ByteOrder::big};
  const std::string bigTiff = big.file({Tiff::text(0x110, "X"), big.shortEntry(0x112, 6)},
                                       {big.fraction(0x829A, 1, 250), big.shortEntry(0x8827, 100)},
                                       {big.fraction(2, 48, 1, 3)}, {big.longEntry(1, 9)});
  const std::map<std::string, std::vector<std::string>> seeds = {
      {"image",
       {"\1"s + kPhoto, "\0"s + bigTiff, "\0"s + kTiffFile,
        "\0"s + kTiff.file({{0x8649, 1, 99, kBlock}, Tiff::text(0x10E, kText.substr(4990))}, kExif,
                           kGps),
        "\2"s + psd(resource(0x422, bigTiff) + kBlock)}},
      {"directory",
       {"\0\0"s + places.substr(2) + places + kExifDirectory,
        "\1\0"s + places.substr(2) + places + kGpsDirectory,
        "\2\0"s + places.substr(2) + little(static_cast<uint32_t>(kBlock.size())) + kBlock}},
      {"description",
       {"\0"s + places + kText.substr(4990), "\0"s + places + "2023:05:06 07:08:09"}},
      {"profile_name", {kIcc, std::string(50, 'p') + "desc\0\0\0\0\0\0\0\x10ProPhoto RGB 1.0"s}},
      {"settings", settingsSeeds()},
      {"packet", packetSeeds()},
      {"iptc", {"\4lake" + kIptc, "\4lake", "\0"s + dataset(1, 90, "u") + dataset(2, 0, "ab")}},
      {"tiff_tag",
       {"\1\0\5"s + kTiffFile, "\x10\1\5"s + kTiff.file({Tiff::text(0x110, "X")}, kExif)}},
      {"exif_block",
       {"\6"s + std::string(32, '\0') + bytesOf(kMeta) + bytesOf(kCameraGps),
        "\1"s + numbers(32, {5, 44, 9, 91, 13, 6, 20, 11}) + bytesOf(kMeta) + bytesOf(kCameraGps)}},
      {"tiff_file",
       {tiffFileSeed(3, 0, 0, kXmp), tiffFileSeed(4, 1, 0, ""), tiffFileSeed(1, 2, 0, kHostXmp),
        tiffFileSeed(2, 3, 0, kXmp + '\0'), tiffFileSeed(3, 0, 1, "")}},
  };
  for (const auto& [target, inputs] : seeds) {
    const std::filesystem::path folder = std::filesystem::path(arguments[1]) / target;
    std::filesystem::create_directories(folder);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      std::ofstream(folder / std::to_string(i), std::ios::binary) << inputs[i];
    }
  }
}
