// lfmeta settings: the tone-mapping settings that photographs and XMP packets carry.
#include <LumenforgeMetaLib.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/json.h"
#include "base/report.h"
#include "commands/commands.h"
#include "commands/settings_changes.h"
#include "photos/packet_edit.h"
#include "photos/packet_rewrite.h"
#include "photos/settings_vocabulary.h"

namespace lfmeta {

namespace {

struct Options {
  std::vector<std::string> files;
  Output out;
  std::string method;
  bool json = false;
  SettingsOptions settings;
  std::optional<int> number;
};

Json valueOf(const std::string& text) {
  const std::vector<double> numbers = numbersIn(text);
  if (numbers.empty()) return text;
  return numbers.size() == 1 ? Json(numbers.front()) : Json(numbers);
}

struct FoundSettings {
  std::vector<int> sets;  // the numbers of all; empty in a text that is no well-formed packet
  std::string unread;     // elements that stand where the library reads none
  int number = 0;         // of this one
  int method = 0;
  std::vector<Setting> settings;
};

// The text to read them from, as the library wants it: the whole or, for a number, one description.
Bytes textOfSet(const std::string& path, std::optional<int> number, FoundSettings& found) {
  Bytes packet = packetOf(path);
  const auto outline = outlineOf(packet);
  std::optional<PacketDescription> chosen;
  for (const SettingsSet& set : outline ? settingsSets(*outline) : std::vector<SettingsSet>{}) {
    if (number.value_or(set.number) == set.number && (number || found.sets.empty())) {
      found.unread = settingsBeforeMethod(outline->descriptions[set.description]);
    }
    found.sets.push_back(set.number);
    if (number && *number == set.number) chosen = outline->descriptions[set.description];
  }
  if (number && !chosen) {
    throw Failure(path, "holds no set " + std::to_string(*number) + " of settings");
  }
  if (chosen) {
    packet = Bytes(packet.begin() + static_cast<std::ptrdiff_t>(chosen->start),
                   packet.begin() + static_cast<std::ptrdiff_t>(chosen->end));
  }
  found.number = number.value_or(found.sets.empty() ? 0 : found.sets.front());
  packet.push_back('\0');
  return packet;
}

FoundSettings findSettings(const std::string& path, std::optional<int> number) {
  FoundSettings found;
  const Bytes text = textOfSet(path, number, found);
  const int length = static_cast<int>(text.size());
  SettingsParams params{};
  found.method =
      get_settings_from_xmp(LUMENFORGE_SELECT_METHOD, length, text.data(), nullptr, nullptr);
  if (found.method <= 0 ||
      get_settings_from_xmp(found.method, length, text.data(), nullptr, params) <= 0) {
    throw Failure(path, "holds no settings, or those of an unknown method");
  }
  found.settings = settingsOf(found.method, params);
  return found;
}

void showOne(const std::string& path, const Options& options) {
  const FoundSettings found = findSettings(path, options.number);
  const std::string method = findMethod(std::to_string(found.method)).name;
  if (!found.unread.empty()) {
    printFailure(path, "not read, for standing before the method: " + found.unread +
                           "; settings edit puts them behind it");
  }
  if (options.json) {
    Json values = Json::object();
    for (const Setting& setting : found.settings) values[setting.element] = valueOf(setting.text);
    Json all = jsonOfFile(path);
    all.update({{"number", found.number > 0 ? Json(found.number) : Json()},
                {"sets", found.sets},
                {"method", found.method},
                {"methodName", method},
                {"settings", values}});
    std::printf("%s\n", jsonLine(all).c_str());
    return;
  }
  std::printf("%s\n", printable(path).c_str());
  const auto line = [](const std::string& label, const std::string& text) {
    std::printf("  %-28s%s\n", label.c_str(), text.c_str());
  };
  if (found.sets.size() > 1) {
    std::string all;
    for (const int number : found.sets) all += (all.empty() ? "" : ", ") + std::to_string(number);
    line("Set", std::to_string(found.number) + " (of " + all + ")");
  }
  line("Method", method + " (" + std::to_string(found.method) + ")");
  for (const Setting& setting : found.settings) line(setting.element, setting.text);
}

int runShow(const Options& options) {
  return runForEachFile(options.files, [&](const std::string& path) { showOne(path, options); });
}

int runCount(const Options& options) {
  Bytes packet = packetOf(options.files.front());
  packet.push_back('\0');
  std::printf("%d\n", lfsettings_occurences_in_xmp(static_cast<int>(packet.size()), packet.data()));
  return kSuccess;
}

int runWrite(const Options& options) {
  writeSettings(options.out, options.settings);
  return kSuccess;
}

int runInsert(const Options& options) {
  return runForEachFile(options.files, [&](const std::string& path) {
    insertSettings(path, options.settings, options.number);
  });
}

int runEdit(const Options& options) {
  return runForEachFile(options.files, [&](const std::string& path) {
    editSettings(path, options.settings.assignments, options.number);
  });
}

int runMethods(const Options& options) {
  for (const Method& method : namedMethods()) {
    if (options.json) {
      const Json one{{"method", method.number}, {"methodName", method.name}};
      std::printf("%s\n", jsonLine(one).c_str());
    } else {
      std::printf("%3d  %s\n", method.number, method.name.c_str());
    }
  }
  return kSuccess;
}

int runElements(const Options& options) {
  const Method method = findMethod(options.method);
  SettingsParams params{};
  def_param(method.number, params);
  for (const Setting& setting : settingsOf(method.number, params)) {
    const std::string expected = expectedText(method.number, params, setting.element);
    if (options.json) {
      const Json one{
          {"element", setting.element}, {"default", valueOf(setting.text)}, {"expected", expected}};
      std::printf("%s\n", jsonLine(one).c_str());
    } else {
      std::printf("%-29s%-33s%s\n", setting.element.c_str(), setting.text.c_str(),
                  expected.c_str());
    }
  }
  return kSuccess;
}

void addFile(CLI::App& action, Options& options, const char* help, bool several = true) {
  action.add_option("FILE", options.files, help)
      ->type_name("")
      ->required()
      ->expected(1, several ? CLI::detail::expected_max_vector_size : 1);
}

void addNumber(CLI::App& action, Options& options, const char* help) {
  action.add_option("--number", options.number, help)
      ->type_name("N")
      ->transform(wholeNumber(1, kLastSetNumber));
}

constexpr const char* kReadFiles = "JPEG, TIFF or PSD images, or files of XMP text";
constexpr const char* kChangedFiles =
    "JPEG or TIFF images, or files of XMP text, which are changed";

}  // namespace

void addSettingsCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("settings", "Show, write, insert, edit or count settings");
  command->require_subcommand(1);
  const auto add = [&](const char* name, const char* help, int (*run)(const Options&)) {
    CLI::App* action = command->add_subcommand(name, help);
    auto options = std::make_shared<Options>();
    runWhenAsked(*action, chosen, std::shared_ptr<Options>(options), run);
    return std::pair<CLI::App&, Options&>(*action, *options);
  };
  {
    const auto [action, options] =
        add("show", "Show the method and the settings in images or XMP files", runShow);
    addFile(action, options, kReadFiles);
    addNumber(action, options, "Number of the set to show; the first one");
    action.add_flag("--json", options.json, "One JSON object a file");
    action.footer("Values are shown as the library writes them, numbers to one decimal mostly.");
  }
  {
    const auto [action, options] =
        add("write", "Write settings as an XMP packet file, or as those of an image", runWrite);
    options.out.addTo(action, "OUT", FileKind::settingsPacket)->required();
    options.settings.addTo(action)->required();
    action.footer(
        "A JPEG or TIFF image that is there gets the settings instead of its own; all else in its "
        "packet, and in the image, stays as it is. --force replaces the whole file.");
  }
  {
    const auto [action, options] =
        add("insert", "Insert one more set of settings into images or XMP files", runInsert);
    addFile(action, options, kChangedFiles);
    options.settings.addTo(action)->required();
    addNumber(action, options, "Number of the set; one more than the highest");
  }
  {
    const auto [action, options] = add("edit", "Change settings in images or XMP files", runEdit);
    addFile(action, options, kChangedFiles);
    options.settings.addAssignmentsTo(action, "Value to change; may be repeated")->required();
    addNumber(action, options, "Number of the set to change; the first one");
    action.footer("The set is written anew, in the form that the library writes.");
  }
  {
    const auto [action, options] =
        add("count", "Count the sets of settings in an image or an XMP file", runCount);
    addFile(action, options, "JPEG, TIFF or PSD image, or a file of XMP text", false);
  }
  {
    const auto [action, options] = add("methods", "List the methods", runMethods);
    action.add_flag("--json", options.json, "One JSON object a method");
  }
  {
    const auto [action, options] =
        add("elements", "List the elements of a method, with their defaults", runElements);
    action.add_option("METHOD", options.method, "Method, by name or number")
        ->type_name("")
        ->required();
    action.add_flag("--json", options.json, "One JSON object an element");
  }
}

}  // namespace lfmeta
