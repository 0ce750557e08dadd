// The jobs of this process: named groups of tasks, and what is known of each.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/scores.h"
#include "parallel/messages/contents.h"
#include "parallel/messages/tags.h"
#include "parallel/transport/transport.h"

namespace zeb {

constexpr int most_jobs = 32;
constexpr int most_tasks = 1000;  // of a job
constexpr std::size_t longest_job_name = 31;

/// What the tasks of a job work on.
enum class job_kind { whole_trees, random_sectors, exclusive_sectors, one_sector };

/// Where a sector lies in its tree.
struct sector_place {
  std::vector<tree_node> tree;          // the whole tree, as it was
  int top = 0;                          // node of that tree above which the rest lies
  std::vector<std::int32_t> terminals;  // nodes of that tree, for terminals 1, 2... of the sector;
                                        // terminal 0 is the rest
  std::vector<tree_node> reduced_tree;  // the sector as it was
  int taxa = 0;                         // of the reduced data
  double score_at_start = 0;            // of the whole tree
};

struct task_record {
  task_id id = any_task;
  int host = 0;     // index among the hosts
  int process = 0;  // its process number; 0 not known yet
  std::string host_name;
  bool answer_due = false;  // it was asked whether it lives
  double asked = 0;         // when that was: wall clock, seconds
  int owed_tag = 0;         // of an answer that it didn't give in time; 0 none
  bool gone = false;        // it died, or was killed
  bool collected = false;
  bool again = false;                 // it works on further instructions
  std::optional<task_status> status;  // the last one that it told
  std::optional<double> value;        // what it returned
};

struct job_record {
  bool active = false;
  std::string name;
  int taxa = 0;
  std::vector<task_record> tasks;
  int hosts = 0;
  bool paused = false;
  double score_at_start = no_score;  // swapping: of the tree
  int sequence = 0;                  // in order of start, from 1
  double started = 0;                // wall clock, seconds
  job_kind kind = job_kind::whole_trees;
  bool partial = false;               // only some of the exclusive sectors
  int parts = 0;                      // exclusive sectors that make up the tree
  std::vector<sector_place> sectors;  // by task
};

/// The slot of a job, 0 to `most_jobs` - 1.
job_record& job_at(int slot);
int active_jobs();
/// The first free slot. Error: all are taken.
int free_job_slot();
/// An active job of that name or number; -1 none.
int find_job(std::string_view name);
void forget_job(int slot);
/// Slots of active jobs in order of their start.
std::vector<int> jobs_in_order();

/// Reads a list of jobs, all active ones without a list. Errors: no job runs, no such job.
std::vector<int> read_jobs();
/// A name up to a blank or to one of "/=;]".
std::string read_job_name();
/// Reads a job by name, number or value; with `also_past` one that is over and not forgotten, too.
int read_job(bool also_past = false);
/// Jobs become a kind of list.
void register_job_lists();

/// Sends a signal to a task, with what belongs to it. A task that can't be reached is gone.
void send_signal(task_record& to, const packet_writer& message);
void send_signal(task_record& to, int code);
void send_signal(job_record& to, int code);

}  // namespace zeb
