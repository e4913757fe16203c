#include "commands/settings_options.h"

#include <CLI/CLI.hpp>

#include "photos/settings_vocabulary.h"

namespace lfmeta {

CLI::Option* SettingsOptions::addTo(CLI::App& command) {
  CLI::Option* methodOption =
      command.add_option("--method", method, "Method of the settings, by name or number")
          ->type_name("METHOD");
  addAssignmentsTo(command, "Over the method's defaults; may be repeated")->needs(methodOption);
  return methodOption;
}

CLI::Option* SettingsOptions::addAssignmentsTo(CLI::App& command, const std::string& help) {
  return command.add_option("--set", assignments, help)
      ->type_name("Element=value")
      ->allow_extra_args(false);
}

int SettingsOptions::read(float* params) const {
  if (!method) return 0;
  const Method found = findMethod(*method);
  def_param(found.number, params);
  assignSettings(found, assignments, params);
  return found.number;
}

}  // namespace lfmeta
