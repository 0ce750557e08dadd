#include "parallel/transport/library_errors.h"

#include <gtest/gtest.h>

#include <string>

namespace zeb {
namespace {

std::string filtered(const std::string& text) {
  library_error_filter filter;
  std::string passed;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t end = text.find('\n', i) + 1;
    passed += filter.passed(text.substr(i, end - i));
    i = end;
  }
  return passed;
}

TEST(library_errors, of_tasks_that_died_are_left_out_and_others_pass) {
  const std::string dashes = std::string(74, '-') + "\n";
  const std::string died = dashes + "A peer process has unexpectedly disconnected.\n" + dashes;
  const std::string no_host = dashes + "No route to host\n" + dashes;
  EXPECT_EQ(filtered("one\n" + died + no_host + died + "[a:1] PMIX ERROR: BAD-PARAM in b\ntwo\n"),
            "one\n" + no_host + "two\n");
}

}  // namespace
}  // namespace zeb
