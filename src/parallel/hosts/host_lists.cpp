#include "parallel/hosts/host_lists.h"

#include <cctype>
#include <cstdint>
#include <string_view>

#include "base/errors.h"
#include "base/indices.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "parallel/hosts/host_groups.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

int count_of_hosts() { return static_cast<int>(hosts_in_use().size()); }

int host_of_word(std::string_view word) {
  if (word == "myself") return own_host();
  if (word == "parent") return parent_host();
  return word == "master" ? 0 : -1;
}

}  // namespace

std::vector<host_share> read_host_list() {
  const int count = count_of_hosts();
  std::vector<std::uint8_t> marks(at(count), 0);
  list_reader items(list_ends_at_signs | list_slash_ends, 0, count, find_list_kind("host"), marks);
  std::vector<host_share> shares;
  for (int next = skip_blanks_peek();
       std::isalnum(next) || next == '{' || next == '.' || next == ':'; next = skip_blanks_peek()) {
    marks.assign(marks.size(), 0);
    items.read_item_at(next);
    int tasks = 0;
    if (accept_char('(')) {
      tasks = read_int();
      if (tasks < 1 || !accept_char(')')) error_end("Must give number of tasks for host");
    }
    for (int host = 0; host < count; ++host)
      if (marks[at(host)]) shares.push_back({host, tasks});
  }
  return shares;
}

std::vector<int> usual_hosts() {
  std::vector<int> hosts;
  for (int host = 0; host < count_of_hosts(); ++host)
    if (host != own_host() && host != parent_host()) hosts.push_back(host);
  if (hosts.empty()) hosts.push_back(own_host());
  return hosts;
}

void register_host_lists() {
  register_list_kind(
      {.noun = "host",
       .count = count_of_hosts,
       .name = [](int host) { return std::string_view(hosts_in_use()[at(host)].name); },
       .group_count = [] { return most_host_groups; },
       .group_name = host_group_name,
       .group_defined = host_group_defined,
       .in_group = in_host_group,
       .special_word = host_of_word});
}

}  // namespace zeb
