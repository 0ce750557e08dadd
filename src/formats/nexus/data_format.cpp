#include "formats/nexus/data_format.h"

#include <cctype>

#include "base/errors.h"
#include "matrix/reading/block_format.h"

namespace zeb {

namespace {

data_type type_named(nexus_file& file, const std::string& word) {
  const std::string name = lower_case(word);
  if (name == "standard") return numeric_data;
  if (name == "dna" || name == "rna" || name == "nucleotide") return dna_data;
  if (name == "protein") return protein_data;
  if (name == "continuous") return continuous_data;
  file.in.fail("unknown datatype " + word);
}

void read_mixed(nexus_file& file, nexus_format& format) {
  file.in.expect('(', "after \"datatype=mixed\"");
  while (!file.in.accept(')')) {
    if (file.in.accept(',')) continue;
    nexus_type_range range;
    range.type = type_named(file, file.in.token().text);
    file.in.expect(':', "after a type of mixed data");
    const std::string word = file.in.token().text;
    const std::size_t dash = word.find('-');
    const std::string last = dash == std::string::npos ? word : word.substr(dash + 1);
    if (!whole_number(word.substr(0, dash), 1, 1'000'000'000, &range.first) ||
        !whole_number(last, range.first, 1'000'000'000, &range.last)) {
      file.in.fail("mixed data must give ranges of characters, as in DNA:1-100");
    }
    --range.first;
    --range.last;
    if (range.type == continuous_data && range.first != format.continuous)
      error_end("Continuous characters must precede all other ones!");
    if (range.type == continuous_data) format.continuous = range.last + 1;
    format.mixed.push_back(range);
  }
}

// The text between double quotes, without blanks; comments and brackets in it are text.
std::string read_quoted_symbols(nexus_file& file) {
  if (!file.in.accept('"')) return file.in.value();
  std::string text;
  for (int c = file.in.next_raw(); c != '"'; c = file.in.next_raw()) {
    if (c < 0) file.in.fail("quotes aren't closed");
    if (c > 32) text += static_cast<char>(c);
  }
  return text;
}

// "0~9" stands for all symbols between.
std::string expand_symbols(const std::string& text) {
  std::string symbols;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '~' || symbols.empty() || i + 1 >= text.size()) {
      symbols += text[i];
      continue;
    }
    // A number of two digits ends a range of states in "0~15"; the symbols then go on with letters.
    std::string end = text.substr(i + 1);
    int highest = 0;
    if (end.size() > 1 && symbols == "0" && whole_number(end, 10, 31, &highest)) {
      for (int s = 1; s <= highest; ++s)
        symbols += static_cast<char>(s < 10 ? '0' + s : 'A' + s - 10);
      return symbols;
    }
    const char last = text[++i];
    for (char c = static_cast<char>(symbols.back() + 1); c <= last && c > 0; ++c) symbols += c;
  }
  return symbols;
}

void read_equates(nexus_file& file, nexus_format& format) {
  const std::string text = read_quoted_symbols(file);
  for (std::size_t i = 0; i + 2 < text.size() && text[i + 1] == '=';) {
    const char symbol = text[i];
    i += 2;
    std::string states(1, text[i]);
    if (text[i] == '(' || text[i] == '{') {
      const char close = text[i] == '(' ? ')' : '}';
      const std::size_t end = text.find(close, i);
      if (end == std::string::npos) file.in.fail("an equate isn't closed");
      states = text.substr(i + 1, end - i - 1);
      i = end;
    }
    format.equates.emplace_back(symbol, states);
    ++i;
  }
}

// One character, quoted or not: "missing=?gap=-" has no blanks between.
char read_symbol(nexus_file& file) {
  int symbol = file.in.peek();
  file.in.next_raw();
  if (symbol == '\'' || symbol == '"') {
    const int quote = symbol;
    symbol = file.in.next_raw();
    if (file.in.next_raw() != quote) file.in.fail("expected one symbol in quotes");
  }
  if (symbol < 33 || symbol == ';') file.in.fail("a symbol is missing after \"=\"");
  return static_cast<char>(symbol);
}

}  // namespace

data_type nexus_format::type_of(int character) const {
  for (const nexus_type_range& range : mixed) {
    if (character >= range.first && character <= range.last) return range.type;
  }
  return type;
}

void read_nexus_format(nexus_file& file, nexus_format& format) {
  for (;;) {
    const nexus_token option = file.in.token();
    if (option.is(';')) return;
    if (option.what == nexus_token::kind::end) file.in.fail("the file ends within \"format\"");
    if (option.is("interleave")) {
      format.interleaved = read_yes_no(file.in);
    } else if (option.is("respectcase")) {
      format.respect_case = true;
    } else if (option.is("nolabels")) {
      format.labels = false;
    } else if (option.is("labels")) {
      format.labels = read_yes_no(file.in);
    } else if (option.is("transpose") || option.is("tokens")) {
      file.in.fail("format option " + option.text + " is not available");
    } else if (option.is("datatype")) {
      file.in.expect('=', "after \"datatype\"");
      const std::string type = file.in.value();
      if (lower_case(type) == "mixed") {
        read_mixed(file, format);
      } else {
        format.type = type_named(file, type);
      }
    } else if (option.is("missing") || option.is("gap") || option.is("matchchar")) {
      file.in.expect('=', "after \"" + lower_case(option.text) + "\"");
      const char symbol = read_symbol(file);
      (option.is("missing") ? format.missing
       : option.is("gap")   ? format.gap
                            : format.match) = symbol;
    } else if (option.is("symbols")) {
      file.in.expect('=', "after \"symbols\"");
      format.symbols = expand_symbols(read_quoted_symbols(file));
      file.symbols = format.symbols;
    } else if (option.is("equate")) {
      file.in.expect('=', "after \"equate\"");
      read_equates(file, format);
    } else if (file.in.accept('=')) {
      file.in.value();  // an option that says nothing about the cells, as "items=states"
    }
  }
}

symbol_table nexus_symbols(const nexus_format& format, data_type type, bool gaps_are_states) {
  check_type_fits(type);
  symbol_table table = make_symbols(type, matrix.cell_bytes, gaps_are_states);
  const std::uint32_t mask = mask_of_width(matrix.cell_bytes);
  const std::uint32_t gap = table['-'];
  const auto at = [](char c) { return static_cast<std::size_t>(static_cast<unsigned char>(c)); };
  const auto put = [&](char symbol, std::uint32_t states) {
    table[at(symbol)] = states;
    if (format.respect_case) return;
    table[static_cast<std::size_t>(std::tolower(static_cast<unsigned char>(symbol)))] = states;
    table[static_cast<std::size_t>(std::toupper(static_cast<unsigned char>(symbol)))] = states;
  };
  if (type == dna_data) put('X', dna_bases);
  if (type == numeric_data && !format.symbols.empty()) {
    const std::uint32_t star = table['*'];
    table.fill(0);
    table['?'] = mask;
    table['-'] = gap;
    table['*'] = star;
    // States that don't fit are no symbols of these data: a cell that has one is an error.
    const auto most = static_cast<std::size_t>(matrix.cell_bytes) * 8;
    for (std::size_t s = 0; s < format.symbols.size() && s < most; ++s)
      put(format.symbols[s], 1U << s);
  }
  put(format.missing, mask);
  if (format.gap) table[at(format.gap)] = gap;
  for (const auto& [symbol, states] : format.equates) {
    // So the writer tells others that "*" says next to nothing; here it has a meaning of its own.
    if (symbol == '*' && states == "?") continue;
    std::uint32_t set = 0;
    for (const char state : states) set |= table[at(state)];
    put(symbol, set);
  }
  return table;
}

}  // namespace zeb
