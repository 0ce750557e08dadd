#include "formats/nexus/step_matrix_reader.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "language/fit_text.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/symbols.h"

namespace zeb {

namespace {

// State that a symbol of these data stands for; -1 for none.
int state_of(const nexus_file& file, data_type type, char symbol) {
  const std::string& symbols = file.symbols;
  if (type == numeric_data && !symbols.empty()) {
    std::size_t place = symbols.find(symbol);
    if (place == std::string::npos) place = lower_case(symbols).find(lower_case({&symbol, 1}));
    return place == std::string::npos ? -1 : static_cast<int>(place);
  }
  const std::uint32_t states =
      make_symbols(type, 4, true)[static_cast<std::size_t>(static_cast<unsigned char>(symbol))];
  return std::has_single_bit(states) ? std::countr_zero(states) : -1;
}

// The states in the order of a step matrix that doesn't name them: bases by the alphabet.
std::vector<int> usual_order(const nexus_file& file, int count) {
  std::vector<int> order;
  const bool bases = matrix.data_type_in_use == dna_data && count <= 5;
  for (int i = 0; i < count; ++i) {
    order.push_back(bases ? state_of(file, dna_data, "ACGT-"[i]) : i);
  }
  return order;
}

bool are_symbols_of(const nexus_file& file, data_type type,
                    const std::vector<std::string>& symbols) {
  return std::all_of(symbols.begin(), symbols.end(), [&](const std::string& s) {
    return s.size() == 1 && state_of(file, type, s[0]) >= 0;
  });
}

// The state of each row from the symbols above the columns: of bases or amino acids where all of
// them are.
std::vector<int> order_of_symbols(nexus_file& file, const std::vector<std::string>& symbols) {
  data_type type = numeric_data;
  for (const data_type letters : {protein_data, dna_data})
    if ((matrix.data_type_in_use & letters) && are_symbols_of(file, letters, symbols))
      type = letters;
  std::vector<int> order;
  for (const std::string& symbol : symbols) {
    const int state = symbol.size() == 1 ? state_of(file, type, symbol[0]) : -1;
    if (state < 0) file.in.fail("unknown state " + symbol + " in a step-matrix");
    if (std::find(order.begin(), order.end(), state) != order.end())
      file.in.fail("state " + symbol + " stands twice in a step-matrix");
    order.push_back(state);
  }
  return order;
}

// "." is no cost at all: of a state to itself.
std::int32_t cost_of(nexus_file& file, const std::string& word, bool on_diagonal) {
  const std::string text = lower_case(word);
  int cost = 0;
  if (text == "i" || text == "inf") {
    cost = forbidden_cost;
  } else if (text != "." && !whole_number(word, 0, forbidden_cost, &cost)) {
    file.in.fail("bad cost " + word + ": whole numbers from 0 to " +
                 std::to_string(forbidden_cost) + ", or i, are read");
  }
  if (on_diagonal && cost != 0) file.in.fail("a state has a cost to itself, " + word);
  if (!on_diagonal && text == ".") file.in.fail("no cost between two states of a step-matrix");
  return cost;
}

// "name (stepmatrix) =", the "=" included. True for a tree of states.
bool read_head(nexus_file& file, std::string& name) {
  file.in.accept('*');
  name = fit_name(file.in.token().text, named::character);
  bool is_tree = false;
  while (!file.in.accept('=')) {
    const nexus_token word = file.in.token();
    if (word.is(';') || word.what == nexus_token::kind::end)
      file.in.fail("\"usertype\" has no \"=\"");
    is_tree = is_tree || word.is("cstree");
  }
  return is_tree;
}

std::vector<std::string> read_words(nexus_file& file) {
  std::vector<std::string> words;
  while (!file.in.accept(';')) {
    if (file.in.peek_token().what == nexus_token::kind::end)
      file.in.fail("the file ends within \"usertype\"");
    words.push_back(file.in.token().text);
  }
  return words;
}

// Changes that the words don't tell of cost 1.
void fill_costs(nexus_file& file, const std::vector<int>& order,
                const std::vector<std::string>& words, step_matrix& result) {
  cost_table table = costs_all_alike(1);
  for (std::size_t row = 0; row < order.size(); ++row) {
    table.states |= std::uint32_t{1} << order[row];
    for (std::size_t column = 0; column < order.size(); ++column) {
      table.costs[at(order[row])][at(order[column])] =
          cost_of(file, words[row * order.size() + column], row == column);
    }
  }
  result.costs = std::make_shared<const cost_table>(table);
}

// A node of a tree of states; without a symbol it stands for its only descendant.
struct state_node {
  std::string symbol;
  std::vector<std::size_t> below;
};

// "((3)1,2)0": the nodes of a tree whose internal nodes are states too, the root last.
std::vector<state_node> read_state_nodes(nexus_file& file) {
  std::vector<state_node> nodes;
  std::vector<std::vector<std::size_t>> open(1);
  bool closed = false;
  while (!file.in.accept(';')) {
    const nexus_token piece = file.in.token();
    if (piece.what == nexus_token::kind::end) file.in.fail("the file ends within \"usertype\"");
    if (piece.is('(')) {
      open.emplace_back();
    } else if (piece.is(')') && open.size() > 1) {
      nodes.push_back({{}, open.back()});
      open.pop_back();
      open.back().push_back(nodes.size() - 1);
    } else if (closed && !piece.is(',') && !piece.is(')')) {
      nodes.back().symbol = piece.text;
    } else if (!piece.is(',')) {
      nodes.push_back({piece.text, {}});
      open.back().push_back(nodes.size() - 1);
    }
    closed = piece.is(')');
  }
  if (open.size() != 1 || open.back().size() != 1) file.in.fail("a tree of states isn't one tree");
  return nodes;
}

// "name (cstree) = ((3)1,2)0;"
void read_state_tree_type(nexus_file& file, const std::string& name) {
  const std::vector<state_node> nodes = read_state_nodes(file);
  std::vector<std::string> symbols;
  for (const state_node& node : nodes) {
    if (!node.symbol.empty()) symbols.push_back(node.symbol);
    if (!node.symbol.empty() || node.below.size() == 1) continue;
    return warning("Character type", name,
                   "has branchings that are no states; its characters stay as they are");
  }
  const std::vector<int> order = order_of_symbols(file, symbols);
  std::vector<int> state(nodes.size());  // nodes stand after those below them
  std::uint32_t states = 0;
  std::vector<std::pair<int, int>> links;
  auto next = order.begin();
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].symbol.empty()) {
      state[i] = state[nodes[i].below[0]];
      continue;
    }
    state[i] = *next++;
    states |= std::uint32_t{1} << state[i];
    for (const std::size_t b : nodes[i].below) links.emplace_back(state[i], state[b]);
  }
  add_step_matrix({name, std::make_shared<const cost_table>(costs_along_links(states, links))});
}

}  // namespace

// "name (stepmatrix) = 3  [0 1 2]  . 1 2  1 . 1  2 1 .;": states first, if they are named.
void read_nexus_step_matrix(nexus_file& file) {
  step_matrix result;
  if (read_head(file, result.name)) return read_state_tree_type(file, result.name);
  const std::string size = file.in.token().text;
  int count = 0;
  if (!whole_number(size, 1, 32, &count)) file.in.fail("bad number of states " + size);
  std::vector<std::string> words = read_words(file);
  std::vector<int> order;
  if (words.size() == at(count) * at(count + 1)) {
    order = order_of_symbols(file, {words.begin(), words.begin() + count});
    words.erase(words.begin(), words.begin() + count);
  } else {
    order = usual_order(file, count);
  }
  if (words.size() != at(count) * at(count))
    file.in.fail("step-matrix " + result.name + " hasn't as many cells as its states ask for");
  fill_costs(file, order, words, result);
  add_step_matrix(std::move(result));
}

}  // namespace zeb
