// Every command that can be run can be asked about.
#include "command_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

#include "language/help_texts.h"

namespace zeb {
namespace {

TEST(command_help, every_built_command_has_a_text) {
  std::set<std::string_view> names;
  for (const help_text& help : all_help_texts()) names.insert(help.name);
  for (const command_row& row : all_commands()) {
    EXPECT_TRUE(!row.handler || names.count(row.name)) << "help/" << row.name << ".txt is missing";
  }
}

TEST(command_help, texts_belong_to_commands_and_fit_the_screen) {
  std::set<std::string_view> names;
  for (const command_row& row : all_commands()) names.insert(row.name);
  for (const help_text& help : all_help_texts()) {
    // A name that begins with "_" is a topic that belongs to no single command.
    EXPECT_TRUE(help.name.starts_with("_") || names.count(help.name)) << help.name;
    std::istringstream lines{std::string(help.text)};
    for (std::string line; std::getline(lines, line);)
      EXPECT_LE(line.size(), 79u) << help.name << ": " << line;
  }
}

}  // namespace
}  // namespace zeb
