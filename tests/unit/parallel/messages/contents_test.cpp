// Messages between processes: what is packed is read back the same, and no part of a message passes
// for the whole.
#include "parallel/messages/contents.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "parallel/messages/swap_message.h"

namespace {

template <class message>
void expect_whole_only(const message& sent) {
  const zeb::packet_writer packed = sent.packed();
  const auto bytes = packed.bytes();
  const zeb::packet_writer again = message::unpacked(zeb::packet_reader(bytes)).packed();
  EXPECT_TRUE(std::ranges::equal(bytes, again.bytes()));
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_THROW(message::unpacked(zeb::packet_reader(bytes.first(length))), zeb::damaged_message)
        << length << " of " << bytes.size() << " bytes";
}

zeb::tree_load some_trees() {
  return {{{4, 5, 5, 4, 6, 4}, {4, 4, 5, 5, 6, 4}}, 1, {3, 1}, {"first", ""}};
}

TEST(contents, a_part_of_a_message_is_refused) {
  zeb::task_orders orders;
  orders.host = "here";
  orders.instructions = "mult;return;";
  orders.data = "xread";
  orders.tasks = {1024, 1025};
  orders.swap = {zeb::swap_orders::way::controlled, {0, 1}, {"17@here", ""}};
  orders.hosts = {{"here", "there"}, 1, {{3, "fast", {1}}}};
  expect_whole_only(orders);
  zeb::task_packet packet;
  packet.parents = {2, 0};
  packet.load = some_trees();
  expect_whole_only(packet);
  zeb::task_status status;
  status.rearrangements_low = 999'999'999;
  status.finished = status.paused = true;
  status.stage = 9;
  expect_whole_only(status);
  zeb::task_result result;
  result.with_value = true;
  result.value = 0.5;
  result.load = some_trees();
  result.text = {"one line", ""};
  result.failed = true;
  result.error = "Unknown command";
  expect_whole_only(result);
  zeb::swap_message message;
  message.tree = {4, 5, 5, 4, 6, 4};
  message.shares = 3;
  message.share = 2;
  expect_whole_only(message);
}

}  // namespace
