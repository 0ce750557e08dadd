#include "bash_completion.h"

#include <cctype>
#include <string_view>

#include "command_table.h"
#include "language/options.h"

namespace zeb {
namespace {

// The arguments of the program are one line of commands, each ended by a comma, so that nothing
// before the last comma matters. Bash itself cuts words at "=" and ":".
constexpr std::string_view functions = R"bash(
# The options of the command that a word, whole or cut, names.
_zeb_options() {
  local name
  for name in $_zeb_commands; do
    if [[ $name == "$1"* ]]; then
      printf '%s' "${_zeb_option_words[$name]}"
      return
    fi
  done
}

_zeb() {
  local line=${COMP_LINE:0:COMP_POINT} words found
  line=${line#*[[:blank:]]}
  [[ $line == *[[:blank:],]* ]] || words="bground --batch --completion --help --safe --version "
  line=${line##*,}
  line=${line#"${line%%[![:blank:]]*}"}
  line=${line#bground[[:blank:]]}
  local command=${line%%[!a-z0-9_]*}
  if [[ $line == "$command" ]]; then
    words+=$_zeb_commands
  else
    words+=$(_zeb_options "$command")
  fi
  local word=${COMP_WORDS[COMP_CWORD]}
  [[ $word == [=:] ]] && word=
  local before=${word%"${word##*,}"}
  word=${word##*,}
  COMPREPLY=()
  while IFS= read -r found; do
    COMPREPLY+=("$before$found")
  done < <(compgen -W "$words" -- "$word"; compgen -f -- "$word")
}
complete -o filenames -F _zeb zeb
)bash";

// The keywords that are words: signs needn't be completed.
std::string option_words(const option_table* table) {
  std::string words;
  for (; table; table = table->next) {
    for (const option_row& row : table->rows) {
      if (std::isalpha(static_cast<unsigned char>(row.keyword[0])) == 0) continue;
      words.append(" ").append(row.keyword);
      if (row.negatable) words.append(" no").append(row.keyword);
    }
  }
  return words.empty() ? words : words.substr(1);
}

}  // namespace

std::string bash_completion() {
  std::string commands;
  std::string options;
  for (const command_row& row : all_commands()) {
    if (!row.handler) continue;
    commands.append(" ").append(row.name);
    const std::string words = option_words(row.options);
    if (!words.empty()) options.append("  [").append(row.name).append("]='" + words + "'\n");
  }
  return "# Completion of the arguments of zeb for bash; \"zeb --completion\" writes this.\n"
         "_zeb_commands='" +
         commands.substr(1) + "'\ndeclare -gA _zeb_option_words=(\n" + options + ")\n" +
         std::string(functions);
}

}  // namespace zeb
