// A job begins: tasks are started, and get data, trees and instructions.
#pragma once

#include <string>
#include <vector>

#include "parallel/hosts/host_lists.h"
#include "parallel/jobs/job_table.h"
#include "parallel/jobs/tree_selections.h"

namespace zeb {

/// What `begin` asks for.
struct job_request {
  std::string name;
  int tasks = 0;                  // 0: not told
  std::vector<host_share> hosts;  // empty: not told
  double ram = 0;                 // MB; 0 as the parent has
  tree_choice trees;
  bool from_disk = false;
  job_kind kind = job_kind::whole_trees;
  std::vector<sector_place> sectors;       // by task
  std::vector<task_orders> sector_orders;  // data of each
  int parts = 0;
  bool partial = false;
  swap_orders::way swap = swap_orders::way::none;
  int swapped_tree = 0;
  std::string instructions;
};

/// Starts the job and tells so, also in `exstatus`. Returns its slot. Errors: no task could be
/// started.
int spawn_job(job_request request);

/// Orders for a job of whole data.
task_orders orders_of_session();
/// Seeds, number and trees of one task.
task_packet packet_of_task(int number, const std::vector<int>& trees, bool with_groups);

/// The trees that each of `tasks` tasks gets; see `trees_of_tasks`.
std::vector<std::vector<int>> trees_for(const job_request& request, int tasks, bool again);
/// Orders to these tasks, of all those of the job, for swapping one tree.
swap_orders swap_orders_for(swap_orders::way how, const std::vector<int>& tasks,
                            const std::vector<task_record>& all);

}  // namespace zeb
