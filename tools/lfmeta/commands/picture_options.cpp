#include "commands/picture_options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <stdexcept>

#include "base/command_line.h"
#include "base/failure.h"
#include "pictures/sample_depth.h"

namespace lfmeta {

namespace {

const std::map<std::string, Sample>& depths() {
  static const std::map<std::string, Sample> all{{"8", Sample::integer8},
                                                 {"16", Sample::integer16},
                                                 {"half", Sample::half},
                                                 {"float", Sample::float32}};
  return all;
}

}  // namespace

void PictureOptions::addTo(CLI::App& command) {
  command.add_option("--max-memory", memory_, "What pixels may take, e.g. 500M or 8G ")
      ->transform(sizeInBytes())
      ->type_name("SIZE");
}

void PictureOptions::addDepthTo(CLI::App& command) {
  command.add_option("--depth", depth_, "Samples: 8, 16, half or float (as IN has them)")
      ->check(CLI::IsMember(depths()).description(""))
      ->type_name("8|16|half|float");
}

Image PictureOptions::read() const {
  Image image = decodeImage(in, memory_);
  try {
    if (depth_) convertSamples(image, depths().at(*depth_), memory_.value_or(kUsualMemory));
  } catch (const std::runtime_error& error) {
    throw Failure(in, error.what());
  }
  return image;
}

}  // namespace lfmeta
