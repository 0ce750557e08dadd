// The compact form of complete trees: each is a stream of bits that tells where the terminals, one
// after another, join the tree of those before.
//
// A list L of placed nodes starts as terminals 0 and 1 and the root above them. For each further
// terminal a field gives a flag (low bit) and an index into L, as wide as L needs. Flag 1: the
// terminal becomes one more descendant of that node's ancestor, and is appended to L. Flag 0: a new
// node takes that node's place, with it and the terminal as descendants; the terminal and the new
// node are appended. Words are little-endian, filled from the low bit up; 16 bits and a 16-bit
// count below 16,384 taxa, 32 and 32 from there on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// The first bytes of a file: the number of taxa, 2 or 6 bytes.
std::vector<std::uint8_t> compact_head(int ntax);
/// Reads a head: the number of taxa and the bytes it takes; -1 where the bytes are no head.
struct compact_head_fields {
  std::int64_t ntax = -1;
  std::size_t bytes = 0;
};
compact_head_fields read_compact_head(std::span<const std::uint8_t> file);

/// Appends word count and words of a normalised tree that holds all taxa.
void append_compact_tree(const_tree_span tree, int ntax, std::vector<std::uint8_t>& bytes);

/// Bytes of the tree at the start of `bytes`, with its count; 0 where they end early.
std::size_t compact_tree_bytes(std::span<const std::uint8_t> bytes, int ntax);
/// Reads the tree of exactly these bytes, in normal form. False for an impossible or too short
/// stream; spare bits and words are ignored.
class compact_reader {
 public:
  explicit compact_reader(int ntax);
  bool read(std::span<const std::uint8_t> bytes, tree_span tree);

 private:
  int ntax_;
  std::vector<int> placed_;  // the list L
  std::vector<int> up_;
};

}  // namespace zeb
