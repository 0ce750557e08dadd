#include "compare/decisions.h"

#include <sstream>

#include "base/errors.h"
#include "base/input_file.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/console.h"
#include "console/keys.h"
#include "console/output.h"
#include "console/progress.h"

namespace zeb {
namespace {

char default_action(query kind) { return kind == query::missing ? 'i' : 'y'; }

std::vector<std::string> lines_of(const std::string& name) {
  input_file file;
  if (!file.open(name)) error_end(text_of("Can't open file %s", name.c_str()) + file.cause());
  std::istringstream text(file.rest());
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

}  // namespace

std::string_view actions_of(query kind) {
  switch (kind) {
    case query::cells:
    case query::continuous:
      return "ynb";
    case query::missing:
      return "yni";
    default:
      return "yn";
  }
}

char action_of(const decision_request& request, query kind) {
  const auto found = request.actions.find(kind);
  return found == request.actions.end() ? default_action(kind) : found->second;
}

decision_maker::decision_maker(const decision_request& request) : request_(request) {
  if (!request_.read_from.empty()) stored_ = lines_of(request_.read_from);
  if (request_.write_to.empty() || file_.create(request_.write_to)) return;
  error_end(text_of("Can't open file \"%s\" for writing...", request_.write_to.c_str()) +
            file_.cause());
}

decision_maker::~decision_maker() {
  if (file_.is_open() && !file_.close()) note_loss("the decisions in " + request_.write_to);
}

char decision_maker::decide(query kind, std::string_view subject, const std::string& question,
                            std::string_view answers) {
  const char action = action_of(request_, kind);
  if (action != '?') return action;
  if (answers.empty()) answers = actions_of(kind);
  char answer = stored_answer(kind, subject, answers);
  if (!answer) answer = answer_of_user(kind, question, answers);
  if (file_.is_open())
    file_.put(std::string{static_cast<char>(kind), ' '}.append(subject) + ' ' + answer + '\n');
  return answer;
}

// 0 where nothing is stored any more.
char decision_maker::stored_answer(query kind, std::string_view subject, std::string_view answers) {
  if (next_ == stored_.size()) {
    if (!request_.read_from.empty() && !told_end_ && user_present())
      emit("\n(end of infile, switching to screen now)\n");
    told_end_ = true;
    return 0;
  }
  const std::string& line = stored_[next_++];
  const std::string head = std::string{static_cast<char>(kind), ' '}.append(subject) + ' ';
  if (line.size() != head.size() + 1 || !line.starts_with(head) ||
      answers.find(line.back()) == std::string_view::npos) {
    error_end(
        text_of("Line %i of %s (\"%s\") isn't the decision on \"%s\" that comes next: "
                "options and files must be those for which decisions were stored",
                static_cast<int>(next_), request_.read_from.c_str(), line.c_str(),
                head.substr(0, head.size() - 1).c_str()));
  }
  return line.back();
}

char decision_maker::answer_of_user(query kind, const std::string& question,
                                    std::string_view answers) {
  if (!user_present()) {
    if (!told_background_)
      warning("Nobody can be asked here: queries are answered by the default actions");
    told_background_ = true;
    return default_action(kind);
  }
  clear_progress();
  const int key = ask_key(question, std::string(answers) + static_cast<char>(escape_key));
  if (key == escape_key) error_end("User interrupt");
  write_console(std::string{static_cast<char>(key), '\n'});
  return static_cast<char>(key);
}

}  // namespace zeb
