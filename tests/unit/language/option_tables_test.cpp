// All tables of options, as the commands hold them: what each says, the help tells and a script
// tries.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "command_table.h"
#include "language/help_texts.h"
#include "language/lexer.h"
#include "language/options.h"

namespace zeb {
namespace {

std::vector<const option_table*> tables_of(const command_row& row) {
  std::vector<const option_table*> tables;
  for (const option_table* table = row.options; table; table = table->next) tables.push_back(table);
  return tables;
}

std::string with_single_blanks(std::string_view text) {
  std::istringstream words{std::string(text)};
  std::string joined;
  for (std::string word; words >> word;) joined += word + " ";
  return joined;
}

std::string help_of(std::string_view command) {
  for (const help_text& help : all_help_texts()) {
    if (help.name == command) return with_single_blanks(help.text);
  }
  return {};
}

TEST(option_tables, full_keywords_find_their_own_rows) {
  for (const command_row& row : all_commands()) {
    for (const option_table* table : tables_of(row)) {
      for (const option_row& option : table->rows) {
        bool negated = true;
        EXPECT_EQ(find_option(option.keyword, table->rows, &negated), &option)
            << row.name << " " << option.keyword;
        EXPECT_FALSE(negated);
        if (!option.negatable) continue;
        const std::string negative = "no" + std::string(option.keyword);
        EXPECT_EQ(find_option(negative, table->rows, &negated), &option)
            << row.name << " " << negative;
        EXPECT_TRUE(negated);
      }
    }
  }
}

TEST(option_tables, the_help_tells_every_option_and_its_default) {
  for (const command_row& row : all_commands()) {
    const std::string help = help_of(row.name);
    for (const option_table* table : tables_of(row)) {
      EXPECT_EQ(table->command, row.name);
      for (const option_row& option : table->rows) {
        EXPECT_FALSE(option.help_text.empty()) << row.name << " " << option.keyword;
        const std::string told = with_single_blanks(option_help(*table, option));
        EXPECT_NE(help.find(" " + told), help.npos)
            << "help/" << row.name << ".txt must hold: " << told;
      }
    }
  }
}

// ---- options that scripts set ----

bool is_word_letter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  for (const char c : std::string(text) + ' ') {
    if (is_word_letter(c)) {
      word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else if (!word.empty()) {
      words.push_back(std::exchange(word, {}));
    }
  }
  return words;
}

/// Options of blocks stand in brackets, between names and cells that would pass for options.
std::string bracketed_parts(const std::string& text) {
  std::string parts;
  for (std::size_t at = text.find("&["); at != text.npos; at = text.find("&[", at + 1)) {
    parts += text.substr(at, text.find(']', at) - at) + " ";
  }
  return parts;
}

const command_row* row_of(std::string_view word) {
  for (const command_row& row : all_commands()) {
    if (is_prefix(word, row.name)) return &row;
  }
  return nullptr;
}

std::set<const option_row*> options_set_by(const std::string& script) {
  std::set<const option_row*> used;
  std::istringstream commands{script};
  for (std::string text; std::getline(commands, text, ';');) {
    const std::vector<std::string> words = words_of(text);
    const command_row* row = words.empty() ? nullptr : row_of(words[0]);
    if (!row || !row->options) continue;
    const std::vector<std::string> options =
        std::string_view(row->name) == "xread"
            ? words_of(bracketed_parts(text))
            : std::vector<std::string>(words.begin() + 1, words.end());
    for (const option_table* table : tables_of(*row)) {
      for (const option_row& option : table->rows) {
        if (option.keyword.size() == 1 && text.find(option.keyword) != text.npos) {
          used.insert(&option);
        }
      }
      for (const std::string& word : options) {
        bool negated = false;
        if (const option_row* option = find_option(word, table->rows, &negated)) {
          used.insert(option);
        }
      }
    }
  }
  return used;
}

TEST(option_tables, some_script_sets_every_option) {
  std::set<const option_row*> used;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(ZEB_TEST_SCRIPTS)) {
    if (entry.path().extension() != ".run" && entry.path().extension() != ".stdin") continue;
    std::ifstream file(entry.path());
    used.merge(options_set_by({std::istreambuf_iterator<char>(file), {}}));
  }
  for (const command_row& row : all_commands()) {
    for (const option_table* table : tables_of(row)) {
      for (const option_row& option : table->rows) {
        EXPECT_TRUE(used.count(&option))
            << "no script in tests/scripts sets " << row.name << " " << option.keyword;
      }
    }
  }
}

}  // namespace
}  // namespace zeb
