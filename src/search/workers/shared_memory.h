// Memory that a process and its copies write to together.
#pragma once

#include <cstddef>

namespace zeb {

/// Zeroed pages, shared by the processes forked while it lives. They are taken only when they are
/// touched.
class shared_memory {
 public:
  /// Errors: the system refuses it.
  explicit shared_memory(std::size_t bytes);
  ~shared_memory();
  shared_memory(const shared_memory&) = delete;
  shared_memory& operator=(const shared_memory&) = delete;

  /// Of a type whose zeroed bytes are a value.
  template <class type>
  type* as() const {
    return static_cast<type*>(start_);
  }

 private:
  void* start_;
  std::size_t bytes_;
};

}  // namespace zeb
