#include "landmarks/lmark_text.h"

#include <map>
#include <numeric>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "landmarks/commands.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/lmark_request.h"
#include "landmarks/search_settings.h"
#include "language/options.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "matrix/reading/matrix_writer.h"

namespace zeb {
namespace {

/// Those options that are forms.
std::vector<std::string> forms_of(const landmark_settings& set) {
  const landmark_settings plain;
  std::vector<std::string> found;
  if (!set.use_grid) found.emplace_back("termpoints -");
  if (set.nest_rounds != plain.nest_rounds || set.nest_window != plain.nest_window)
    found.push_back(text_of("nest %i ", set.nest_rounds) + exact_text(set.nest_window));
  if (set.max_iterations != plain.max_iterations || set.cut != plain.cut)
    found.push_back(text_of("maxiters %i ", set.max_iterations) + exact_text(set.cut));
  if (set.ties != plain.ties) {
    found.emplace_back("ambig ");
    for (const char axis : set.ties) {
      if (axis == 0) break;
      found.back() += axis >= 'x' ? '+' : '-';
      found.back() += static_cast<char>(axis | 32);
    }
  }
  return found;
}

std::string margin_text(const error_margin& margin) {
  const bool whole = margin.stages == 1 && margin.from_percent[0] == 0;
  std::string text = "errmarg ";
  for (int i = 0; i < margin.stages; ++i)
    text += (i ? "-" : "") + exact_text(100 * margin.margins[at(i)]);
  for (int i = 0; i < margin.stages && !whole; ++i)
    text += (i ? "-" : "/") + exact_text(margin.from_percent[at(i)]);
  if (margin.by_errors != error_margin::observed::ignored) {
    text += margin.by_errors == error_margin::observed::smaller ? "<" : ">";
    text += exact_text(margin.deviations);
  }
  return text;
}

std::vector<std::string> forms_of(const landmark_search_settings& set) {
  const landmark_search_settings plain;
  std::vector<std::string> found;
  if (margin_text(set.margin) != margin_text(plain.margin))
    found.push_back(margin_text(set.margin));
  if (set.refine_depth != plain.refine_depth || set.refine_rounds != plain.refine_rounds)
    found.push_back(text_of("refine %ix%i", set.refine_depth, set.refine_rounds));
  if (set.threads != plain.threads) found.push_back(text_of("threads %i", set.threads));
  if (set.threads_stay) found.emplace_back("xthreads");
  return found;
}

/// "lmark wts =2 0/1 3" for each value that landmarks of one character have.
void add_choices(std::vector<std::string>& commands, const char* keyword, int character,
                 const std::vector<point_choice>& choices, double point_choice::*member) {
  std::map<double, std::string> landmarks;
  for (std::size_t l = 0; l < choices.size(); ++l) {
    if (choices[l].*member != point_choice().*member)
      landmarks[choices[l].*member] += " " + std::to_string(l);
  }
  for (const auto& [value, list] : landmarks)
    commands.push_back(text_of("lmark %s =", keyword) + exact_text(value) +
                       text_of(" %i/", character) + list.substr(1));
}

void add_wires(std::vector<std::string>& commands, int character,
               const std::vector<landmark_wire>& wires) {
  if (wires.empty()) return;
  commands.push_back(text_of("lmark connect %i/", character));
  for (std::size_t i = 0; i < wires.size(); ++i) {
    const bool goes_on = i > 0 && wires[i - 1].to == wires[i].from;
    if (!goes_on) commands.back() += (i ? " " : "") + std::to_string(wires[i].from);
    commands.back() += "-" + std::to_string(wires[i].to);
  }
}

}  // namespace

std::vector<std::string> lmark_settings_as_commands() {
  if (landmark_configurations().empty()) return {};
  const lmark_request now{lmark.settings, landmark_searching, {}};
  std::string text = changed_options(now, lmark_options);
  for (const auto& forms : {forms_of(now.settings), forms_of(now.searching)}) {
    for (const std::string& form : forms) text += (text.empty() ? "" : " ") + form;
  }
  std::vector<std::string> commands;
  if (!text.empty()) commands.push_back("lmark " + text);
  std::vector<int> numbers(at(matrix.nchar));
  std::iota(numbers.begin(), numbers.end(), 0);
  for (const std::string& choice : landmark_choices_as_commands(numbers))
    commands.push_back(choice);
  return commands;
}

std::vector<std::string> landmark_choices_as_commands(std::span<const int> new_numbers) {
  std::vector<std::string> commands;
  const auto all = landmark_configurations();
  for (std::size_t i = 0; i < lmark.choices.size() && i < all.size(); ++i) {
    const int character = new_numbers[at(all[i].character)];
    if (character < 0) continue;
    add_choices(commands, "factors", character, lmark.choices[i], &point_choice::factor);
    add_choices(commands, "wts", character, lmark.choices[i], &point_choice::weight);
    add_choices(commands, "usmin", character, lmark.choices[i], &point_choice::minimum);
    add_wires(commands, character, lmark.wires[i]);
  }
  return commands;
}

}  // namespace zeb
