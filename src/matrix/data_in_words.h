// The data set in memory as the section on methods tells it.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// Where the data are from, taxa, characters and how they are weighed; no lines without data.
std::vector<std::string> data_in_words();

}  // namespace zeb
