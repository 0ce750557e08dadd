// `pzeb setdata`: the data in a file of each host, for tasks that read them from there.
#include "parallel/jobs/disk_keyword.h"

#include <unistd.h>

#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/packet.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "parallel/hosts/host_lists.h"
#include "parallel/jobs/liveness.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/tasks/disk_data.h"
#include "parallel/tasks/parent_watch.h"
#include "parallel/tasks/session_text.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

/// False: the file of that host couldn't be written, and that is told.
bool is_written(int host, const std::string& problem) {
  if (!problem.empty())
    emit(text_of("Problems creating disk file...%s, %s\n", hosts_in_use()[at(host)].name.c_str(),
                 problem.c_str()));
  return problem.empty();
}

bool is_written(int host, packet_reader reply) {
  const bool written = reply.whole() != 0;
  return is_written(host, reply.text()) && written;
}

/// The helper of one host writes the file. False: it couldn't.
bool write_on_host(int host, const std::string& directory, const std::string& text) {
  // Over MPI a helper for this machine might start on another one.
  if (parallel.mode == back_end::mpi && host == own_host())
    return is_written(host, write_disk_file(directory, text));
  constexpr useconds_t between = 20'000;  // microseconds
  transport& link = connection();
  const std::vector<task_id> helper = link.spawn({.count = 1,
                                                  .host_id = id_of_host(host),
                                                  .argument = disk_helper_argument(),
                                                  .parent = address_of_this_process()});
  if (helper.empty()) return false;
  packet_writer message;
  message.put_text(directory);
  message.put_text(text);
  bool written = false;
  if (link.send(helper[0], tag_disk_data, message.bytes())) {
    std::optional<arrived_message> reply;
    const double since = wall_clock();
    while (!(reply = link.receive(helper[0], tag_disk_reply)) && link.is_alive(helper[0]) &&
           wall_clock() - since < longest_silence()) {
      check_interrupt();
      usleep(between);
    }
    if (!reply) reply = link.receive(helper[0], tag_disk_reply);
    try {
      written = reply && is_written(host, packet_reader(reply->body));
    } catch (const damaged_message&) {
    }
    packet_writer over;
    over.put(signal_collect);
    link.send(helper[0], tag_signal, over.bytes());
  }
  link.forget(helper);
  return written;
}

/// "/folder" or, also for one within the working directory, "[folder]".
std::string read_directory() {
  if (!accept_char('[')) return std::string(read_file_name() > 0 ? token() : std::string_view());
  std::string name;
  for (int c = next_nonblank(); c != ']'; c = read_char()) {
    if (c == ';' || input_ended()) error_end("Expected ']' after the name of the folder");
    name += static_cast<char>(c);
  }
  return name;
}

}  // namespace

void setdata_keyword() {
  if (accept_char('=')) {
    const bool given = read_file_name() > 0;
    set_disk_directory(given ? std::string(token()) : std::string());
    expect_end();
    if (given)
      return emitf("P-ZEB: setting disk data directory as %s", parallel.disk_directory.c_str());
    return report_line("P-ZEB: setting disk data directory as default");
  }
  require_data("setting disk data");
  enter_parallel_mode();
  const std::vector<host_share> hosts = read_host_list();
  if (hosts.empty()) error_end("P-ZEB: no hosts in list for disk data setting");
  const std::string directory = read_directory();
  expect_end();
  const std::string text =
      disk_data_text(matrix.nchar, matrix.ntax, matrix.cell_bytes, data_as_commands());
  bool all = true;
  for (const host_share& host : hosts) all = write_on_host(host.host, directory, text) && all;
  report_line(all ? "P-ZEB: disk data in hosts set"
                  : "P-ZEB: can't set disk data in some slave(s)");
}

}  // namespace zeb
