// What is told as JSON, value by value.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace lfmeta {

// Fields keep the order in which they are added.
using Json = nlohmann::ordered_json;

// One line of text, without a line feed. Bytes that are not UTF-8 become U+FFFD, a number that is
// not finite becomes null; control and invisible characters are escaped.
std::string jsonLine(const Json& value);

// The float as JSON shows it best: the shortest decimal that reads back as the same float.
Json jsonNumber(float value);

// Null for an empty text.
Json textOrNull(const std::string& text);

// What every object about a file begins with: its name, and the name's bytes where it is not UTF-8.
Json jsonOfFile(const std::string& path);

}  // namespace lfmeta
