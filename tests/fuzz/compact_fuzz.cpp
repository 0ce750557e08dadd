// Any bytes read as a compact tree are refused, or give a valid tree that is written and read back
// the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "trees/notation/compact_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const int ntax = data[0] == 255 ? 16384 : 4 + data[0] % 40;
  const std::span<const std::uint8_t> bytes(data + 1, size - 1);
  zeb::read_compact_head(bytes);
  const std::size_t length = zeb::compact_tree_bytes(bytes, ntax);
  if (length == 0) return 0;
  std::vector<zeb::tree_node> tree(2 * static_cast<std::size_t>(ntax) - 1, 0);
  zeb::compact_reader reader(ntax);
  if (!reader.read(bytes.first(length), tree)) return 0;
  if (!zeb::check_tree_record(tree, ntax).empty()) std::abort();
  std::vector<std::uint8_t> written;
  zeb::append_compact_tree(tree, ntax, written);
  std::vector<zeb::tree_node> again(tree.size(), 0);
  if (!reader.read(written, again) || again != tree) std::abort();
  return 0;
}
