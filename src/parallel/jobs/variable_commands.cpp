// `slaveget` and `slaveset`: variables of tasks, read and set by their parent.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "parallel/commands.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/queries.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

void require_protection(const char* name) {
  require_macros();
  if (token() != name) error_end("Command", name, "can't be truncated");
  if (macros.protection != 2) error_end_f("P-ZEB: %s requires protection mode 2", name);
}

struct chosen_task {
  int slot = 0;
  int task = -1;  // -1: all
};

/// "[ J T ]".
chosen_task read_chosen_task() {
  if (!accept_char('[')) error_end("Expected '[' before the job");
  chosen_task chosen;
  chosen.slot = read_job();
  constexpr const char* unclosed = "Expected ']' after job and task";
  if (skip_blanks_peek() == ';') error_end(unclosed);
  if (!accept_char(']')) {
    const int number = static_cast<int>(macro_whole_value());
    const job_record& job = job_at(chosen.slot);
    if (number < 0 || at(number) >= job.tasks.size())
      error_end_f("P-ZEB: no task %i in job %s", number, job.name.c_str());
    chosen.task = number;
    if (!accept_char(']')) error_end(unclosed);
  }
  return chosen;
}

std::vector<int> tasks_of(const chosen_task& chosen) {
  if (chosen.task >= 0) return {chosen.task};
  std::vector<int> all(job_at(chosen.slot).tasks.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(i);
  return all;
}

// ---- slaveget ----

/// How values that come are joined with what there is.
struct joining {
  char sign = 0;           // 0: each replaces what was there
  bool keeps_old = false;  // what was there counts, too
};

bool is_operator(int c) {
  return c > 0 && c < 128 &&
         std::string_view("+-*/&|<>^:").find(static_cast<char>(c)) != std::string_view::npos;
}

joining read_joining() {
  joining how;
  const int next = skip_blanks_peek();
  if (!is_operator(next)) return how;
  how.sign = static_cast<char>(next_nonblank());
  how.keeps_old = accept_char('=');
  return how;
}

double joined(char sign, double a, double b) {
  switch (sign) {
    case '+':
    case ':':
      return a + b;
    case '-':
      return a - b;
    case '*':
      return a * b;
    case '/':
      if (b == 0) error_end("Division by zero");
      return a / b;
    case '&':
      return value_bits(a) & value_bits(b);
    case '|':
      return value_bits(a) | value_bits(b);
    case '^':
      return std::pow(a, b);
    case '<':
      return std::min(a, b);
    case '>':
      return std::max(a, b);
    default:
      return b;
  }
}

/// A variable of the tasks: its name, and subscripts; those in double quotes are for the task.
struct remote_variable {
  std::string name;
  std::vector<std::int32_t> subscripts;      // -1: one for the task
  std::vector<std::string> texts_for_tasks;  // those, in order
};

std::string read_text_for_task() {
  std::string text;
  for (int c = read_char(); c != '"'; c = read_char()) {
    if (c == ';' || input_ended()) error_end("Expected a second '\"' after the subscript");
    text += static_cast<char>(c);
  }
  return text;
}

void read_remote_subscripts(remote_variable& variable) {
  const reading_flag expanded(&macro_reading::no_expansion, false);
  const reading_flag quotes(&macro_reading::single_quotes_only);
  while (!accept_char(']')) {
    if (accept_char(',')) continue;
    if (accept_char('"')) {
      variable.subscripts.push_back(-1);
      variable.texts_for_tasks.push_back(read_text_for_task());
      continue;
    }
    const double subscript = macro_whole_value();
    if (subscript < 0 || subscript > 2e9) error_end("No negative or missing subscripts here");
    variable.subscripts.push_back(static_cast<std::int32_t>(subscript));
  }
}

remote_variable read_remote_variable() {
  remote_variable variable;
  skip_blanks_peek();
  const reading_flag plain(&macro_reading::no_expansion);
  for (int c = read_char(); std::isalnum(c) || c == '_'; c = read_char())
    variable.name += static_cast<char>(c);
  unread_char();
  if (variable.name.empty()) error_end("Must give the variable of the tasks");
  if (accept_char('[')) read_remote_subscripts(variable);
  return variable;
}

std::vector<double> values_of_task(task_record& from, int number, const remote_variable& variable,
                                   int dimensions) {
  packet_writer message;
  message.put(signal_get);
  message.put_text(variable.name);
  message.put_list(variable.subscripts);
  for (const std::string& text : variable.texts_for_tasks) message.put_text(text);
  message.put(dimensions);
  ask_task(from, message, tag_variable);
  const std::optional<arrived_message> reply = answer_of(from, tag_variable);
  if (!reply)
    error_end("P-ZEB: task", number, from.gone ? "is not there any more" : "does not answer");
  std::vector<double> values;
  try {
    packet_reader reader(reply->body);
    for (std::int32_t left = reader.whole(); left > 0; --left) values.push_back(reader.real());
  } catch (const damaged_message&) {
    values.clear();
  }
  if (values.empty()) error_end_f("P-ZEB: slaveget: syntax error in task %i", number);
  return values;
}

/// Cells of this process that values go to: `dimensions` of them below the reference.
struct value_target {
  std::vector<int> cells;
  int dimensions = 0;
};

value_target target_of(const variable_reference& reference) {
  value_target target;
  target.dimensions = static_cast<int>(section_sizes(reference).size());
  const std::int64_t count = reference.is_section() ? data_cell_count(section_sizes(reference)) : 1;
  const int first = reference.is_section() ? section_start(reference) : reference.cell;
  for (std::int64_t i = 0; i < count; ++i) target.cells.push_back(first + static_cast<int>(i));
  return target;
}

/// One target for each task: row i of an array is for task i.
std::vector<value_target> rows_of(const variable_reference& reference, std::size_t tasks) {
  const value_target whole = target_of(reference);
  const std::size_t rows = whole.dimensions > 0 ? at(section_sizes(reference)[0]) : 0;
  if (rows < tasks) error_end("Array is too small for the values of", tasks, "tasks");
  const auto size = static_cast<std::ptrdiff_t>(whole.cells.size() / rows);
  std::vector<value_target> targets;
  for (auto row = whole.cells.begin(); targets.size() < tasks; row += size)
    targets.push_back({{row, row + size}, whole.dimensions - 1});
  return targets;
}

void store_joined(const std::vector<int>& cells, const joining& how, bool first,
                  const std::vector<double>& values) {
  if (values.size() != cells.size()) error_end("Dimensions of arrays to operate do not match!");
  const bool fresh = how.sign == 0 || (first && !how.keeps_old);
  for (std::size_t i = 0; i < cells.size(); ++i)
    store_variable(cells[i],
                   fresh ? values[i] : joined(how.sign, variable_value(cells[i]), values[i]));
}

void get_into(const variable_reference& reference, const joining& how, const chosen_task& chosen,
              const remote_variable& variable) {
  job_record& job = job_at(chosen.slot);
  const std::vector<int> tasks = tasks_of(chosen);
  const bool by_task = chosen.task < 0 && how.sign == 0;
  const std::vector<value_target> targets =
      by_task ? rows_of(reference, tasks.size())
              : std::vector<value_target>(tasks.size(), target_of(reference));
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    const std::vector<double> values =
        values_of_task(job.tasks[at(tasks[i])], tasks[i], variable, targets[i].dimensions);
    store_joined(targets[i].cells, how, i == 0, values);
  }
  if (how.sign != ':') return;
  const double count = static_cast<double>(tasks.size()) + (how.keeps_old ? 1 : 0);
  for (const int cell : targets[0].cells) store_variable(cell, variable_value(cell) / count);
}

}  // namespace

void slaveget_command() {
  no_timing();
  require_protection("slaveget");
  const chosen_task chosen = read_chosen_task();
  const variable_reference target = read_variable_reference(false);
  const joining how = read_joining();
  if (how.sign == ':' && chosen.task >= 0)
    error_end("When retrieving from a single task, cannot use \":\" operator");
  const remote_variable variable = read_remote_variable();
  expect_end();
  if (settings.report) {
    const job_record& job = job_at(chosen.slot);
    std::string text = text_of("Copying from %s (task", job.name.c_str());
    text += chosen.task >= 0 ? text_of(" %i", chosen.task)
                             : text_of("s 0-%i", static_cast<int>(job.tasks.size()) - 1);
    emit(text, ") to var.", text_of(" %i\n", target.base));
  }
  get_into(target, how, chosen, variable);
}

void slaveset_command() {
  no_timing();
  require_protection("slaveset");
  const chosen_task chosen = read_chosen_task();
  std::string text;
  {
    const reading_flag quotes(&macro_reading::single_quotes_only);
    text = read_text_to_semicolon();
  }
  expect_end();
  packet_writer message;
  message.put(signal_set);
  message.put_text(text);
  for (const int number : tasks_of(chosen))
    send_signal(job_at(chosen.slot).tasks[at(number)], message);
}

}  // namespace zeb
