// Any text read as a parenthetical tree ends in an error or in a valid tree that is written and
// read back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "../support/text_session.h"
#include "base/command.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/notation/tree_file.h"
#include "trees/notation/tree_text_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int ntax = 9;

std::vector<zeb::tree_node> read_one(zeb::tree_text_reader& reader) {
  reader.read_tree();
  std::vector<zeb::tree_node> tree(2 * ntax - 1, 0);
  reader.tree().finish(tree, false);
  return tree;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static zeb_test::text_session session(ntax);
  const zeb::jump_context context;
  session.type(std::string(reinterpret_cast<const char*>(data), size));
  zeb::tree_text_reader reader(ntax);
  try {
    const std::vector<zeb::tree_node> tree = read_one(reader);
    if (zeb::terminals_in(tree, ntax) < 2) return 0;
    if (!zeb::check_tree_record(tree, ntax).empty()) std::abort();
    session.type(zeb::stored_tree_text(tree) + ";");
    if (read_one(reader) != tree) std::abort();
  } catch (const zeb::command_unwinding&) {
    return 0;
  }
  return 0;
}
