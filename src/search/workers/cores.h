// How many processors a search may use, and what the workers of the last one used.
//
// A search whose parts are independent (replications, replicates, groups) has them done by workers:
// copies of the process that share its memory as long as nobody writes to it. Each part is a
// function of its seed, and what comes of it is taken in the order of the parts: whatever the
// number of workers, a search finds the same.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// What one worker did and used.
struct worker_record {
  int process = 0;
  int parts = 0;       // whole ones
  double seconds = 0;  // of a processor
  double peak = 0;     // Mbytes, with what it shares with the process
  double own = 0;      // Mbytes that it doesn't share
  bool lost = false;   // it ended before its time
};

struct cores_state {
  int wanted = 1;                      // set by `cores`
  bool dividing = false;               // a search has workers now
  std::string command;                 // the last one whose parts were divided; empty: none
  double begun = 0;                    // that command; wall clock, seconds
  std::vector<worker_record> workers;  // of that command
};
extern cores_state cores;  // written by the functions below

constexpr int most_cores = 1024;

void set_cores(int number);
/// Processors that this process may run on.
int processors_here();
/// Workers for so many parts; 0: the parts are done in turn. Workers and tasks have none of their
/// own, nor has a search within one that is divided.
int workers_for(int parts);
/// A search has workers, or has none any more.
void note_division(bool dividing);
/// The running command had these workers, besides others before them.
void note_workers(const std::vector<worker_record>& workers);

}  // namespace zeb
