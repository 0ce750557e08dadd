// Tasks over PVM. A module of its own, loaded when it is needed, so that the program starts without
// the library. It calls nothing of the program.
#include <cstdio>

#include <pvm3.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "parallel/transport/transport.h"

namespace zeb {
namespace {

std::string path_of_program() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
  return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

class pvm_transport : public transport {
 public:
  bool enter(bool as_task) override;
  std::string fault() const override { return fault_; }
  std::vector<host_record> hosts() override;
  std::vector<task_id> spawn(const spawn_request& request) override;
  task_id sibling(int index, std::span<const std::int32_t> ids) override {
    return ids[static_cast<std::size_t>(index)];
  }
  bool send(task_id to, int tag, std::span<const std::byte> body) override;
  std::optional<arrived_message> receive(task_id from, int tag) override;
  bool is_alive(task_id task) override { return pvm_pstat(number_of(task)) == PvmOk; }
  void kill(task_id task) override { pvm_sendsig(number_of(task), SIGKILL); }
  void forget(std::span<const task_id>) override {}
  void leave() override { pvm_exit(); }
  void wait_by(bool (*)(task_id, double)) override {}  // its daemon takes all

 private:
  int number_of(task_id task) const { return task == parent_task ? parent_ : task; }

  int parent_ = 0;
  std::vector<host_record> hosts_;
  std::string fault_;
};

bool pvm_transport::enter(bool as_task) {
  setenv("PVM_ALLOW_ROOT", "1", 0);
  pvm_setopt(PvmAutoErr, 0);
  const int own = pvm_mytid();
  if (own < 0) {
    fault_ = "no daemon answers";
    return false;
  }
  if (!as_task) return true;
  parent_ = pvm_parent();
  if (parent_ < 0) fault_ = "there is no parent";
  return parent_ >= 0;
}

std::vector<host_record> pvm_transport::hosts() {
  int count = 0;
  pvmhostinfo* list = nullptr;
  hosts_.clear();
  if (pvm_config(&count, nullptr, &list) < 0) return hosts_;
  const int own = pvm_tidtohost(pvm_mytid());
  for (int i = 0; i < count; ++i) {
    host_record host{list[i].hi_tid, list[i].hi_name, list[i].hi_arch, list[i].hi_speed};
    hosts_.insert(host.id == own ? hosts_.begin() : hosts_.end(), host);
  }
  return hosts_;
}

/// One call for each host; without one, the daemon chooses.
std::vector<task_id> pvm_transport::spawn(const spawn_request& request) {
  std::string argument = request.argument;
  std::string parent = request.parent;
  // The daemon starts tasks in a folder of its own.
  std::error_code unknown;
  std::string folder = std::filesystem::current_path(unknown).string();
  std::array<char*, 4> arguments = {argument.data(), parent.data(), folder.data(), nullptr};
  std::string program = path_of_program();
  std::string where;
  for (const host_record& host : hosts_)
    if (host.id == request.host_id) where = host.name;
  std::vector<int> tids(static_cast<std::size_t>(request.count), -1);
  pvm_catchout(request.keep_errors ? stderr : nullptr);
  const int started =
      pvm_spawn(program.data(), arguments.data(), where.empty() ? PvmTaskDefault : PvmTaskHost,
                where.data(), request.count, tids.data());
  if (started < request.count) {
    const int code = tids[static_cast<std::size_t>(std::max(started, 0))];
    const std::string name = where.empty() ? "any" : where;
    if (code == PvmNoFile) {
      fault_ = "ZEB is not found on host \"" + name + "\"";
    } else if (code == PvmNoHost || code == PvmSysErr) {
      fault_ = "PVM daemon not responding in host \"" + name + "\"";
    } else {
      fault_ = "host \"" + name + "\" may be out of memory or resources";
    }
  }
  tids.resize(static_cast<std::size_t>(std::max(started, 0)));
  return tids;
}

bool pvm_transport::send(task_id to, int tag, std::span<const std::byte> body) {
  if (body.size() > INT_MAX || pvm_initsend(PvmDataRaw) < 0) return false;
  auto* const bytes = const_cast<char*>(reinterpret_cast<const char*>(body.data()));
  int length = static_cast<int>(body.size());
  if (pvm_pkint(&length, 1, 1) < 0) return false;
  if (length > 0 && pvm_pkbyte(bytes, length, 1) < 0) return false;
  return pvm_send(number_of(to), tag) >= 0;
}

std::optional<arrived_message> pvm_transport::receive(task_id from, int tag) {
  const int buffer = pvm_nrecv(from == any_task ? -1 : number_of(from), tag);
  if (buffer <= 0) return std::nullopt;
  int bytes = 0;
  arrived_message message;
  if (pvm_bufinfo(buffer, &bytes, &message.tag, &message.from) < 0) return std::nullopt;
  if (message.from == parent_) message.from = parent_task;
  int length = 0;
  if (pvm_upkint(&length, 1, 1) < 0 || length < 0 || length > bytes) return std::nullopt;
  message.body.resize(static_cast<std::size_t>(length));
  if (length > 0 && pvm_upkbyte(reinterpret_cast<char*>(message.body.data()), length, 1) < 0)
    return std::nullopt;
  return message;
}

}  // namespace
}  // namespace zeb

// What a module defines: a transport, for good.
extern "C" zeb::transport* zeb_make_transport();
extern "C" zeb::transport* zeb_make_transport() { return new zeb::pvm_transport(); }
