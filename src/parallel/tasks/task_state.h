// What a task is, what it was told and what it has come to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/scores.h"
#include "parallel/messages/contents.h"
#include "parallel/transport/transport.h"
#include "search/search_context.h"

namespace zeb {

/// What `return` says is to be sent.
struct return_options {
  bool trees = true;
  bool text = false;
  bool groups = false;
  bool value_given = false;
  double value = 0;
  polytree_wish polytree = polytree_wish::unsaid;
};

/// Of this process where it is a task; written in tasks/ only.
struct task_state {
  transport* link = nullptr;
  int number = 0;                      // among the tasks of its job
  int level = 0;                       // how many parents; 0: this is no task
  std::vector<std::int32_t> parents;   // task numbers of the tasks above it, nearest first
  std::vector<std::int32_t> siblings;  // ids of all tasks of the job
  std::string instructions;
  int timeout = 0;          // seconds within which trees must follow; 0 no limit
  int parent_process = 0;   // of the parent on this machine; 0 elsewhere
  bool is_sector = false;   // its data are a sector of a larger tree
  double score_offset = 0;  // what the whole tree has more than a sector

  int tag = 0;          // set by `tagset`; also outside of tasks
  int wanted_tag = -1;  // commands are skipped up to this one; -1 none
  bool wanted_back = false;
  std::string shown_command;  // what the parent shows for it; empty: the running command

  bool receiving = true;   // data, or new instructions: nothing that could be broken off yet
  bool monitored = false;  // sends its status again and again
  int parents_wait = 0;    // number of the waiting for which it does
  bool paused = false;
  bool waiting = false;       // monitors jobs of its own
  bool returning = false;     // the rest of the instructions is void
  bool at_return = false;     // the instructions are over
  bool failed = false;        // one of them couldn't be carried out
  std::string error;          // and what was said then
  bool without_data = false;  // they couldn't be read whole, and no instructions make sense
  bool dismissed = false;     // the parent waits for the result
  bool result_sent = false;
  int agains = 0;         // new instructions, so often, are on their way
  bool no_waits = false;  // monitors end at once
  bool no_loops = false;  // and loops
  return_options to_return;
  swap_orders swap;  // what is to be done in the place of the instructions

  // Of searches that are over.
  int replications = 0;
  rearrangement_counter rearrangements;
  double best_score = no_score;

  double last_look = 0;  // wall clock, seconds
  double last_test = 0;  // of the parent
  double last_status = 0;
};
extern task_state task;

/// Further instructions come: what was wished of the former ones, and what became of them, is of no
/// concern for these. Signals that follow are for them.
void forget_former_instructions();
void set_task_tag(int tag);
/// What the parent shows as the task's command; empty: what runs.
void show_command_as(const std::string& text);
/// The task monitors jobs of its own, or doesn't any more.
void note_waiting(bool on);
/// A command of the instructions failed, or something else did.
void note_failed_task(const std::string& why);
void forget_failure();

}  // namespace zeb
