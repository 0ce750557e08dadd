// What messages between a parent and its tasks are about: the number that each bears.
#pragma once

namespace zeb {

enum message_tag : int {
  tag_data = 1,         // to a task: data set, settings, instructions
  tag_hello = 3,        // to the parent: host and process of a task that has started
  tag_signal = 5,       // to a task: a signal, with what belongs to it
  tag_result = 6,       // to the parent: what a task found
  tag_packet = 7,       // to a task: its seeds and trees
  tag_status = 10,      // to the parent: how far a task is
  tag_trees = 12,       // to the parent: trees while the task goes on
  tag_variable = 13,    // to the parent: values of a variable
  tag_disk_data = 14,   // to a helper: data for a file
  tag_disk_reply = 15,  // to the parent: whether the file is right
  tag_text = 16,        // to the parent: text buffer
  tag_swap = 17,        // among the tasks that swap one tree
  tag_reply = 20,       // to the parent: the answer to query N is tag 20 + N
  tag_processors = 12345,
};

/// The low values are numbers, the higher ones bits.
enum task_signal : int {
  signal_stop = 0,
  signal_kill = 1,
  signal_pause = 2,
  signal_resume = 3,
  signal_query = 4,    // and the number of the query
  signal_collect = 5,  // the parent is ready for the result, or has it
  signal_leave = 6,    // the waiting is over
  signal_monitor = 7,  // send status from now on
  signal_no_monitor = 8,
  signal_send_trees = 9,
  signal_set = 10,  // and the text of a `set`
  signal_get = 11,  // and the variable
  signal_stop_wait = 16,
  signal_stop_loops = 32,
  signal_stop_all = 64,
  signal_time_out = 128,
  signal_tag = 256,    // and the tag; with the low bit back to it
  signal_again = 512,  // new instructions follow
};

enum task_query : int {
  query_trees = 0,
  query_rearrangements = 1,
  query_score = 2,
  query_finished = 4,
  query_replications = 5,
  query_tag = 6,
  query_stage = 7,
  query_errors = 8,
  query_speed = 9,
  query_text = 10,
  query_value = 11,  // of `return`: whether it has come to one, and the value
};

}  // namespace zeb
