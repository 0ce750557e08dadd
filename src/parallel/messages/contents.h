// What the messages between a parent and its tasks hold. Each struct is packed in the order of its
// members; unpacking throws `damaged_message`.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/packet.h"
#include "trees/tree_record.h"

namespace zeb {

/// One tree swapped by several tasks of a job together.
struct swap_orders {
  enum class way { none, sorted, unsorted, controlled };
  way how = way::none;
  std::vector<std::int32_t> tasks;     // that take part; the first one leads
  std::vector<std::string> addresses;  // of the processes of all tasks of the job, "number@host"
                                       // or "", as far as the parent knows them

  void put_into(packet_writer& to) const;
  static swap_orders taken_from(packet_reader& from);
};

struct host_group_text {
  int number = 0;
  std::string name;
  std::vector<std::int32_t> hosts;  // indices among the names
};

/// Hosts as the sender numbers them, and their groups.
struct host_table {
  std::vector<std::string> names;
  int sender = 0;  // index of its own machine
  std::vector<host_group_text> groups;

  void put_into(packet_writer& to) const;
  static host_table taken_from(packet_reader& from);
};

/// The data set and what is to be done with it: the same for all tasks of a job.
struct task_orders {
  bool is_sector = false;   // the data are a sector of a larger tree:
  double score_offset = 0;  // score of the whole tree
  int taxa_of_tree = 0;     // of the whole tree
  std::vector<std::int32_t>
      nodes_in_sector;  // by node of the whole tree: that of the sector; or -1
  int communication_time = 3;
  int timeout = 0;  // seconds for the packet to follow; 0 no limit
  bool raw_encoding = true;
  std::string host;  // of the parent
  int process = 0;   // likewise
  std::string instructions;
  std::uint64_t ram = 0;  // bytes of the arena
  int taxa = 0;
  int characters = 0;
  int cell_bytes = 2;
  bool from_disk = false;           // the data are read from a file
  std::string directory;            // of that file
  std::string data;                 // commands that read the data; empty with `from_disk`
  std::string settings;             // commands that set all that differs from the defaults
  std::vector<std::int32_t> tasks;  // ids of all tasks of the job
  swap_orders swap;
  host_table hosts;

  packet_writer packed() const;
  static task_orders unpacked(packet_reader from);
};

/// Trees and the groups that they are in, as they travel.
struct tree_load {
  std::vector<std::vector<tree_node>> trees;
  int group_words = 0;                     // 0: groups don't travel
  std::vector<std::uint32_t> memberships;  // group_words for each tree
  std::vector<std::string> group_names;    // of all groups; empty: not defined

  void put_into(packet_writer& to) const;
  static tree_load taken_from(packet_reader& from);
};

/// What each task gets for itself.
struct task_packet {
  int seed = 1;
  int macro_seed = 1;
  int number = 0;                     // among the tasks of the job
  int level = 1;                      // how many parents it has
  std::vector<std::int32_t> parents;  // task numbers of those that are tasks, nearest first
  bool tagged_trees = false;
  tree_load load;

  packet_writer packed() const;
  static task_packet unpacked(packet_reader from);
};

/// How far a task is.
struct task_status {
  int replications = 0;
  std::uint64_t rearrangements_high = 0;  // units of 1,000,000,000
  std::uint64_t rearrangements_low = 0;
  int trees = 0;
  bool finished = false;
  int stage = 0;  // 0 none, 9 finished, else the algorithm's number + 1
  bool paused = false;
  int tag = 0;
  std::string command = "(none)";
  double score = -1;
  int wait = 0;  // number of the waiting of the parent for which it was sent

  packet_writer packed() const;
  static task_status unpacked(packet_reader from);
};

/// `polytree`, `nopolytree`: are trees of exclusive sectors polytomous outside of the sector?
enum class polytree_wish : std::int32_t { unsaid, yes, no };

/// What a task found. `with_...`: it sends that.
struct task_result {
  int taxa = 0;
  bool with_trees = true;
  bool with_text = false;
  bool with_groups = false;
  bool with_value = false;
  double value = 0;
  bool failed = false;
  std::string error;  // what was said then
  polytree_wish polytree = polytree_wish::unsaid;
  tree_load load;
  std::vector<std::string> text;

  packet_writer packed() const;
  static task_result unpacked(packet_reader from);
};

constexpr std::size_t longest_shown_command = 14;

}  // namespace zeb
