// The help texts, one plain text file a command under help/, embedded at build time.
#pragma once

#include <span>
#include <string_view>

namespace zeb {

struct help_text {
  std::string_view
      name;  // file name without its ending: a command, or a topic that begins with "_"
  std::string_view text;
};

/// All texts, sorted by name.
std::span<const help_text> all_help_texts();

}  // namespace zeb
