#include "base/safe_mode.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace zeb {

safe_mode_state safe_mode;

namespace {

constexpr const char* outside =
    "safe mode: it isn't below the folder where the program was started";

// Empty where there is no such file.
std::string whole_path(const std::string& name) {
  std::error_code fault;
  const std::filesystem::path path = std::filesystem::canonical(name, fault);
  return fault ? std::string() : path.string();
}

// Of a file that need not be there yet; empty where its folder isn't there either.
std::string path_to_come(const std::string& name) {
  const std::filesystem::path given(name);
  const std::string folder =
      whole_path(given.has_parent_path() ? given.parent_path().string() : ".");
  return folder.empty() ? folder : (std::filesystem::path(folder) / given.filename()).string();
}

bool is_inside(const std::string& path) {
  if (safe_mode.folder == "/" || path == safe_mode.folder) return true;
  return path.starts_with(safe_mode.folder + "/");
}

void allow_file(const std::string& name) {
  const std::string path = whole_path(name);
  if (!path.empty()) safe_mode.named.insert(path);
}

// A word may be a file, or hold it between the signs of commands.
void allow_files_in(std::string_view word) {
  constexpr std::string_view ends = " \t\n,;'\"";
  constexpr std::string_view signs = "&![=*+-";
  allow_file(std::string(word));
  while (!word.empty()) {
    const std::size_t end = std::min(word.find_first_of(ends), word.size());
    std::string_view name = word.substr(0, end);
    for (allow_file(std::string(name)); !name.empty() && signs.find(name[0]) != signs.npos;) {
      name.remove_prefix(1);
      allow_file(std::string(name));
    }
    word.remove_prefix(std::min(end + 1, word.size()));
  }
}

}  // namespace

void start_safe_mode(std::span<const std::string> words) {
  safe_mode.on = true;
  safe_mode.folder = whole_path(".");
  for (const std::string& word : words) allow_files_in(word);
}

std::string refusal_of_reading(const std::string& name) {
  if (!safe_mode.on || name == "-") return {};
  const std::string path = whole_path(name);
  if (path.empty() || is_inside(path) || safe_mode.named.contains(path)) return {};
  return outside;
}

std::string refusal_of_writing(const std::string& name) {
  if (!safe_mode.on) return {};
  const std::string path = path_to_come(name);
  if (path.empty() || safe_mode.written.contains(path)) return {};
  if (!is_inside(path)) return outside;
  struct stat status;
  if (lstat(path.c_str(), &status) == 0) return "safe mode: there is such a file";
  return {};
}

void note_written_file(const std::string& name) {
  if (safe_mode.on) safe_mode.written.insert(path_to_come(name));
}

}  // namespace zeb
