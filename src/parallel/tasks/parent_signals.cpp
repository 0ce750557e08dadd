#include "parallel/tasks/parent_signals.h"

#include <unistd.h>

#include <string>
#include <vector>

#include "base/command.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/packet.h"
#include "base/process.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "console/text_buffer.h"
#include "language/command_strings.h"
#include "language/hooks.h"
#include "language/interpreter.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/reports.h"
#include "parallel/tasks/task_state.h"
#include "parallel/tasks/tree_loads.h"
#include "parallel/tasks/variable_requests.h"
#include "parallel/transport/processes.h"

namespace zeb {
namespace {

struct signal_state {
  std::vector<std::string> sets;  // of the parent, not run yet
  bool running_sets = false;
};
signal_state pending;

void answer(int query, const packet_writer& reply) {
  task.link->send(parent_task, tag_reply + query, reply.bytes());
}

void send_text() {
  packet_writer reply;
  reply.put(static_cast<std::int32_t>(display_buffer.lines()));
  for (std::size_t i = 0; i < display_buffer.lines(); ++i) reply.put_text(display_buffer.line(i));
  task.link->send(parent_task, tag_text, reply.bytes());
}

void answer_query(int query) {
  const task_status now = status_of_task();
  packet_writer reply;
  switch (query) {
    case query_trees:
      reply.put(now.trees);
      break;
    case query_rearrangements:
      reply.put_long(now.rearrangements_high);
      reply.put_long(now.rearrangements_low);
      break;
    case query_score:
      reply.put_real(now.score);
      break;
    case query_finished:
      reply.put(now.finished);
      break;
    case query_replications:
      reply.put(now.replications);
      break;
    case query_tag:
      reply.put(now.tag);
      break;
    case query_stage:
      reply.put(now.stage);
      break;
    case query_errors:
      reply.put(task.failed);
      break;
    case query_speed:
      reply.put(1000);
      break;
    case query_text:
      return send_text();
    case query_value:
      reply.put(now.finished && task.to_return.value_given);
      reply.put_real(task.to_return.value);
      break;
    default:
      return;
  }
  answer(query, reply);
}

void send_trees() {
  packet_writer to;
  to.put(status_of_task().trees);
  trees_in_memory(true).put_into(to);
  task.link->send(parent_task, tag_trees, to.bytes());
}

/// What goes on is to end, and the rest of the instructions is void.
bool stop_everything() {
  task.no_loops = task.no_waits = task.returning = true;
  return true;
}

bool stop_at(int tag, bool back) {
  const bool over = task.at_return && task.agains == 0 && !task.receiving;
  if (!back && (over || task.tag >= tag)) return false;
  if (over) {  // who is sent back begins anew, also after an error
    forget_failure();
    task.returning = false;
  }
  task.wanted_tag = tag;
  task.wanted_back = back;
  return false;
}

bool obey_bits(int code, packet_reader& from) {
  bool stop = false;
  if ((code & signal_again) != 0) {
    ++task.agains;
    if (task.at_return) forget_former_instructions();
  }
  if ((code & signal_tag) != 0) stop_at(from.whole(), (code & 1) != 0);
  if ((code & signal_stop_wait) != 0) task.no_waits = true;
  if ((code & signal_stop_loops) != 0) task.no_loops = true;
  if ((code & signal_time_out) != 0) expire_time_limit();
  if ((code & signal_stop_all) != 0) stop = stop_everything();
  return stop;
}

bool obey(int code, packet_reader& from) {
  switch (code) {
    case signal_stop:
      task.paused = false;
      // A monitor is left, and the instructions go on; anything else is broken off for good.
      if (!task.waiting) task.returning = true;
      return true;
    case signal_kill:
      end_process(0);
    case signal_pause:
      task.paused = true;
      return false;
    case signal_resume:
      task.paused = false;
      return false;
    case signal_collect:
      if (task.result_sent) end_process(0);
      task.paused = false;
      return false;
    case signal_query:
      answer_query(from.whole());
      return false;
    case signal_leave:
      task.dismissed = true;
      task.paused = false;
      return false;
    case signal_monitor:
      task.parents_wait = from.whole();
      task.monitored = true;
      task.last_status = 0;
      return false;
    case signal_no_monitor:
      task.monitored = false;
      return false;
    case signal_send_trees:
      send_trees();
      return false;
    case signal_set:
      pending.sets.push_back(from.text());
      run_sets_of_parent(task.at_return);
      return false;
    case signal_get:
      answer_variable_request(from);
      return false;
    default:
      if (code < signal_stop_wait) return false;
      task.paused = false;
      return obey_bits(code, from);
  }
}

void send_status_if_due(double now) {
  const int interval = task.at_return ? 0 : parallel.communication_time;
  if (!task.monitored || now - task.last_status < interval) return;
  task.last_status = now;
  task.link->send(parent_task, tag_status, status_of_task().packed().bytes());
}

bool obey_messages() {
  bool stop = false;
  while (const auto message = task.link->receive(parent_task, tag_signal)) {
    packet_reader from(message->body);
    try {
      const bool this_stops = obey(from.whole(), from);
      stop = stop || this_stops;
    } catch (const damaged_message&) {
      // Half a signal asks for nothing.
    }
  }
  return stop;
}

/// With all jobs of this task. Was a stop what ended it?
bool pause() {
  emit("\n              ----> pausing slave...");
  hooks_of_language.run_steered(steering_wish::pause);
  const double since = wall_clock();
  const stopped_clock_scope clock;
  bool stop = false;
  while (task.paused && !stop) {
    sleep(1);
    send_status_if_due(wall_clock());
    stop = obey_messages();
    test_parent();
  }
  hooks_of_language.run_steered(steering_wish::go_on);
  emit(text_of("(paused for %i secs.)\n", static_cast<int>(wall_clock() - since)));
  return stop;
}

}  // namespace

bool is_parent_there() { return task.parent_process <= 0 || process_runs(task.parent_process); }

void test_parent() {
  if (!task.link->is_alive(parent_task) || !is_parent_there()) end_process(status_of_orphan);
}

bool obey_parent() {
  const bool stop = obey_messages();
  send_status_if_due(wall_clock());
  test_parent();
  return task.paused && !stop ? pause() : stop;
}

bool stop_asked_by_parent() {
  if (!task.link || task.at_return || task.receiving) return false;
  const double now = wall_clock();
  constexpr double between_tests = 2;  // seconds
  if (now - task.last_test >= between_tests) {
    task.last_test = now;
    test_parent();
  }
  if (now - task.last_look < parallel.communication_time) return false;
  task.last_look = now;
  return obey_parent();
}

void run_sets_of_parent(bool between_commands) {
  if (pending.running_sets || (!interrupts.in_search && !between_commands)) return;
  pending.running_sets = true;
  while (!pending.sets.empty()) {
    const std::string text = pending.sets.front();
    pending.sets.erase(pending.sets.begin());
    const jump_context around;
    try {
      run_command_string("set " + text + ";");
    } catch (const command_unwinding&) {
    }
  }
  pending.running_sets = false;
}

}  // namespace zeb
