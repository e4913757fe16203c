// Writes the inputs that fuzzing starts from: make_seeds FOLDER gives a folder for each target.
#include <filesystem>
#include <map>

#include "support/calls.h"

using namespace calls;

static std::string tiffFile(char channels, char depth, const std::string& xmp) {
  return "\5\4"s + channels + depth + "\1\6\0\1\x40" + std::string(16, 'i') + "RGB " + std::string(44, 'i') +
         "\6\x1C\2\x19\0\1s" + std::string(44, '\1') + bytesOf(kMeta) + bytesOf(kCameraGps) + std::string(60, '\1') +
         xmp;
}

// Pictures that no other program at hand writes, behind the depth that they are brought to.
static std::vector<std::string> pictures() {
  const auto attribute = [](const std::string& name, const std::string& type, const std::string& value) {
    return name + '\0' + type + '\0' + u32(value.size(), ByteOrder::little) + value;
  };
  std::string exr = "v/1\1\2\0\0\0"s + attribute("channels", "chlist", "Y\0"s + numbers(32, {1, 0, 1, 1}) + '\0');
  for (const auto* window : {"dataWindow", "displayWindow"}) exr += attribute(window, "box2i", std::string(16, '\0'));
  for (const auto* byte : {"compression", "lineOrder"}) exr += attribute(byte, byte, "\0"s);
  for (const auto* one : {"pixelAspectRatio", "screenWindowWidth"}) exr += attribute(one, "float", "\0\0\x80\x3F"s);
  exr += attribute("screenWindowCenter", "v2f", std::string(8, '\0')) + '\0';
  exr += numbers(32, {static_cast<uint32_t>(exr.size()) + 8, 0, 0, 2}) + "\0\x3C"s;
  std::vector<std::string> all{"P3 1 1 9 1 2 #c\n3", "#?RADIANCE\n\n+Y 1 +X 3\nabcd\1\1\1\2", exr};
  for (std::string& seed : all) seed = "\3" + seed;
  return all;
}

int main(int, char** arguments) {
  const std::string start = "\0\0\0\0"s;
  const std::string settings(240, '\1');
  const Tiff big{ByteOrder::big};
  const std::string tiff = big.file(big.entries("110='X'; 112=s6"), big.entries("829A=1/250; 8827=s100"),
                                    big.entries("2=48/1,49/1,50/1"), big.entries("1=l9"));
  std::map<std::string, std::vector<std::string>> seeds = {
      {"image",
       {"\1"s + kPhoto, "\0"s + tiff,
        "\0"s + kTiff.file({Tiff::text(0x110, std::string(70, 'm')), {0x8649, 1, 99, kBlock}}, kExif, kGps),
        "\0"s + kTiff.file({{0x83BB, 7, 8, kIptc}}), "\2"s + psd(resource(0x422, tiff) + kBlock)}},
      {"directory",
       {"\0\0"s + start + "\0\0"s + kExifDirectory, "\1\0"s + start + "\0\0"s + kGpsDirectory,
        "\2\0\0\0\xFF\0\0\0"s + kBlock}},
      {"texts", {start + kText.substr(4990), start + "2023:05:06 07:08:09", start + kIcc}},
      {"iptc", {"\4" + kIptc, "\4", "\0"s + dataset(1, 90, "u") + dataset(2, 0, "ab")}},
      {"tiff_tag", {"\1\0\5"s + kTiffFile}},
      {"exif_block", {"\6" + numbers(32, {5, 44, 9, 90, 13, 6, 20, 11}) + bytesOf(kMeta) + bytesOf(kCameraGps)}},
      {"tool_photos", {kPhoto, tiff, psd(resource(0x422, tiff) + kBlock)}},
      {"tool_pictures", pictures()},
      {"tiff_file", {tiffFile(2, 0, kXmp), tiffFile(3, 1, ""), tiffFile(0, 3, kXmp + '\0')}},
  };
  for (const int method : {1, 2, 3, 4, 10, 11, 13, 14, 15}) {
    std::string text(9999, ' ');
    const std::string lens(60 + static_cast<std::size_t>(method), 'L');
    const auto* params = reinterpret_cast<const float*>(settings.data());
    text.resize(static_cast<std::size_t>(embed_xmp(1, method, params, 1, lens.data(), text.data())));
    seeds["settings"].push_back("\0\0\1"s + text);
    seeds["packet"].push_back("\1"s + static_cast<char>(method) + "\0\0"s + settings.substr(0, 120) + "\1L" + kHostXmp);
  }
  for (const auto& [target, inputs] : seeds) {
    const std::string folder = arguments[1] + ("/" + target);
    std::filesystem::create_directories(folder);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      std::ofstream(folder + "/" + std::to_string(i), std::ios::binary) << inputs[i];
    }
  }
}
