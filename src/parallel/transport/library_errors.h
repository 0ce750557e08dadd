// What a library writes to the standard error by itself.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Takes out what Open MPI complains of where tasks end, die or are killed, which is told in the
/// words of jobs or is nothing to worry about. Everything else passes.
class library_error_filter {
 public:
  /// A line with its end; what is to be written now, which may be several lines or nothing.
  std::string passed(std::string_view line);

 private:
  std::string block_;  // between two lines of dashes, with the first
};

/// From now on, what this process and its children write there goes through the filter.
void filter_library_errors();

}  // namespace zeb
