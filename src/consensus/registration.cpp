#include "consensus/registration.h"

#include <string>
#include <vector>

#include "consensus/selection.h"
#include "language/methods.h"
#include "language/settings_scope.h"

namespace zeb {
namespace {

std::vector<std::string> settings_as_commands() {
  const consensus_settings standard;
  std::vector<std::string> lines;
  if (consensus.majority_cut != standard.majority_cut)
    lines.push_back("majority =" + std::to_string(consensus.majority_cut));
  if (consensus.freqdif_cut != standard.freqdif_cut)
    lines.push_back("freqdifs =" + std::to_string(consensus.freqdif_cut));
  if (consensus.low_memory_always) lines.emplace_back("nelsen <");
  return lines;
}

}  // namespace

void register_consensus() {
  add_settings(noted<consensus>);
  add_methods(methods_part::session, settings_as_commands);
}

}  // namespace zeb
