#include "parallel/messages/contents.h"

#include <algorithm>
#include <utility>

namespace zeb {
namespace {

constexpr std::int32_t end_mark = 0x5a4542;

void put_texts(packet_writer& to, const std::vector<std::string>& texts) {
  to.put(static_cast<std::int32_t>(texts.size()));
  for (const std::string& text : texts) to.put_text(text);
}

std::vector<std::string> take_texts(packet_reader& from) {
  constexpr std::int32_t most = 1 << 28;
  std::vector<std::string> texts;
  for (std::int32_t left = from.whole_within(0, most); left > 0; --left)
    texts.push_back(from.text());
  return texts;
}

void expect_end_of(packet_reader& from) {
  if (from.whole() != end_mark || !from.at_end()) throw damaged_message();
}

}  // namespace

void swap_orders::put_into(packet_writer& to) const {
  to.put(static_cast<std::int32_t>(how));
  if (how == way::none) return;
  to.put_list(tasks);
  put_texts(to, addresses);
}

swap_orders swap_orders::taken_from(packet_reader& from) {
  swap_orders o;
  o.how = static_cast<way>(from.whole_within(0, static_cast<int>(way::controlled)));
  if (o.how == way::none) return o;
  o.tasks = from.list();
  o.addresses = take_texts(from);
  return o;
}

void host_table::put_into(packet_writer& to) const {
  put_texts(to, names);
  to.put(sender);
  to.put(static_cast<std::int32_t>(groups.size()));
  for (const host_group_text& group : groups) {
    to.put(group.number);
    to.put_text(group.name);
    to.put_list(group.hosts);
  }
}

host_table host_table::taken_from(packet_reader& from) {
  constexpr std::int32_t most_groups = 1 << 10;
  host_table table;
  table.names = take_texts(from);
  table.sender = from.whole();
  for (std::int32_t left = from.whole_within(0, most_groups); left > 0; --left) {
    host_group_text group;
    group.number = from.whole();
    group.name = from.text();
    group.hosts = from.list();
    table.groups.push_back(std::move(group));
  }
  return table;
}

packet_writer task_orders::packed() const {
  packet_writer to;
  to.put(is_sector);
  to.put_real(score_offset);
  to.put(taxa_of_tree);
  to.put_list(nodes_in_sector);
  to.put(communication_time);
  to.put(timeout);
  to.put(raw_encoding);
  to.put_text(host);
  to.put(process);
  to.put_text(instructions);
  to.put_long(ram);
  to.put(taxa);
  to.put(characters);
  to.put(cell_bytes);
  to.put(from_disk);
  to.put_text(directory);
  to.put_text(data);
  to.put_text(settings);
  to.put_list(tasks);
  swap.put_into(to);
  hosts.put_into(to);
  to.put(end_mark);
  return to;
}

task_orders task_orders::unpacked(packet_reader from) {
  constexpr std::int32_t most = 1 << 30;
  task_orders o;
  o.is_sector = from.whole_within(0, 1) != 0;
  o.score_offset = from.real();
  o.taxa_of_tree = from.whole_within(0, most);
  o.nodes_in_sector = from.list();
  o.communication_time = from.whole_within(0, most);
  o.timeout = from.whole_within(0, most);
  o.raw_encoding = from.whole_within(0, 1) != 0;
  o.host = from.text();
  o.process = from.whole();
  o.instructions = from.text();
  o.ram = from.long_whole();
  o.taxa = from.whole_within(0, most);
  o.characters = from.whole_within(0, most);
  o.cell_bytes = from.whole_within(0, 4);
  o.from_disk = from.whole_within(0, 1) != 0;
  o.directory = from.text();
  o.data = from.text();
  o.settings = from.text();
  o.tasks = from.list();
  o.swap = swap_orders::taken_from(from);
  o.hosts = host_table::taken_from(from);
  expect_end_of(from);
  return o;
}

void tree_load::put_into(packet_writer& to) const {
  to.put(static_cast<std::int32_t>(trees.size()));
  to.put(group_words);
  for (const std::vector<tree_node>& tree : trees) to.put_list(tree);
  if (group_words == 0) return;
  for (const std::uint32_t word : memberships) to.put(static_cast<std::int32_t>(word));
  put_texts(to, group_names);
}

tree_load tree_load::taken_from(packet_reader& from) {
  constexpr std::int32_t most_trees = 1 << 28;
  constexpr std::int32_t most_words = 1 << 16;
  tree_load load;
  const std::int32_t count = from.whole_within(0, most_trees);
  load.group_words = from.whole_within(0, most_words);
  for (std::int32_t i = 0; i < count; ++i) load.trees.push_back(from.list());
  if (load.group_words == 0) return load;
  for (std::int64_t left = std::int64_t{count} * load.group_words; left > 0; --left)
    load.memberships.push_back(static_cast<std::uint32_t>(from.whole()));
  load.group_names = take_texts(from);
  return load;
}

packet_writer task_packet::packed() const {
  packet_writer to;
  to.put(seed);
  to.put(macro_seed);
  to.put(number);
  to.put(level);
  to.put_list(parents);
  to.put(static_cast<std::int32_t>(load.trees.size()));
  to.put(tagged_trees);
  load.put_into(to);
  to.put(end_mark);
  return to;
}

task_packet task_packet::unpacked(packet_reader from) {
  task_packet p;
  p.seed = from.whole();
  p.macro_seed = from.whole();
  p.number = from.whole();
  p.level = from.whole();
  p.parents = from.list();
  from.whole();
  p.tagged_trees = from.whole_within(0, 1) != 0;
  p.load = tree_load::taken_from(from);
  expect_end_of(from);
  return p;
}

packet_writer task_status::packed() const {
  constexpr std::uint64_t unit = 1'000'000'000;
  packet_writer to;
  to.put(replications);
  to.put_long(rearrangements_high + rearrangements_low / unit);
  to.put_long(rearrangements_low % unit);
  to.put(trees);
  to.put((finished ? 1 : 0) | (stage << 1) | (paused ? 256 : 0));
  to.put(tag);
  to.put_text(std::string_view(command).substr(0, longest_shown_command));
  to.put_real(score);
  to.put(wait);
  return to;
}

task_status task_status::unpacked(packet_reader from) {
  constexpr int stage_bits = 127;
  task_status s;
  s.replications = from.whole();
  s.rearrangements_high = from.long_whole();
  s.rearrangements_low = from.long_whole();
  s.trees = from.whole();
  const std::int32_t flags = from.whole();
  s.finished = (flags & 1) != 0;
  s.stage = (flags >> 1) & stage_bits;
  s.paused = (flags & 256) != 0;
  s.tag = from.whole();
  s.command = from.text().substr(0, longest_shown_command);
  s.score = from.real();
  s.wait = from.whole();
  return s;
}

packet_writer task_result::packed() const {
  packet_writer to;
  to.put(taxa);
  to.put(with_trees);
  to.put(with_text);
  to.put(with_groups);
  to.put(with_value);
  if (with_value) to.put_real(value);
  to.put(failed);
  to.put_text(error);
  to.put(static_cast<std::int32_t>(polytree));
  load.put_into(to);
  put_texts(to, text);
  to.put(end_mark);
  return to;
}

task_result task_result::unpacked(packet_reader from) {
  task_result r;
  r.taxa = from.whole();
  r.with_trees = from.whole_within(0, 1) != 0;
  r.with_text = from.whole_within(0, 1) != 0;
  r.with_groups = from.whole_within(0, 1) != 0;
  r.with_value = from.whole_within(0, 1) != 0;
  if (r.with_value) r.value = from.real();
  r.failed = from.whole_within(0, 1) != 0;
  r.error = from.text();
  r.polytree = static_cast<polytree_wish>(from.whole_within(0, 2));
  r.load = tree_load::taken_from(from);
  r.text = take_texts(from);
  expect_end_of(from);
  return r;
}

}  // namespace zeb
