#include "parallel/hosts/host_groups.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/group_definition.h"
#include "language/lexer.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

constexpr int most_grouped_hosts = 1000;

struct host_group_state {
  std::array<std::uint32_t, most_grouped_hosts> members{};  // a bit for each group
  std::uint32_t defined = 0;
  std::array<std::string, most_host_groups> names;  // empty: the usual one
};
host_group_state groups;

void define(int group, std::string_view name) {
  groups.defined |= 1U << group;
  if (!name.empty() || groups.names[at(group)].empty())
    groups.names[at(group)] = name.empty() ? text_of("Group_%i", group) : std::string(name);
}

void set_member(int host, int group, bool member) {
  std::uint32_t& bits = groups.members[at(host)];
  bits = member ? bits | 1U << group : bits & ~(1U << group);
}

void undefine(int group) {
  for (int host = 0; host < most_grouped_hosts; ++host) set_member(host, group, false);
  groups.defined &= ~(1U << group);
  groups.names[at(group)].clear();
}

}  // namespace

bool host_group_defined(int group) { return (groups.defined >> group & 1U) != 0; }

std::string_view host_group_name(int group) { return groups.names[at(group)]; }

bool in_host_group(int host, int group) {
  return host < most_grouped_hosts && (groups.members[at(host)] >> group & 1U) != 0;
}

void hgroup_keyword() {
  const int hosts = static_cast<int>(hosts_in_use().size());
  if (hosts > most_grouped_hosts)
    emit(text_of("Groups can be defined for up to %i hosts;\n", most_grouped_hosts));
  define_groups({.element_kind = "host",
                 .command = "pzeb hgroup",
                 .limit = most_host_groups,
                 .elements = std::min(hosts, most_grouped_hosts),
                 .defined = host_group_defined,
                 .name = host_group_name,
                 .in_group = in_host_group,
                 .define = define,
                 .undefine = undefine,
                 .set_member = set_member,
                 .label = [](int host) { return hosts_in_use()[at(host)].name; }});
  expect_end();
}

host_table hosts_to_send() {
  host_table table;
  table.sender = own_host();
  const std::vector<host_record>& hosts = hosts_in_use();
  for (const host_record& host : hosts)
    if (table.names.size() < at(most_grouped_hosts)) table.names.push_back(host.name);
  for (int group = 0; group < most_host_groups; ++group) {
    if (!host_group_defined(group)) continue;
    host_group_text text{group, groups.names[at(group)], {}};
    for (std::size_t h = 0; h < table.names.size(); ++h)
      if (in_host_group(static_cast<int>(h), group)) text.hosts.push_back(static_cast<int>(h));
    table.groups.push_back(std::move(text));
  }
  return table;
}

void take_hosts_of_parent(const host_table& of_parent) {
  order_hosts(of_parent.names, of_parent.sender);
  const std::vector<host_record>& hosts = hosts_in_use();
  for (const host_group_text& group : of_parent.groups) {
    if (group.number < 0 || group.number >= most_host_groups) continue;
    define(group.number, group.name);
    for (const std::int32_t host : group.hosts) {
      if (host < 0 || at(host) >= of_parent.names.size()) continue;
      for (std::size_t h = 0; h < std::min(hosts.size(), at(most_grouped_hosts)); ++h)
        if (hosts[h].name == of_parent.names[at(host)])
          set_member(static_cast<int>(h), group.number, true);
    }
  }
}

}  // namespace zeb
