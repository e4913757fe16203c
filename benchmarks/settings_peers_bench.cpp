// The same packets parsed by libraries for XML, which then have yet to be asked for the settings,
// against one memchr over the text.
#include <expat.h>

#include <cstring>
#include <pugixml.hpp>

#include "compare.h"
#include "packets.h"

namespace {

void compare(benchmark::State& state, bool (*parse)(const std::string& text)) {
  const std::string text = bench::packetOf(static_cast<std::size_t>(state.range(0)));
  if (!parse(text)) return state.SkipWithError("the packet is not well-formed");
  bench::reportRatio(
      state, std::max<std::size_t>((4U << 20) / text.size(), 1),
      [&] { benchmark::DoNotOptimize(parse(text)); },
      [&] { benchmark::DoNotOptimize(std::memchr(text.data(), '\1', text.size())); });
}

// The NUL that ends a packet is no XML.
bool expat(const std::string& text) {
  XML_Parser parser = XML_ParserCreate(nullptr);
  const auto result = XML_Parse(parser, text.data(), static_cast<int>(text.size() - 1), 1);
  XML_ParserFree(parser);
  return result == XML_STATUS_OK;
}

bool pugixml(const std::string& text) {
  pugi::xml_document document;
  return static_cast<bool>(document.load_buffer(text.data(), text.size() - 1));
}

BENCHMARK_CAPTURE(compare, expat, expat)
    ->Arg(4 << 10)
    ->Arg(64 << 10)
    ->Arg(4 << 20)
    ->UseManualTime();
BENCHMARK_CAPTURE(compare, pugixml, pugixml)
    ->Arg(4 << 10)
    ->Arg(64 << 10)
    ->Arg(4 << 20)
    ->UseManualTime();

}  // namespace
