// Named groups of hosts: `pzeb hgroup`.
#pragma once

#include <string_view>
#include <vector>

#include "parallel/messages/contents.h"

namespace zeb {

constexpr int most_host_groups = 32;

bool host_group_defined(int group);
std::string_view host_group_name(int group);
bool in_host_group(int host, int group);

/// Reads definitions, in the form of those of trees, up to and over ";".
void hgroup_keyword();

/// The hosts as this process numbers them, with their groups.
host_table hosts_to_send();
/// A task numbers its hosts as its parent does, and takes the groups over.
void take_hosts_of_parent(const host_table& of_parent);

}  // namespace zeb
