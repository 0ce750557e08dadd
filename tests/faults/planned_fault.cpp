#include "planned_fault.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "allocations.h"

namespace {

// Made of what needs no memory: allocations ask it, from the first one of the program on.
struct fault_plan {
  bool counting = false;
  bool goes_on = false;  // a short write has been, and the next one fails
  int left = 0;          // calls up to the one that goes wrong
};
fault_plan fault;

std::string_view part_of_plan(int number) {
  const char* const text = std::getenv("ZEB_FAULT");
  std::string_view plan = text ? text : "";
  for (; number > 0; --number) {
    const std::size_t colon = plan.find(':');
    plan.remove_prefix(colon == plan.npos ? plan.size() : colon + 1);
  }
  return plan.substr(0, plan.find(':'));
}

void note_fault() {
  const char* const mark = std::getenv("ZEB_FAULT_MARK");
  if (mark) close(open(mark, O_CREAT | O_WRONLY, 0600));
}

}  // namespace

bool is_fault_signal(std::string_view name) {
  const bool begins = name.ends_with("begin.faults");
  if (!begins && !name.ends_with("end.faults")) return false;
  const std::string_view kind = part_of_plan(0);
  const int number = std::atoi(part_of_plan(1).data());  // ends at the colon
  fault = {begins, false, number};
  if (kind == "new") plan_failing_allocation(begins ? number : 0, part_of_plan(2) == "full");
  if (kind == "arena") plan_failing_arena(begins ? number : 0);
  return true;
}

bool fault_comes(std::string_view kind) {
  const std::string_view planned = part_of_plan(0);
  if (!fault.counting || fault.left <= 0 || (planned != "any" && planned != kind)) return false;
  if (--fault.left > 0) return false;
  note_fault();
  if (part_of_plan(2) == "kill") raise(SIGKILL);
  errno = kind == "write" ? ENOSPC : EIO;
  return true;
}

void note_failed_allocation() { note_fault(); }

bool is_short_write() {
  fault.goes_on = part_of_plan(2) == "short";
  return fault.goes_on;
}

bool write_fails_now() {
  errno = ENOSPC;
  return std::exchange(fault.goes_on, false);
}
