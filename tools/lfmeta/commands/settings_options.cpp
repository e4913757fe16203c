#include "commands/settings_options.h"

#include "commands/settings_vocabulary.h"

namespace lfmeta {

CLI::Option* SettingsOptions::addTo(CLI::App& command) {
  CLI::Option* methodOption =
      command.add_option("--method", method, "Method of the settings, by name or number")
          ->type_name("METHOD");
  command.add_option("--set", assignments, "Over the method's defaults; may be repeated")
      ->type_name("Element=value")
      ->allow_extra_args(false)
      ->needs(methodOption);
  return methodOption;
}

int SettingsOptions::read(float* params) const {
  if (!method) return 0;
  const Method found = findMethod(*method);
  assignSettings(found, assignments, params);
  return found.number;
}

}  // namespace lfmeta
