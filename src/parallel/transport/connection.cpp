#include "parallel/transport/connection.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "console/output.h"
#include "parallel/settings.h"
#include "parallel/transport/gateway_transport.h"
#include "parallel/transport/local_transport.h"
#include "parallel/transport/modules.h"

namespace zeb {
namespace {

struct connection_state {
  std::unique_ptr<transport> in_use;
  std::vector<host_record> hosts;
  int own_host = 0;
  int parent_host = 0;
  bool entered = false;
  bool (*may_wait)(task_id, double) = nullptr;
};
connection_state state;

std::unique_ptr<transport> make_transport(back_end which, std::string* fault) {
  if (which == back_end::pvm) return transport_of_module("zeb_pvm", fault);
  return which == back_end::mpi ? make_gateway_transport(nullptr) : make_local_transport();
}

/// Processes that use MPI look for it there.
void name_host_file() {
  if (parallel.mode != back_end::mpi) return;
  setenv("ZEB_HOSTFILE", parallel.host_file.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
  if (!process.slave && access(parallel.host_file.c_str(), R_OK) != 0)
    emit("P-ZEB: Can't read \"", parallel.host_file,
         "\".\n       Will run in localhost (\"myself\")\n");
}

[[noreturn]] void cannot_enter(const std::string& fault) {
  if (parallel.mode == back_end::pvm) {
    error_end("Can't enter parallel interface (make sure PVM is running): " + fault +
              "\n(\"pzeb local;\" runs tasks on this machine without PVM or MPI)");
  }
  error_end("Can't enter parallel interface: " + fault +
            "\n(install Open MPI, or use \"pzeb local;\" for tasks on this machine)");
}

void take_hosts() {
  state.hosts = state.in_use->hosts();
  state.own_host = state.parent_host = 0;
}

}  // namespace

void wait_by(bool (*may_wait)(task_id task, double seconds)) { state.may_wait = may_wait; }

namespace {

/// Tasks may do no more than their parent. That reaches only those that inherit its environment.
void keep_safe() {
  if (!safe_mode.on) return;
  if (parallel.mode != back_end::local)
    error_end("Jobs over MPI and PVM are forbidden in safe mode (\"pzeb local;\" isn't)");
  setenv("ZEB_SAFE", "1", 1);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace

transport& connection() {
  keep_safe();
  if (!state.in_use) {
    std::string fault;
    state.in_use = make_transport(parallel.mode, &fault);
    if (!state.in_use) cannot_enter(fault);
  }
  if (!state.entered) {
    name_host_file();
    if (!state.in_use->enter(false)) {
      const std::string fault = state.in_use->fault();
      state.in_use.reset();
      cannot_enter(fault);
    }
    state.entered = true;
    state.in_use->wait_by(state.may_wait);
    take_hosts();
  }
  return *state.in_use;
}

void enter_parallel_mode() {
  if (state.entered) return;
  connection();
  emit(text_of("P-ZEB: Entering parallel mode (%i hosts). Mode: %s\n",
               static_cast<int>(state.hosts.size()), back_end_name(parallel.mode)));
}

void require_pvm() {
  if (parallel.mode == back_end::pvm) return;
  error_end_f("Sorry, this command is not available in %s mode", back_end_name(parallel.mode));
}

bool in_parallel_mode() { return state.entered; }

transport* connect_task(int argc, char** argv) {
  const std::string word = argc > 1 ? argv[1] : "";
  std::string fault;
  if (word.starts_with("local_")) {
    parallel.mode = back_end::local;
    state.in_use = make_local_transport(argc > 2 ? argv[2] : "");
  } else if (word.starts_with("mpi_")) {
    parallel.mode = back_end::mpi;
    if (auto above = transport_of_module("zeb_mpi", &fault))
      state.in_use = make_gateway_transport(std::move(above));
  } else {
    parallel.mode = back_end::pvm;
    state.in_use = make_transport(parallel.mode, &fault);
  }
  if (!state.in_use || !state.in_use->enter(true)) return nullptr;
  state.entered = true;
  state.in_use->wait_by(state.may_wait);
  take_hosts();
  return state.in_use.get();
}

void leave_parallel_mode() {
  if (state.in_use) state.in_use->leave();
  state.entered = false;
}

void drop_connection() {
  leave_parallel_mode();
  state.in_use.reset();
  state.hosts.clear();
}

const std::vector<host_record>& hosts_in_use() { return state.hosts; }

int id_of_host(int host) { return host < 0 ? -1 : state.hosts[at(host)].id; }
int own_host() { return state.own_host; }

int host_named(std::string_view name) {
  const auto found = std::ranges::find(state.hosts, name, &host_record::name);
  return found == state.hosts.end() ? 0 : static_cast<int>(found - state.hosts.begin());
}

int parent_host() { return state.parent_host; }

void order_hosts(std::span<const std::string> names, int parent) {
  if (state.hosts.empty()) return;
  const std::string own = state.hosts[at(state.own_host)].name;
  const auto place_of = [names](const host_record& host) {
    return std::ranges::find(names, host.name) - names.begin();
  };
  std::ranges::stable_sort(state.hosts, {}, place_of);
  state.own_host = host_named(own);
  if (state.own_host > 1) {
    std::swap(state.hosts[1], state.hosts[at(state.own_host)]);
    state.own_host = 1;
  }
  if (parent >= 0 && at(parent) < names.size()) state.parent_host = host_named(names[at(parent)]);
}

std::string name_of_this_machine() {
  std::array<char, 256> name{};
  gethostname(name.data(), name.size() - 1);
  return name.data();
}

const char* task_argument() {
  if (parallel.mode == back_end::local) return local_task_argument;
  return parallel.mode == back_end::mpi ? "mpi_slaveproc" : "slaveproc";
}

const char* disk_helper_argument() {
  if (parallel.mode == back_end::local) return "local_slavesettingdata";
  return parallel.mode == back_end::mpi ? "mpi_slavesettingdata" : "slavesettingdata";
}

const char* processor_helper_argument() {
  if (parallel.mode == back_end::local) return "local_just_numprocs";
  return parallel.mode == back_end::mpi ? "mpi_just_numprocs" : "just_numprocs";
}

}  // namespace zeb
