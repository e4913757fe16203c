#include "photos/settings_vocabulary.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <string_view>

#include "base/failure.h"

namespace lfmeta {

namespace {

constexpr int kMostWords = 5;  // words of one element are numbered from 0
constexpr std::string_view kPrefix = "<lfst:";

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

// Every element of a block as the library writes it, the version and the method among them.
std::vector<Setting> elementsOf(std::string_view block) {
  std::vector<Setting> elements;
  for (std::size_t at = block.find(kPrefix); at != std::string_view::npos;
       at = block.find(kPrefix, at + 1)) {
    const std::size_t name = at + kPrefix.size();
    const std::size_t text = block.find('>', name) + 1;
    const std::size_t end = block.find("</lfst:", text);
    elements.push_back({std::string(block.substr(name, text - 1 - name)),
                        trimmed(block.substr(text, end - text))});
  }
  return elements;
}

bool isSetting(const Setting& element) {
  return element.element != "Version" && element.element != "Method";
}

const Setting* findElement(const std::vector<Setting>& elements, std::string_view name) {
  const auto found = std::find_if(elements.begin(), elements.end(), [&](const Setting& s) {
    return s.element.size() == name.size() &&
           strncasecmp(s.element.data(), name.data(), name.size()) == 0;
  });
  return found == elements.end() ? nullptr : &*found;
}

void replaceText(std::string& block, const std::string& element, const std::string& text) {
  const std::string opening = "<lfst:" + element + ">";
  const std::size_t start = block.find(opening) + opening.size();
  block.replace(start, block.find("</lfst:", start) - start, text);
}

// 5 may come back as 5.0, and 2.718 as 2.7; a word must come back as it was given.
bool sameMeaning(const std::string& given, const std::string& written) {
  const std::vector<double> back = numbersIn(written);
  if (back.empty()) return given == written;
  return numbersIn(given).size() == back.size() &&
         std::all_of(back.begin(), back.end(), [](double number) { return std::isfinite(number); });
}

[[noreturn]] void refuseAssignment(const Method& method, const std::string& assignment,
                                   const std::vector<Setting>& elements) {
  std::string list;
  for (const Setting& element : elements) {
    if (isSetting(element)) list += (list.empty() ? "" : ", ") + element.element;
  }
  throw UsageFailure("--set " + assignment,
                     "is no Element=value; the elements of \"" + method.name + "\" are " + list);
}

}  // namespace

std::string settingsBlock(int method, const float* params, int setNumber) {
  const int size = embed_xmp(0, method + LUMENFORGE_WITHOUT_WRAPPER, params, 0, nullptr, nullptr);
  std::string block(static_cast<std::size_t>(size), '\0');
  embed_xmp(setNumber, method + LUMENFORGE_WITHOUT_WRAPPER, params, 0, nullptr, block.data());
  return block;
}

std::vector<Method> namedMethods() {
  std::vector<Method> methods;
  const SettingsParams params{};
  for (int number = 1; number <= LUMENFORGE_FUSION_INTERIOR; ++number) {
    const std::vector<Setting> elements = elementsOf(settingsBlock(number, params));
    if (const Setting* method = findElement(elements, "Method")) {
      methods.push_back({number, method->text});
    }
  }
  return methods;
}

Method findMethod(const std::string& nameOrNumber) {
  std::string list;
  for (const Method& method : namedMethods()) {
    const std::string number = std::to_string(method.number);
    if (nameOrNumber == number || strcasecmp(nameOrNumber.c_str(), method.name.c_str()) == 0) {
      return method;
    }
    list += (list.empty() ? "" : ", ") + number + " \"" + method.name + "\"";
  }
  throw UsageFailure("--method " + nameOrNumber, "is no method; the methods are " + list);
}

std::vector<Setting> settingsOf(int method, const float* params) {
  std::vector<Setting> settings = elementsOf(settingsBlock(method, params));
  std::erase_if(settings, [](const Setting& element) { return !isSetting(element); });
  return settings;
}

std::vector<double> numbersIn(const std::string& text) {
  std::vector<double> numbers;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(',', start), text.size());
    std::string one = trimmed(std::string_view(text).substr(start, end - start));
    if (one.size() > 1 && one.front() == '+' && one[1] != '-') one.erase(0, 1);
    float number = 0;
    const auto [rest, error] = std::from_chars(one.data(), one.data() + one.size(), number);
    if (error != std::errc() || rest != one.data() + one.size()) return {};
    double value = 0;
    std::from_chars(one.data(), rest, value);
    numbers.push_back(value);
    start = end + 1;
  }
  return numbers;
}

// Words are found by trying what the library writes for small numbers.
std::string expectedText(int method, const float* params, const std::string& element) {
  const std::vector<Setting> settings = settingsOf(method, params);
  const std::size_t numbers = numbersIn(findElement(settings, element)->text).size();
  if (numbers > 0) {
    return numbers == 1 ? "a number" : std::to_string(numbers) + " numbers with commas between";
  }
  std::vector<std::string> words;
  for (int slot = 0; slot < kSettingsParamsSlots; ++slot) {
    for (int value = 0; value < kMostWords; ++value) {
      SettingsParams probe;
      std::copy_n(params, kSettingsParamsSlots, probe);
      probe[slot] = static_cast<float>(value);
      const std::vector<Setting> probed = settingsOf(method, probe);
      const Setting* word = findElement(probed, element);  // the probe may have written it away
      if (word != nullptr && numbersIn(word->text).empty() &&
          std::find(words.begin(), words.end(), word->text) == words.end()) {
        words.push_back(word->text);
      }
    }
  }
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  return "one of: " + list;
}

void assignSettings(const Method& method, const std::vector<std::string>& assignments,
                    float* params) {
  std::string block = settingsBlock(method.number, params);
  const std::vector<Setting> elements = elementsOf(block);

  std::map<std::string, std::string> texts;
  for (const std::string& assignment : assignments) {
    const std::size_t equals = assignment.find('=');
    const Setting* element = findElement(elements, assignment.substr(0, equals));
    if (equals == std::string::npos || element == nullptr || !isSetting(*element)) {
      refuseAssignment(method, assignment, elements);
    }
    texts[element->element] = trimmed(std::string_view(assignment).substr(equals + 1));
    replaceText(block, element->element, texts[element->element]);
  }

  get_settings_from_xmp(method.number, static_cast<int>(block.size()) + 1,
                        reinterpret_cast<const unsigned char*>(block.c_str()), nullptr, params);
  const std::vector<Setting> read = settingsOf(method.number, params);
  for (const auto& [element, text] : texts) {
    if (!sameMeaning(text, findElement(read, element)->text)) {
      throw UsageFailure(
          std::string("--set ").append(element).append("=").append(text),
          "has no such value; expected " + expectedText(method.number, params, element));
    }
  }
}

}  // namespace lfmeta
