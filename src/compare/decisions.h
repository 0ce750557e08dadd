// What is decided where two data sets disagree: by the actions that the user chose, by the
// decisions stored in a file, or by asking.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/output_file.h"

namespace zeb {

/// Kinds of queries, by the letters that the user knows them by.
enum class query : char {
  taxa = 't',
  characters = 'c',
  states = 's',
  cells = 'd',
  missing = 'm',
  settings = 'o',
  sequence = 'a',
  continuous = 'q',
  landmarks = 'l',
};
constexpr std::string_view query_letters = "tcsdmoaql";
/// The actions of a kind, but "?".
std::string_view actions_of(query kind);

struct decision_request {
  std::map<query, char> actions;  // "?": ask. Those that aren't there have the default
  std::string write_to;           // file for decisions; empty: none
  std::string read_from;          // the same for those made before
};
char action_of(const decision_request& request, query kind);

/// Answers queries one after the other. What the user answers, or the file did, goes to the file of
/// decisions, which is complete when this object goes, on whatever path: it then ends where the
/// user stopped.
class decision_maker {
 public:
  /// Errors: a file can't be read or written.
  explicit decision_maker(const decision_request& request);
  ~decision_maker();
  decision_maker(const decision_maker&) = delete;
  decision_maker& operator=(const decision_maker&) = delete;

  /// The action for one query. `subject` tells queries of a kind apart (numbers, as "3 5"); the
  /// question is shown where the user is asked, who may give one of `answers`, by default one of
  /// the actions. Errors: the user stops; the stored decisions are of other data.
  char decide(query kind, std::string_view subject, const std::string& question,
              std::string_view answers = {});
  char action(query kind) const { return action_of(request_, kind); }

 private:
  char stored_answer(query kind, std::string_view subject, std::string_view answers);
  char answer_of_user(query kind, const std::string& question, std::string_view answers);

  decision_request request_;
  std::vector<std::string> stored_;
  std::size_t next_ = 0;
  output_file file_;
  bool told_end_ = false;
  bool told_background_ = false;
};

}  // namespace zeb
