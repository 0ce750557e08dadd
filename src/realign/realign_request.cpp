#include "realign/realign_request.h"

#include <cctype>
#include <cstdint>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "language/taxon_reference.h"
#include "matrix/matrix.h"
#include "realign/commands.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

void choose_kind(realign_request& request, alignment_kind kind) {
  if (request.how.kind != alignment_kind::none)
    error_end("You cannot specify several types of alignment together!");
  request.how.kind = kind;
}

void read_reference(realign_request& request) {
  std::vector<std::uint8_t> marks(at(matrix.ntax));
  const int next = skip_blanks_peek();
  request.how.reference = next == ']' || next == ';' ? -1 : read_taxon(marks);
  if (request.how.reference < 0) error_end("Reference taxon expected within brackets");
  if (!accept_char(']')) error_end("Closing brackets expected");
  request.reference_given = true;
}

int read_baseline_point(const char* which) {
  const int point = read_int();
  if (point < 0) error_end("Expected", which, "landmark for 2-point registration, by number");
  return point;
}

void read_baseline(realign_request& request) {
  choose_kind(request, alignment_kind::baseline);
  if (accept_char('[')) read_reference(request);
  if (!accept_char('('))
    error_end("Expected first landmark for 2-point registration, in parentheses");
  request.how.first_point = read_baseline_point("first");
  request.how.second_point = read_baseline_point("second");
  if (!accept_char(')')) error_end("Expected closing parenthesis after the two landmarks");
}

void read_resistant(realign_request& request) { choose_kind(request, alignment_kind::resistant); }
void read_linear(realign_request& request) { choose_kind(request, alignment_kind::linear); }

void read_tree(realign_request& request) {
  choose_kind(request, alignment_kind::tree);
  require_trees();
  request.on_tree.tree = read_int();
  check_tree_number(request.on_tree.tree);
}

void read_random(realign_request& request) {
  choose_kind(request, alignment_kind::random);
  request.moves = read_int();
  if (request.moves < 1) error_end("Must give number of cycles of random moves!");
}

constexpr command_options rows = {
    form<read_baseline>("twopoint")
        .argument("(p1 p2)")
        .help(
            "the line from landmark p1 to p2 comes to lie on that of the reference, size included"),
    form<read_resistant>("rftra").help(
        "repeated medians: what most landmarks agree on, no matter how much the others differ"),
    form<read_linear>("pairlin").help("least sum of distances to the reference"),
    form<read_tree>("tree").argument("T").help("least score on tree T"),
    number<&realign_request::on_tree, &tree_alignment::cycles>(
        "cycles", {0, 1000000},
        "Must give number of cycles of improvement/perturbation for tree-alignment")
        .help("cycles of perturbing and improving a tree alignment"),
    number<&realign_request::on_tree, &tree_alignment::level>(
        "level", {0, 4}, "Must give level of throughness for tree-alignment (0-4)")
        .help("how thorough a tree alignment is, from 0 to 4"),
    form<read_random>("random").argument("N").help(
        "N cycles of random turns and shifts of all configurations"),
    form<read_reference>("[").argument("taxon]").help(
        "the reference, which doesn't move (default: the first taxon)"),
    choice<&realign_request::how, &reference_alignment::scales>("!", 1).help(
        "change sizes as well, with rftra and pairlin only"),
    choice<&realign_request::how, &reference_alignment::turns>("=", 0).help(
        "no rotations, with pairlin only"),
};

void read_options(realign_request& request) {
  for (int c = skip_blanks_peek(); c != ';' && c != '/'; c = skip_blanks_peek()) {
    if (isalpha(c))
      read_option(request, lmrealign_options);
    else if (!read_sign(request, lmrealign_options))
      error_end_f("Uknown option for realigning: %c", c);
  }
}

void check_options(const realign_request& request) {
  const alignment_kind kind = request.how.kind;
  if (kind == alignment_kind::none)
    error_end("Must specify some type of alignment: rftra, twopoint, pairlin, tree, or random");
  if (request.how.scales && kind != alignment_kind::linear && kind != alignment_kind::resistant)
    error_end(
        "You can change the size of configurations only in pairlin and rftra superimposition");
  if (!request.how.turns && kind != alignment_kind::linear)
    error_end("Rotations can be skipped only with \"pairlin\" option");
  if (request.reference_given && kind == alignment_kind::random)
    error_end("Random moves have no reference taxon");
  if (kind == alignment_kind::tree && request.on_tree.cycles < 0)
    error_end("Must give number of cycles of improvement/perturbation for tree-alignment");
  if (kind == alignment_kind::tree && request.on_tree.level < 0)
    error_end("Must give level of throughness for tree-alignment (0-4)");
}

/// Without a list, all configurations.
std::vector<int> read_characters(realign_request& request) {
  std::vector<std::uint8_t> marks(at(matrix.nchar), 0);
  request.listed = accept_char('/');
  if (!request.listed) {
    for (const landmark_configuration& one : landmark_configurations())
      marks[at(one.character)] = 1;
  } else if (!read_list(list_plain, 0, matrix.nchar, "character", marks)) {
    error_end("Expected a list of characters");
  }
  std::vector<int> characters;
  for (int c = 0; c < matrix.nchar; ++c)
    if (marks[at(c)]) characters.push_back(c);
  return characters;
}

/// Fewer points are at rest however they are turned about some axis.
int least_points(const landmark_configuration& configuration) { return configuration.dimensions; }

void keep_configurations(realign_request& request, const std::vector<int>& characters) {
  int other = -1;
  const landmark_configuration* small = nullptr;
  for (const int c : characters) {
    const landmark_configuration* configuration = configuration_of(c);
    if (!configuration)
      other = other < 0 ? c : other;
    else if (configuration->points < least_points(*configuration))
      small = small ? small : configuration;
    else
      request.characters.push_back(c);
  }
  if (other >= 0)
    warning_f("Some characters (e.g. %i) are not landmark configurations; they will be skipped",
              other);
  if (small)
    warning_f(
        "Some characters (e.g. %i) are configurations with only %i landmarks; they will be skipped",
        small->character, small->points);
  if (request.characters.empty()) error_end("No configurations to realign");
}

void check_dimensions(const realign_request& request) {
  for (const int c : request.characters) {
    if (configuration_of(c)->dimensions == 2) continue;
    if (request.how.kind == alignment_kind::baseline)
      error_end("Baseline cannot be used for 3D characters");
    if (request.how.kind != alignment_kind::resistant) return;
    if (!request.listed) error_end("Sorry, cannot realign 3D characters with RFTRA");
    error_end_f("RFTRA can only handle 2D landmark data; character %i is 3D", c);
  }
}

void check_baseline(const reference_alignment& how, int character) {
  for (const int point : {how.first_point, how.second_point})
    if (point >= configuration_of(character)->points)
      error_end_f("No landmark  %i in character %i", point, character);
  const std::string name = taxon_label(how.reference);
  if (lacks_configuration(character, how.reference))
    error_end_f(
        "Reference (taxon %s) is unobserved for configuration %i --cannot use as reference for "
        "realignment",
        name.c_str(), character);
  const auto points = landmarks_of(character, how.reference);
  const landmark_point& first = points[at(how.first_point)];
  const landmark_point& second = points[at(how.second_point)];
  if (is_missing(first) || is_missing(second))
    error_end_f(
        "Reference (taxon %s) has a missing entry for a registration point --can't align from it",
        name.c_str());
  if (first == second)
    error_end_f(
        "Reference (taxon %s) has both registration points of configuration %i at one place "
        "--can't align from it",
        name.c_str(), character);
}

}  // namespace

constexpr option_table lmrealign_options =
    rows.table("lmrealign", {.unknown = "Uknown option for realigning: %s"});

realign_request read_realign_request() {
  realign_request request;
  read_options(request);
  check_options(request);
  const std::vector<int> characters = read_characters(request);
  check_end();
  keep_configurations(request, characters);
  check_dimensions(request);
  if (request.reference_given) request.on_tree.reference = request.how.reference;
  if (request.how.kind == alignment_kind::tree)
    check_tree_alignment(request.on_tree, request.characters);
  if (request.how.kind == alignment_kind::baseline)
    for (const int c : request.characters) check_baseline(request.how, c);
  return request;
}

}  // namespace zeb
