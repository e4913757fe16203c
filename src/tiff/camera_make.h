// The camera maker's name from the model's: the flat metadata record carries no make.
#pragma once

#include <string_view>

namespace lumenforge {

// Empty when the model is of no known maker. At most 17 characters.
std::string_view makeOfModel(std::string_view model);

}  // namespace lumenforge
