// lfmeta settings: the tone-mapping settings that photographs and XMP packets carry.
#include <LumenforgeMetaLib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/replacement_file.h"
#include "base/report.h"
#include "base/whole_file.h"
#include "commands/commands.h"
#include "commands/settings_options.h"
#include "commands/settings_vocabulary.h"
#include "photos/photo_source.h"
#include "photos/photo_type.h"

namespace lfmeta {

namespace {

constexpr int kLastSetNumber = 99;

struct Options {
  std::string file;
  Output out;
  bool json = false;
  SettingsOptions settings;
  int setNumber = 0;  // 0: the next one
};

// The packet of an image, or the whole of any other file, with the NUL that the library wants.
Bytes packetIn(const std::string& path) {
  Bytes packet = findPhotoType(path) ? readPhotoSource(path).xmp : readForLibrary(path);
  packet.push_back(0);
  return packet;
}

int textLength(const Bytes& packet) {
  return static_cast<int>(packet.size());
}

Json valueOf(const std::string& text) {
  const std::vector<double> numbers = numbersIn(text);
  if (numbers.empty()) return text;
  return numbers.size() == 1 ? Json(numbers.front()) : Json(numbers);
}

int showSettings(const Options& options) {
  const Bytes packet = packetIn(options.file);
  const int number = get_settings_from_xmp(LUMENFORGE_SELECT_METHOD, textLength(packet),
                                           packet.data(), nullptr, nullptr);
  SettingsParams params{};
  if (number <= 0 ||
      get_settings_from_xmp(number, textLength(packet), packet.data(), nullptr, params) <= 0) {
    throw Failure(options.file, "holds no settings, or those of an unknown method");
  }
  const std::string name = findMethod(std::to_string(number)).name;
  const std::vector<Setting> settings = settingsOf(number, params);
  if (options.json) {
    Json values = Json::object();
    for (const Setting& setting : settings) values[setting.element] = valueOf(setting.text);
    const Json all{
        {"file", options.file}, {"method", number}, {"methodName", name}, {"settings", values}};
    std::printf("%s\n", jsonLine(all).c_str());
    return kSuccess;
  }
  std::printf("%s\n  %-28s%s (%d)\n", printable(options.file).c_str(), "Method", name.c_str(),
              number);
  for (const Setting& setting : settings) {
    std::printf("  %-28s%s\n", setting.element.c_str(), setting.text.c_str());
  }
  return kSuccess;
}

int writeSettings(const Options& options) {
  SettingsParams params{};
  const int method = options.settings.read(params);
  ReplacementFile file(options.out, {});
  if (write_xmp(file.path().c_str(), method, params) < 0) {
    throw Failure(options.out.path, "cannot be written; is there room on the disk?");
  }
  file.commit();
  return kSuccess;
}

int countIn(const Bytes& packet) {
  return lfsettings_occurences_in_xmp(textLength(packet), packet.data());
}

int insertSettings(const Options& options) {
  SettingsParams params{};
  const int method = options.settings.read(params);
  if (findPhotoType(options.file)) {
    throw Failure(options.file, "is an image; settings are inserted into a file of XMP text");
  }
  Bytes packet = packetIn(options.file);
  const int setNumber = options.setNumber > 0 ? options.setNumber : countIn(packet) + 1;
  if (setNumber > kLastSetNumber) {
    throw Failure(options.file, "holds settings enough; choose their place with --number 1 to 99");
  }
  packet.pop_back();

  // A packet is searched for its RDF element from byte 65 on. Blanks put before it, and taken away
  // again, let one that begins without a processing instruction be searched from its first byte.
  constexpr std::size_t kUnsearched = 65;
  packet.insert(packet.begin(), kUnsearched, ' ');
  const int length = textLength(packet);
  const int blockSize = insert_xmp(0, method, params, 0, 0, nullptr);
  packet.resize(packet.size() + static_cast<std::size_t>(blockSize));
  if (insert_xmp(setNumber, method, params, length, blockSize,
                 reinterpret_cast<char*>(packet.data())) <= 0) {
    throw Failure(options.file,
                  "is no XMP packet with x:xmpmeta and rdf:RDF elements that "
                  "settings can be inserted into; nothing is changed");
  }
  ReplacementFile file(options.file);
  file.write(std::span(packet).subspan(kUnsearched));
  file.commit();
  return kSuccess;
}

int countSettings(const Options& options) {
  std::printf("%d\n", countIn(packetIn(options.file)));
  return kSuccess;
}

struct Action {
  const char* name;
  const char* fileLabel;
  const char* fileHelp;
  const char* help;
  int (*run)(const Options&);
  bool takesSettings;
};

constexpr const char* kAnyFile = "JPEG, TIFF or PSD image, or a file of XMP text";

constexpr Action kActions[] = {
    {"show", "FILE", kAnyFile, "Show the method and the settings in an image or an XMP file",
     showSettings, false},
    {"write", "OUT.xmp", nullptr, "Write settings as an XMP packet file", writeSettings, true},
    {"insert", "PACKET.xmp", "File of XMP text, which is changed",
     "Insert a settings block into an XMP packet file", insertSettings, true},
    {"count", "FILE", kAnyFile, "Count the settings blocks in an image or an XMP file",
     countSettings, false},
};

}  // namespace

void addSettingsCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("settings", "Show, write, insert or count settings");
  command->require_subcommand(1);
  for (const Action& action : kActions) {
    CLI::App* one = command->add_subcommand(action.name, action.help);
    const auto options = std::make_shared<Options>();
    if (action.run == writeSettings) {
      options->out.addTo(*one, action.fileLabel, FileKind::settingsPacket)->required();
    } else {
      one->add_option(action.fileLabel, options->file, action.fileHelp)->type_name("")->required();
    }
    if (action.takesSettings) options->settings.addTo(*one)->required();
    if (action.run == insertSettings) {
      one->add_option("--number", options->setNumber,
                      "Number of the set, 1 to 99; one more than there are")
          ->type_name("N")
          ->transform(wholeNumber(1, kLastSetNumber));
    }
    if (action.run == showSettings) {
      one->add_flag("--json", options->json, "One JSON object");
      one->footer("Values are shown as the library writes them, numbers to one decimal mostly.");
    }
    runWhenAsked(*one, chosen, options, action.run);
  }
}

}  // namespace lfmeta
