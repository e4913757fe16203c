// The help of a command, for a terminal of 80 columns.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace lfmeta {

class HelpFormatter : public CLI::FormatterBase {
 public:
  std::string make_help(const CLI::App* app, std::string caller, CLI::AppFormatMode) const override;
};

}  // namespace lfmeta
