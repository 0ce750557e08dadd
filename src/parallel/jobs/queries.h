// Questions to tasks, and their answers.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "parallel/jobs/job_table.h"

namespace zeb {

/// The stage of a task that doesn't answer.
constexpr int stage_unknown = -1;

/// Sends a question that is answered by a message of that tag.
void ask_task(task_record& which, const packet_writer& question, int tag);
/// Waits for that. None: the task is gone, or doesn't answer in time; then it isn't asked again
/// before it has.
std::optional<arrived_message> answer_of(task_record& which, int tag);
/// The same, for the queries that have a number.
void ask_task(task_record& which, int query);
std::optional<arrived_message> answer_of_query(task_record& which, int query);
/// What it returned, or would if it were collected now; none: there is no value, or no answer.
std::optional<double> value_of_task(task_record& which);
/// What tasks tell of themselves: their last status while that is kept up, else by asking all of
/// them at once.
std::vector<task_status> statuses_of_tasks(std::span<task_record* const> tasks);

}  // namespace zeb
