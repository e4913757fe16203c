// Fixed texts of the XMP specification and of RDF.
#pragma once

#include <string_view>

namespace lumenforge {

inline constexpr std::string_view kRdfNamespace = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
inline constexpr std::string_view kXmpNamespace = "adobe:ns:meta/";

// The auxiliary schema for camera-specific Exif properties, which holds the lens.
inline constexpr std::string_view kAuxNamespace = "http://ns.adobe.com/exif/1.0/aux/";

}  // namespace lumenforge
