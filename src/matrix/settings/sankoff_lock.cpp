#include "matrix/settings/sankoff_lock.h"

#include "base/errors.h"

namespace zeb {
namespace {

struct sankoff_lock {
  bool closed = false;
};
sankoff_lock lock;

}  // namespace

void forbid_changes_of_sankoff() { lock.closed = true; }

void require_free_sankoff() {
  if (lock.closed)
    error_end("P-ZEB: when running sectors, the sankoff status of the characters cannot change");
}

}  // namespace zeb
