// lfmeta: the library at the command line.
#include <unistd.h>

#include <array>
#include <cstdio>
#include <exception>

#include "base/failure.h"
#include "base/report.h"
#include "commands/commands.h"

namespace lfmeta {

namespace {

int run(int argc, char** argv) {
  CLI::App app("Reads the metadata of photographs and writes it into finished images.", "lfmeta");
  app.set_version_flag("--version", "lfmeta " LFMETA_VERSION);
  app.require_subcommand(1);
  app.get_formatter()->column_width(34);

  Run chosen;
  addReadCommand(app, chosen);
  addSettingsCommand(app, chosen);
  addTiffCommand(app, chosen);
  addIccCommand(app, chosen);
  addExifCommand(app, chosen);
  addHdrCommand(app, chosen);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kSuccess : kUsageError;
  }
  return runReportingFailure(chosen);
}

}  // namespace

}  // namespace lfmeta

int main(int argc, char** argv) {
  using namespace lfmeta;
  static std::array<char, 65536> buffer;
  if (isatty(STDOUT_FILENO) == 0) std::setvbuf(stdout, buffer.data(), _IOFBF, buffer.size());
  int exitStatus = kFailure;
  try {
    exitStatus = run(argc, argv);
  } catch (const std::exception& error) {
    printFailure("lfmeta", error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    printFailure("standard output", "cannot be written");
    return kFailure;
  }
  return exitStatus;
}
