#include "formats/nexus/set_heads.h"

#include "base/indices.h"
#include "base/message_text.h"
#include "formats/nexus/element_lists.h"

namespace zeb {

namespace {

// "(vector)", "(characters = title)", after the "(".
void read_set_options(nexus_file& file, set_head& head) {
  for (nexus_token option = file.in.token(); !option.is(')'); option = file.in.token()) {
    if (option.what == nexus_token::kind::end || option.is(';'))
      file.in.fail("a parenthesis isn't closed");
    head.vector = head.vector || option.is("vector");
    const bool of_block = option.is("characters");
    if (!file.in.accept('=')) continue;
    const std::string title = file.in.value();
    if (of_block) head.block = find_nexus_block(file, title);
  }
}

}  // namespace

set_head read_set_head(nexus_file& file) {
  set_head head;
  head.in_force = file.in.accept('*');
  head.block = file.linked;
  while (!file.in.accept('=')) {
    const nexus_token word = file.in.token();
    if (word.is(';') || word.what == nexus_token::kind::end) file.in.fail("a set has no \"=\"");
    if (head.name.empty() && word.what == nexus_token::kind::word) head.name = word.text;
    if (word.is('(')) read_set_options(file, head);
  }
  return head;
}

element_range range_of(const set_head& head, nexus_list kind) {
  if (head.block && kind == nexus_list::characters)
    return {head.block->first, head.block->first + head.block->count};
  return {0, kind == nexus_list::taxa ? matrix.ntax : matrix.nchar};
}

std::vector<std::uint8_t> read_flag_vector(nexus_file& file, const set_head& head,
                                           nexus_list kind) {
  const element_range range = range_of(head, kind);
  std::vector<std::uint8_t> flags(at(kind == nexus_list::taxa ? matrix.ntax : matrix.nchar), 0);
  std::string digits;
  while (!file.in.peek_token().is(';') && file.in.peek_token().what == nexus_token::kind::word)
    digits += file.in.token().text;
  const bool fits = digits.find_first_not_of("01") == std::string::npos &&
                    digits.size() == at(range.end - range.first);
  if (!fits)
    file.in.fail(text_of("a set as vector must have %i digits, 0 or 1", range.end - range.first));
  for (std::size_t i = 0; i < digits.size(); ++i) flags[at(range.first) + i] = digits[i] == '1';
  return flags;
}

void read_value_vector(nexus_file& file, const set_head& head,
                       const std::function<void(int, const std::string&)>& use) {
  const element_range range = range_of(head, nexus_list::characters);
  for (int c = range.first; c < range.end; ++c) {
    if (file.in.peek_token().is(';'))
      file.in.fail(text_of("a vector has %i values instead of %i", c - range.first,
                           range.end - range.first));
    use(c, file.in.token().text);
  }
  file.in.expect(';', "after the values of all characters");
}

}  // namespace zeb
