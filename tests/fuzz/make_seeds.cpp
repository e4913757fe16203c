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

// Pictures behind the depth that they are brought to; the target makes the checksums of a PNG right.
static std::vector<std::string> pictures() {
  const auto chunk = [](const std::string& name, const std::string& data) {
    return u32(data.size(), ByteOrder::big) + name + data + "zsum";
  };
  const auto attribute = [](const std::string& name, const std::string& type, const std::string& value) {
    return name + '\0' + type + '\0' + u32(value.size(), ByteOrder::little) + value;
  };
  std::string exr = "v/1\1\2\0\0\0"s + attribute("channels", "chlist", "Y\0"s + numbers(32, {1, 0, 1, 1}) + '\0');
  for (const auto* window : {"dataWindow", "displayWindow"}) exr += attribute(window, "box2i", std::string(16, '\0'));
  for (const auto* byte : {"compression", "lineOrder"}) exr += attribute(byte, byte, "\0"s);
  for (const auto* one : {"pixelAspectRatio", "screenWindowWidth"}) exr += attribute(one, "float", "\0\0\x80\x3F"s);
  exr += attribute("screenWindowCenter", "v2f", std::string(8, '\0')) + '\0';
  exr += numbers(32, {static_cast<uint32_t>(exr.size()) + 8, 0, 0, 2}) + "\0\x3C"s;
  std::vector<std::string> all{
      "P6 2 1 255 abcdef",
      "P5 1 1 65535 ab",
      "P4 9 1 ab",
      "P1 3 1 0 10",
      "P3 1 1 9 1 2 #c\n3",
      "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcd",
      "PF 1 1 -1 abcdabcdabcd",
      "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 9\n\2\2\0\x9\x89r\x89g\x89"
      "b\x9"
      "123456789"s,
      "#?RADIANCE\n\n+Y 1 +X 3\nabcd\1\1\1\2",
      exr,
      kTiff.file(kTiff.entries("100=s2; 101=s1; 102=s8; 103=s1; 106=s1; 111=s0; 115=s1; 117=s2")),
      "\x89PNG\r\n\x1A\n" + chunk("IHDR", "\0\0\0\2\0\0\0\1\x8\3\0\0\1"s) + chunk("PLTE", "abcdef") +
          chunk("tRNS", "\1") + chunk("IDAT", "x\1\1\3\0\xFC\xFF\0\0\1"s) + chunk("IEND", "")};
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
      {"description", {start + kText.substr(4990), start + "2023:05:06 07:08:09"}},
      {"profile_name", {kIcc}},
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
