// Processors of all hosts.
#pragma once

namespace zeb {

/// Asks each host by a process of its own. Hosts that don't answer are told and not counted.
double processors_of_hosts();

}  // namespace zeb
