#include "walking/file_names.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/errors.h"
#include "base/safe_mode.h"

namespace zeb {
namespace {

bool fits(std::string_view name, std::string_view pattern) {
  std::size_t at_name = 0;
  std::size_t at_pattern = 0;
  // After the last star: what it stands for grows by a character where the rest doesn't fit.
  std::size_t after_star = std::string_view::npos;
  std::size_t star_end = 0;
  while (at_name < name.size()) {
    if (at_pattern < pattern.size() && pattern[at_pattern] == '*') {
      after_star = ++at_pattern;
      star_end = at_name;
    } else if (at_pattern < pattern.size() && pattern[at_pattern] == name[at_name]) {
      ++at_pattern;
      ++at_name;
    } else {
      if (after_star == std::string_view::npos) return false;
      at_pattern = after_star;
      at_name = ++star_end;
    }
  }
  return pattern.find_first_not_of('*', at_pattern) == std::string_view::npos;
}

}  // namespace

matching_files files_matching(const std::string& pattern) {
  std::string name_part = pattern;
  std::ranges::replace(name_part, '^', ' ');
  std::string folder;
  if (const std::size_t slash = name_part.rfind('/'); slash != std::string::npos) {
    folder = name_part.substr(0, slash + 1);
    name_part.erase(0, slash + 1);
  }
  const std::string read = folder.empty() ? "." : folder;
  const std::string refusal = refusal_of_reading(read);
  if (!refusal.empty()) error_end("Can't read", read + " (" + refusal + ")");
  std::error_code failure;
  matching_files found;
  std::filesystem::directory_iterator entry(read, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    const std::string name = entry->path().filename().string();
    if (!fits(name, name_part)) continue;
    if (name.find_first_of("#'\"$") != std::string::npos) {
      found.reserved_names = true;
    } else {
      found.names.push_back(folder + name);
    }
  }
  if (failure) error_end("Can't read", read + " (" + failure.message() + ")");
  std::ranges::sort(found.names);
  return found;
}

}  // namespace zeb
