// The structure of an XMP packet (XMP specification, serialization), with the place of each piece
// of its text, so that pieces can be put in and taken out while every other byte stays.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace lfmeta {

struct PacketProperty {
  std::string name;        // the namespace, a blank, the local name
  bool attribute = false;  // of the description's opening tag; else an element of its own
  std::size_t start = 0;   // of that element; 0 for an attribute
  std::size_t end = 0;
};

// One rdf:Description at the top.
struct PacketDescription {
  std::size_t start = 0;
  std::size_t openingEnd = 0;  // behind the opening tag
  std::size_t end = 0;
  std::string about;
  std::vector<std::string> declared;  // namespaces that its opening tag declares
  std::vector<PacketProperty> properties;
};

struct PacketOutline {
  std::size_t contentStart = 0;  // behind the opening tag of rdf:RDF
  std::size_t contentEnd = 0;    // before its closing tag
  std::vector<PacketDescription> descriptions;

  bool has(const std::string& property) const;
};

// Nothing when the text is no well-formed XML in UTF-8 up to the end of its rdf:RDF element, has no
// such element or declares a document type.
std::optional<PacketOutline> outlineOf(std::span<const unsigned char> packet);

inline constexpr const char* kRdfNamespace = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";

}  // namespace lfmeta
