// What a command that reads a picture is told of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/cli_fwd.h"
#include "pictures/picture.h"

namespace lfmeta {

class PictureOptions {
 public:
  std::string in;

  // The picture's name as the first word, and the option --max-memory.
  void addTo(CLI::App& command);
  // Adds --depth, too.
  void addDepthTo(CLI::App& command);

  // The picture in the depth asked for. Throws Failure.
  Image read() const;
  std::optional<uint64_t> memoryAsked() const { return memory_; }

 private:
  std::optional<uint64_t> memory_;
  std::optional<std::string> depth_;
};

}  // namespace lfmeta
