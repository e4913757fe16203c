// Keywords for an IPTC block (IPTC-IIM 4), in a character set that other readers know.
#pragma once

#include <string>
#include <vector>

#include "base/whole_file.h"

namespace lfmeta {

// Adds the keywords to the block, which may be empty. Where one is not ASCII, the block announces
// UTF-8 (dataset 1:90). Throws Failure when the block is damaged or its texts are in another
// character set; `photo` is named then.
void addKeywords(const std::vector<std::string>& keywords, const std::string& photo, Bytes& iptc);

}  // namespace lfmeta
