// What the tasks that swap one tree together tell each other.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/packet.h"
#include "trees/tree_record.h"

namespace zeb {

enum class swap_word : std::int32_t {
  hello,    // to the leader: this process takes part
  tree,     // from the leader: go on with this one; to it: this one is better
  done,     // to the leader: its share of the version has nothing better
  leaving,  // to the leader: it takes no further part; with its tree
  beat,     // both ways: still there
  over,     // from the leader: the swap is over
};

struct swap_message {
  swap_word word = swap_word::beat;
  int version = 0;              // of the leader's tree that this is about
  int share = 0;                // the receiver's among `shares`
  int shares = 1;               // of that version
  double score = 0;             // of the tree
  std::string host;             // of the sender
  int process = 0;              // likewise
  std::vector<tree_node> tree;  // in the numbering of the matrix; empty: none goes along

  packet_writer packed() const;
  static swap_message unpacked(packet_reader from);
};

}  // namespace zeb
