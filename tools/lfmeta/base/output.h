// The file that a command is to write, as the command line names it.
#pragma once

#include <string>

#include "base/cli_fwd.h"
#include "base/file_kind.h"

namespace lfmeta {

struct Output {
  std::string path;  // "-" is standard output
  FileKind kind{};
  bool force = false;

  // Adds the argument that names the file, and --force. Returns the argument's option.
  CLI::Option* addTo(CLI::App& command, const std::string& label, FileKind kind);
  // The same for an option, such as --plot.
  CLI::Option* addTo(CLI::App& command, const std::string& name, const std::string& label,
                     const std::string& help, FileKind kind);
};

}  // namespace lfmeta
