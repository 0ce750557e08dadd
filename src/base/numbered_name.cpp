#include "base/numbered_name.h"

namespace zeb {

std::string numbered_file_name(const std::string& name, int first, int second) {
  const std::size_t dot = name.rfind('.');
  const std::size_t slash = name.rfind('/');
  const bool has_extension =
      dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::size_t end = has_extension ? dot : name.size();
  std::string numbers;
  for (const int number : {first, second})
    if (number >= 0) numbers += "_" + std::to_string(number);
  return name.substr(0, end) + numbers + name.substr(end);
}

}  // namespace zeb
