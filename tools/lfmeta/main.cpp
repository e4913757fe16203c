// lfmeta: the library at the command line.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "base/command_description.h"
#include "base/command_line.h"
#include "base/completion.h"
#include "base/failure.h"
#include "base/help.h"
#include "base/manual.h"
#include "base/report.h"
#include "commands/commands.h"

namespace lfmeta {

namespace {

// A file that the tool opens must not take the place of a standard stream that the caller has
// closed: what is said would end up in it. Such a stream is one that cannot be read, or written,
// from.
void fillStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    const bool closed = fcntl(stream, F_GETFD) < 0;
    if (closed && open("/dev/null", stream == STDOUT_FILENO ? O_RDONLY : O_WRONLY) < 0) return;
  }
}

int describeTool(const CLI::App& app, const std::string& form) {
  const std::map<std::string, std::string (*)(const CommandDescription&)> kForms{
      {"bash", bashCompletion},
      {"zsh", zshCompletion},
      {"synopsis", manualSynopsis},
      {"commands", manualCommands}};
  std::fputs(kForms.at(form)(describe(app)).c_str(), stdout);
  return kSuccess;
}

int run(int argc, char** argv) {
  CLI::App app("Reads the metadata of photographs and writes it into finished images.", "lfmeta");
  app.set_version_flag("-V,--version", "lfmeta " LFMETA_VERSION, "Show the version");
  app.set_help_flag("-h,--help", "Show this help");
  app.formatter(std::make_shared<HelpFormatter>());
  app.require_subcommand(1);

  Run chosen;
  addReadCommand(app, chosen);
  addBracketsCommand(app, chosen);
  addSettingsCommand(app, chosen);
  addTiffCommand(app, chosen);
  addIccCommand(app, chosen);
  addExifCommand(app, chosen);
  addHdrCommand(app, chosen);
  addHelpCommand(app, chosen);

  // For the build, which installs what it prints: not for people, and not in the help.
  if (argc == 3 && argv[1] == std::string_view("--describe")) return describeTool(app, argv[2]);
  try {
    parseWords(app, argc, argv);
  } catch (const CLI::Success& answer) {
    return app.exit(answer);
  } catch (const CLI::ParseError& error) {
    printFailure("", usageMessage(app, error));
    return kUsageError;
  }
  return runReportingFailure(chosen);
}

}  // namespace

}  // namespace lfmeta

int main(int argc, char** argv) {
  using namespace lfmeta;
  fillStandardStreams();
  static std::array<char, 65536> buffer;
  if (isatty(STDOUT_FILENO) == 0) std::setvbuf(stdout, buffer.data(), _IOFBF, buffer.size());
  // What the library says there would stand between the tool's lines without the file that it is
  // about; its results say the same.
  if (std::FILE* nowhere = std::fopen("/dev/null", "we")) stderr = nowhere;
  int exitStatus = kFailure;
  try {
    exitStatus = run(argc, argv);
  } catch (const std::exception& error) {
    printFailure("", error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    printFailure("standard output", std::string("cannot be written: ") + std::strerror(errno));
    return kFailure;
  }
  return exitStatus;
}
