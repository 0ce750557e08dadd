#include "parallel/tasks/task.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/random.h"
#include "console/output.h"
#include "console/settings.h"
#include "console/text_buffer.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/main_loop.h"
#include "language/options.h"
#include "macro/macro_values.h"
#include "matrix/matrix.h"
#include "matrix/settings/sankoff_lock.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/tasks/disk_data.h"
#include "parallel/tasks/helpers.h"
#include "parallel/tasks/instructions.h"
#include "parallel/tasks/parent_signals.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/reports.h"
#include "parallel/tasks/shared_swap.h"
#include "parallel/tasks/task_state.h"
#include "parallel/tasks/tree_loads.h"
#include "parallel/transport/connection.h"
#include "parallel/transport/gateway.h"
#include "search/part_search.h"
#include "search/search_session.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

void say_hello() {
  packet_writer hello;
  hello.put_text(name_of_this_machine());
  hello.put(static_cast<std::int32_t>(getpid()));
  task.link->send(parent_task, tag_hello, hello.bytes());
}

/// Error: nothing comes within so many seconds, where that isn't 0.
arrived_message wait_for(int tag, int longest) {
  constexpr useconds_t between = 20'000;  // microseconds
  const double since = wall_clock();
  for (;;) {
    if (std::optional<arrived_message> message = task.link->receive(parent_task, tag))
      return *std::move(message);
    obey_parent();
    if (longest > 0 && wall_clock() - since > longest) throw damaged_message();
    usleep(between);
  }
}

/// All that a task does begins and ends in a jump context.
void run_text(const std::string& text) {
  restart_level_zero(text);
  go_on_with_main_loop();
  while (!level_zero_ended() && !task.failed && process.ended_by == 0) run_one_round();
}

void prepare(const task_orders& orders) {
  begin_process({}, "Instructions");
  settle_for_background();
  open_places(no_log | no_text_buffer);
  close_places(no_console);
  parallel.communication_time = orders.communication_time;
  task.timeout = orders.timeout;
  parallel.raw_encoding = orders.raw_encoding;
  task.siblings = orders.tasks;
  task.parent_process = orders.host == name_of_this_machine() ? orders.process : 0;
  task.is_sector = orders.is_sector;
  task.instructions = orders.instructions;
  task.swap = orders.swap;
  take_hosts_of_parent(orders.hosts);
  const jump_context around;
  try {
    create_arena(orders.ram);
  } catch (const command_unwinding&) {
  }
}

void take_data(const task_orders& orders) {
  std::string data = orders.data;
  {
    const silence_scope silent;
    run_text("macro=;");  // "return" needs it, whatever becomes of the data
    if (orders.from_disk) data = data_of_disk(orders);
    if (!task.failed) run_text(data + orders.settings);
  }
  if (task.failed || matrix.ntax != orders.taxa || matrix.nchar != orders.characters) {
    task.without_data = true;
    if (data.empty() && orders.from_disk) return emit(task.error, "\n");
    constexpr const char* why = "Error receiving data from master: not enough RAM allocated";
    emit("\n", why, "\n");
    return note_failed_task(why);
  }
  emit(text_of("Received data (%i chars x %i taxa) from parent\n", matrix.nchar, matrix.ntax));
}

void take_packet(const task_packet& packet) {
  task.number = packet.number;
  task.level = packet.level;
  task.parents = packet.parents;
  if (task.failed) return;
  run_text(
      text_of("rseed %i;macseed %i;", std::max(packet.seed, 1), std::max(packet.macro_seed, 1)));
  const int before = store.ntrees;
  const int sent = static_cast<int>(packet.load.trees.size());
  if (sent == 0) return emit("Received no trees from parent\n");
  const int stored = store_trees(packet.load, true, nullptr);
  std::string text = text_of("Received %i trees from parent", stored);
  if (stored < sent) text += text_of(" (out of %i sent)", sent);
  if (before > 0) text += text_of("; %i trees already in buffer", before);
  emit(text, "\n");
}

/// Seeds and trees that follow the data or further instructions.
void await_packet() {
  constexpr const char* missing =
      "Could not receive trees from parent (possible communication error)";
  try {
    const arrived_message message = wait_for(tag_packet, task.timeout);
    take_packet(task_packet::unpacked(packet_reader(message.body)));
  } catch (const damaged_message&) {
    emit(missing, "\n");
    note_failed_task(missing);
  }
}

/// Scores and nodes of the sector are told as those of the whole tree.
void take_place_of_sector(const task_orders& orders) {
  if (store.ntrees > 0) task.score_offset = orders.score_offset - score_of_stored_tree(0);
  track_sector_of_process(
      {{orders.nodes_in_sector.begin(), orders.nodes_in_sector.end()}, orders.taxa_of_tree});
  forbid_changes_of_sankoff();
}

void follow_instructions() {
  task.at_return = task.receiving = false;
  if (task.swap.how != swap_orders::way::none) {
    swap_with_siblings(task.swap);
    task.to_return = {};
    task.at_return = true;
    return;
  }
  begin_instructions(task.instructions);
  while (!task.at_return && interpreter.running && process.ended_by == 0) {
    if (obey_parent() || task.failed || task.returning || !skip_to_wanted_tag()) break;
    run_one_round();
    run_sets_of_parent(true);
  }
  if (process.ended_by != 0) end_process(status_of_orphan);
  if (!task.at_return) run_last_return();
  task.at_return = true;
}

/// Of a task that couldn't take what belongs to them.
void refuse_instructions() {
  task.receiving = task.wanted_back = false;
  task.wanted_tag = -1;
  run_last_return();
  task.at_return = true;
}

void send_result() {
  task.link->send(parent_task, tag_result, result_of_task().packed().bytes());
  task.result_sent = true;
}

void wait_a_while(int round) {
  constexpr useconds_t millisecond = 1000;
  constexpr int quick_rounds = 20;
  constexpr int slower_rounds = 80;
  const int wait = round < quick_rounds ? 100 : round < slower_rounds ? 300 : 1000;
  usleep(static_cast<useconds_t>(wait) * millisecond);
}

/// The parent has the result, or sends new instructions.
void wait_at_return() {
  for (int round = 0; task.agains == 0; ++round) {
    if (task.dismissed && !task.result_sent) send_result();
    obey_parent();
    run_sets_of_parent(true);
    if (task.wanted_tag >= 0 && task.wanted_back) return;
    if (task.agains == 0 && !(task.dismissed && !task.result_sent)) wait_a_while(round);
  }
}

void take_new_instructions() {
  emit("\nStarting to parse new set of instructions...\n");
  --task.agains;
  task.receiving = true;
  const arrived_message orders = wait_for(tag_data, task.timeout);
  packet_reader from(orders.body);
  const bool drop_trees = from.whole() != 0;
  const std::string text = from.text();
  task.swap = swap_orders::taken_from(from);
  if (text.empty()) {
    emit("Previous instructions will be repeated...\n");
  } else {
    emit("Receiving new set of instructions from master...\n");
    task.instructions = text;
  }
  if (drop_trees && matrix.present) set_tree_count(store, 0);
  await_packet();
}

[[noreturn]] void live() {
  constexpr int no_limit = 0;
  const task_orders orders =
      task_orders::unpacked(packet_reader(wait_for(tag_data, no_limit).body));
  prepare(orders);
  take_data(orders);
  await_packet();
  if (task.is_sector && !task.failed) take_place_of_sector(orders);
  for (;;) {
    if (!task.failed) {
      follow_instructions();
    } else {
      refuse_instructions();
    }
    if (task.agains > 0) forget_former_instructions();
    wait_at_return();
    if (task.agains > 0) take_new_instructions();
  }
}

/// Of the parent, for the files that instructions name; stays where it is if there is none here.
void go_to_folder(const char* folder) {
  std::error_code none_here;
  std::filesystem::current_path(folder, none_here);
}

}  // namespace

int run_task(int argc, char** argv) {
  if (argc > 2 && argv[1] == std::string_view(gateway_argument)) run_gateway(std::atoi(argv[2]));
  become_task();
  close_places(no_console);  // of the parent, which MPI would hand it on to
  task.parent_process = argc > 2 ? process_on_this_machine(argv[2]) : 0;
  if (task.parent_process > 0) end_after(task.parent_process);
  if (argc > 3) go_to_folder(argv[3]);
  task.link = connect_task(argc, argv);
  if (!task.link) {
    std::fputs("No parent communicator! \n", stderr);
    return 1;
  }
  const std::string_view mode = argv[1];
  if (mode.ends_with("slavesettingdata")) return write_disk_data();
  if (mode.ends_with("just_numprocs")) return tell_processors();
  say_hello();
  task.level = 1;
  try {
    live();
  } catch (const damaged_message&) {
    std::fputs("zeb: a message of the parent is damaged\n", stderr);
    return status_of_orphan;
  }
}

}  // namespace zeb
