// The fixed strings of data, trees and files: "$taxon N", "$dataset" and the like.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// The string that `word` stands for; reads its own arguments. False for other words.
bool fixed_string(std::string_view word, std::string* text);

}  // namespace zeb
