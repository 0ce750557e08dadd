// The transport in use: loaded and entered at the first need.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "parallel/transport/transport.h"

namespace zeb {

/// The transport of the back end that is set, entered. Error: it can't be.
transport& connection();
/// The same at the need of a user, who is told when it is entered.
void enter_parallel_mode();
/// Error: the command needs what only PVM can do.
void require_pvm();
/// How transports learn whether they may wait for a task, which has taken nothing for so long.
void wait_by(bool (*may_wait)(task_id task, double seconds));
/// Has it been entered?
bool in_parallel_mode();
/// A task takes up the transport by which it was started, with the words of its call. Null: it
/// can't be reached.
transport* connect_task(int argc, char** argv);
/// Forgets the transport; the next need enters it again.
void leave_parallel_mode();

/// The same, so that another one can be taken.
void drop_connection();

/// The hosts, that of the master first; in a task on another one, its own has the number 1.
const std::vector<host_record>& hosts_in_use();
/// For transports; -1 for host -1.
int id_of_host(int host);
int own_host();
/// 0 where that name isn't known.
int host_named(std::string_view name);
/// Of the process that started this one; of this one where nobody did.
int parent_host();
/// A task numbers its hosts as its parent does, which is on host `parent` of these names.
void order_hosts(std::span<const std::string> names, int parent);

/// As its own network calls it.
std::string name_of_this_machine();

/// What the first argument of tasks is.
const char* task_argument();
/// And of helpers.
const char* disk_helper_argument();
const char* processor_helper_argument();

}  // namespace zeb
