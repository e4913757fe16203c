// CLI11's classes by name, for headers that only hand them on: reading CLI11 takes a compiler
// seconds.
#pragma once

namespace CLI {

class App;
class Option;

}  // namespace CLI
