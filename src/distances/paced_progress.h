// Progress and interrupts of work in small steps: looked at a few times a second.
#pragma once

#include <string>

#include "base/process.h"

namespace zeb {

class paced_progress {
 public:
  explicit paced_progress(std::string label) : label_(std::move(label)) {}
  ~paced_progress();
  paced_progress(const paced_progress&) = delete;
  paced_progress& operator=(const paced_progress&) = delete;
  /// Ends the command where the user wants that.
  void poll(double done, double total);

 private:
  std::string label_;
  double last_ = wall_clock();
};

}  // namespace zeb
