#include "parallel/modules/mpi_environment.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {
namespace {

constexpr const char* kept_variables = "ZEB_MPI_VARIABLES";  // names between blanks
constexpr const char* hosts_variable = "OMPI_MCA_orte_default_hostfile";

std::vector<std::string> variables_of_library() {
  std::vector<std::string> names;
  for (char** entry = environ; *entry; ++entry) {
    const std::string_view text = *entry;
    for (const std::string_view head : {"OMPI_", "ORTE_", "PMIX_"})
      if (text.starts_with(head)) names.emplace_back(text.substr(0, text.find('=')));
  }
  return names;
}

/// A task that spawns tasks must not pass on what it was told itself.
void drop_orders_of_spawner(const std::string& kept) {
  for (const std::string& name : variables_of_library())
    if (kept.find(" " + name + " ") == kept.npos) unsetenv(name.c_str());
}

void suggest(const char* name, const std::string& value) { setenv(name, value.c_str(), 0); }

}  // namespace

int seconds_to_join() {
  constexpr int usual = 60;
  const char* const told = std::getenv("ZEB_JOIN_SECONDS");
  return std::max(told ? std::atoi(told) : usual, 1);
}

// More tasks than processors are wanted, a task that dies mustn't take the others along, and
// nobody is to wait for ever for one that dies while it joins. Hosts that the library knows from
// its start get one daemon each; those that are added by a spawn get two, which get into each
// other's way.
void prepare_mpi_environment(bool as_task, const std::string& host_file) {
  if (as_task) return suggest(kept_variables, " ");
  if (const char* const kept = std::getenv(kept_variables)) drop_orders_of_spawner(kept);
  suggest("OMPI_MCA_pmix_base_exchange_timeout", std::to_string(seconds_to_join()));
  suggest("OMPI_MCA_rmaps_base_oversubscribe", "1");
  suggest("OMPI_MCA_orte_enable_recovery", "1");
  suggest("OMPI_MCA_orte_abort_on_non_zero_status", "0");
  suggest("OMPI_MCA_mpi_yield_when_idle", "1");
  const bool has_shell = access("/usr/bin/ssh", X_OK) == 0 || access("/usr/bin/rsh", X_OK) == 0;
  if (const char* const told = std::getenv(hosts_variable); told && access(told, R_OK) != 0)
    unsetenv(hosts_variable);  // its daemon would crash, on another machine than the master's
  if (!host_file.empty()) {
    suggest(hosts_variable, host_file);
  } else if (!has_shell) {
    suggest("OMPI_MCA_plm", "isolated");
  }
  if (getuid() == 0) {
    suggest("OMPI_ALLOW_RUN_AS_ROOT", "1");
    suggest("OMPI_ALLOW_RUN_AS_ROOT_CONFIRM", "1");
  }
  std::string names = " ";
  for (const std::string& name : variables_of_library()) names += name + " ";
  suggest(kept_variables, names);
}

}  // namespace zeb
