// The answers of the boundary to a selector.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace lumenforge {

// The text before the NUL that must end `length` bytes; none where it does not.
std::optional<std::string_view> terminatedText(const unsigned char* bytes, std::size_t length);

// What get_settings_from_xmp returns for a selector other than the lens's. `text` begins at
// `offset` of what the caller has asked about, from which places count.
int querySettings(int selector, std::string_view text, std::size_t offset, float* params);

}  // namespace lumenforge
