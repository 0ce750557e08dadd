#include "shell/name_matching.h"

#include <strings.h>

namespace zeb {

matching_state matching;

double similarity(std::string_view a, std::string_view b, double) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0 ? 1 : 0;
}

bool ask_match(std::string_view word, std::string_view candidate, std::string_view) {
  return !word.empty() && similarity(word, candidate.substr(0, word.size())) == 1;
}

}  // namespace zeb
