#include "photos/packet_outline.h"

#include <expat.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>

namespace lfmeta {

namespace {

constexpr char kSeparator = ' ';

std::string rdf(const char* name) {
  return std::string(kRdfNamespace) + kSeparator + name;
}

class OutlineReader {
 public:
  OutlineReader() : parser_(XML_ParserCreateNS("UTF-8", kSeparator), &XML_ParserFree) {
    if (!parser_) return;
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), &onStart, &onEnd);
    XML_SetStartNamespaceDeclHandler(parser_.get(), &onDeclaration);
    XML_SetStartDoctypeDeclHandler(parser_.get(), &onDoctype);
  }

  std::optional<PacketOutline> read(std::span<const unsigned char> packet) {
    if (!parser_ || packet.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
      return std::nullopt;
    }
    // What stands behind rdf:RDF does not matter, so neither does the result.
    XML_Parse(parser_.get(), reinterpret_cast<const char*>(packet.data()),
              static_cast<int>(packet.size()), XML_TRUE);
    if (!complete_) return std::nullopt;
    return std::move(outline_);
  }

 private:
  static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
    static_cast<OutlineReader*>(self)->start(name, attributes);
  }
  static void onEnd(void* self, const XML_Char*) { static_cast<OutlineReader*>(self)->end(); }
  static void onDeclaration(void* self, const XML_Char*, const XML_Char* uri) {
    static_cast<OutlineReader*>(self)->declared_.emplace_back(uri == nullptr ? "" : uri);
  }
  static void onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    XML_StopParser(static_cast<OutlineReader*>(self)->parser_.get(), XML_FALSE);
  }

  std::size_t tagStart() const {
    return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_.get()));
  }
  std::size_t tagEnd() const {
    return tagStart() + static_cast<std::size_t>(XML_GetCurrentByteCount(parser_.get()));
  }

  void start(std::string_view name, const XML_Char** attributes) {
    ++depth_;
    if (rdfDepth_ == 0 && !complete_ && name == rdf("RDF")) {
      rdfDepth_ = depth_;
      outline_.contentStart = tagEnd();
    } else if (rdfDepth_ != 0 && depth_ == rdfDepth_ + 1 && name == rdf("Description")) {
      inDescription_ = true;
      startDescription(attributes);
    } else if (inDescription_ && depth_ == rdfDepth_ + 2) {
      outline_.descriptions.back().properties.push_back(
          {std::string(name), false, tagStart(), tagEnd()});
    }
    declared_.clear();
  }

  void startDescription(const XML_Char** attributes) {
    PacketDescription description;
    description.start = tagStart();
    description.openingEnd = tagEnd();
    description.declared = std::move(declared_);
    for (; *attributes != nullptr; attributes += 2) {
      if (attributes[0] == rdf("about")) {
        description.about = attributes[1];
      } else {
        description.properties.push_back({attributes[0], true});
      }
    }
    outline_.descriptions.push_back(std::move(description));
  }

  void end() {
    if (depth_ == rdfDepth_ && !complete_) {
      complete_ = tagEnd() != tagStart();  // else an empty element: there is no place inside
      outline_.contentEnd = tagStart();
      rdfDepth_ = 0;
    } else if (inDescription_ && depth_ == rdfDepth_ + 2) {
      outline_.descriptions.back().properties.back().end = tagEnd();
    } else if (inDescription_ && depth_ == rdfDepth_ + 1) {
      outline_.descriptions.back().end = tagEnd();
      inDescription_ = false;
    }
    --depth_;
  }

  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::vector<std::string> declared_;  // by the tag that comes next
  PacketOutline outline_;
  std::size_t depth_ = 0;
  std::size_t rdfDepth_ = 0;  // of rdf:RDF while it is open
  bool inDescription_ = false;
  bool complete_ = false;
};

}  // namespace

bool PacketOutline::has(const std::string& property) const {
  return std::any_of(descriptions.begin(), descriptions.end(), [&](const auto& description) {
    return std::any_of(description.properties.begin(), description.properties.end(),
                       [&](const PacketProperty& own) { return own.name == property; });
  });
}

std::optional<PacketOutline> outlineOf(std::span<const unsigned char> packet) {
  return OutlineReader().read(packet);
}

}  // namespace lfmeta
