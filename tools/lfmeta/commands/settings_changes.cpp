#include "commands/settings_changes.h"

#include <LumenforgeMetaLib.h>

#include <algorithm>

#include "base/failure.h"
#include "base/locked_file.h"
#include "base/replacement_file.h"
#include "photos/packet_edit.h"
#include "photos/packet_rewrite.h"
#include "photos/photo_type.h"
#include "photos/settings_vocabulary.h"

namespace lfmeta {

namespace {

// A packet that can be changed, as it stands in the file. The file is locked from before it is read
// until the change is done, so that none of several changes at once is lost.
struct EditedPacket {
  LockedFile file;
  Bytes text;
  PacketOutline outline;
  std::vector<SettingsSet> sets;

  explicit EditedPacket(const std::string& path) : file(path), text(packetOf(path)) {
    if (text.empty() && findPhotoType(path)) text = newPacket();
    auto found = outlineOf(text);
    if (!found) {
      throw Failure(path,
                    "holds no well-formed XMP packet with an rdf:RDF element that settings could "
                    "stand in; nothing is changed");
    }
    outline = std::move(*found);
    sets = settingsSets(outline);
  }

  void apply(std::vector<PacketEdit> edits) const {
    replacePacketOf(file, edited(text, std::move(edits)));
  }

  bool has(int number) const {
    return std::any_of(sets.begin(), sets.end(),
                       [number](const SettingsSet& set) { return set.number == number; });
  }
};

int nextNumber(const std::string& path, const EditedPacket& packet) {
  int highest = 0;
  for (const SettingsSet& set : packet.sets) highest = std::max(highest, set.number);
  if (highest < kLastSetNumber) return highest + 1;
  for (int number = 1; number <= kLastSetNumber; ++number) {
    if (!packet.has(number)) return number;
  }
  throw Failure(path, "holds 99 sets of settings, the most that there can be");
}

const SettingsSet& chooseSet(const std::string& path, const EditedPacket& packet,
                             std::optional<int> number) {
  const auto found =
      std::find_if(packet.sets.begin(), packet.sets.end(),
                   [number](const SettingsSet& set) { return !number || set.number == *number; });
  if (found == packet.sets.end()) {
    throw Failure(path, number ? "holds no set " + std::to_string(*number) + " of settings"
                               : "holds no settings");
  }
  return *found;
}

// The settings of one description alone; returns their method.
int readSet(const std::string& path, const EditedPacket& packet,
            const PacketDescription& description, float* params) {
  Bytes text = methodFirst(packet.text, description);
  text.push_back('\0');
  const int length = static_cast<int>(text.size());
  const int method =
      get_settings_from_xmp(LUMENFORGE_SELECT_METHOD, length, text.data(), nullptr, nullptr);
  if (method <= 0 || get_settings_from_xmp(method, length, text.data(), nullptr, params) <= 0) {
    throw Failure(path, "holds settings of an unknown method, which cannot be edited");
  }
  return method;
}

void putInPhoto(const std::string& path, int method, const float* params) {
  const EditedPacket packet(path);
  std::vector<PacketEdit> edits{
      insertFirst(packet.text, packet.outline, settingsBlock(method, params))};
  for (const SettingsSet& set : packet.sets) {
    for (PacketEdit& edit :
         replaceSettings(packet.text, packet.outline.descriptions[set.description])) {
      edits.push_back(std::move(edit));
    }
  }
  packet.apply(std::move(edits));
}

}  // namespace

void writeSettings(const Output& out, const SettingsOptions& settings) {
  SettingsParams params{};
  const int method = settings.read(params);
  if (!out.force && out.path != "-" && takesPacket(out.path)) {
    return putInPhoto(out.path, method, params);
  }
  ReplacementFile file(out, {});
  if (write_xmp(file.path().c_str(), method, params) < 0) {
    throw Failure(out.path, "cannot be written; is there room on the disk?");
  }
  file.commit();
}

void insertSettings(const std::string& path, const SettingsOptions& settings,
                    std::optional<int> number) {
  SettingsParams params{};
  const int method = settings.read(params);
  const EditedPacket packet(path);
  const int ownNumber = number.value_or(0) > 0 ? *number : nextNumber(path, packet);
  if (packet.has(ownNumber)) {
    throw Failure(path, "holds a set " + std::to_string(ownNumber) +
                            " of settings already; settings edit changes it");
  }
  const std::string block = settingsBlock(method, params, ownNumber);
  packet.apply({insertFirst(packet.text, packet.outline, block)});
}

void editSettings(const std::string& path, const std::vector<std::string>& assignments,
                  std::optional<int> number) {
  const EditedPacket packet(path);
  const SettingsSet& set = chooseSet(path, packet, number);
  const PacketDescription& description = packet.outline.descriptions[set.description];
  SettingsParams params{};
  const int method = readSet(path, packet, description, params);
  assignSettings(findMethod(std::to_string(method)), assignments, params);
  const std::string block = settingsBlock(method, params, set.number);
  packet.apply(replaceSettings(packet.text, description, block));
}

}  // namespace lfmeta
