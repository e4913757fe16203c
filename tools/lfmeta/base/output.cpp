#include "base/output.h"

#include <CLI/CLI.hpp>

namespace lfmeta {

CLI::Option* Output::addTo(CLI::App& command, const std::string& label, FileKind theKind) {
  return addTo(command, label, "", "File to create, or to replace if it is of this kind", theKind);
}

CLI::Option* Output::addTo(CLI::App& command, const std::string& name, const std::string& label,
                           const std::string& help, FileKind theKind) {
  kind = theKind;
  command.add_flag("--force", force, "Replace the file to be written, whatever it is");
  return command.add_option(name, path, help)->type_name(label);
}

}  // namespace lfmeta
