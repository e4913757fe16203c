// Methods and elements by name. The tool keeps no list of them: what the library writes for a
// record tells the names and texts that exist, and what it reads back tells whether a text has a
// meaning.
#pragma once

#include <LumenforgeMetaLib.h>

#include <string>
#include <vector>

namespace lfmeta {

struct Method {
  int number;
  std::string name;
};

// An element of a settings block, with its text (without the blanks that pad it).
struct Setting {
  std::string element;
  std::string text;
};

// The methods that a packet can name.
std::vector<Method> namedMethods();
// By name (in any case of letters) or by number; throws UsageFailure with a list of those that
// exist.
Method findMethod(const std::string& nameOrNumber);

// The rdf:Description element of the settings, as the library writes it for this set's number.
std::string settingsBlock(int method, const float* params, int setNumber = 1);

std::vector<Setting> settingsOf(int method, const float* params);
// The numbers that the text consists of, one or several with commas between; none for other texts.
// They may be infinite or not a number.
std::vector<double> numbersIn(const std::string& text);

// Assignments "Element=text" (the element in any case of letters) on top of the record, later ones
// first. Throws UsageFailure for an element that the method does not have and for a text without a
// meaning.
void assignSettings(const Method& method, const std::vector<std::string>& assignments,
                    float* params);

// What may stand in the element of the method, for a person, as things stand in the record: "a
// number", "one of: Light, Slider".
std::string expectedText(int method, const float* params, const std::string& element);

}  // namespace lfmeta
