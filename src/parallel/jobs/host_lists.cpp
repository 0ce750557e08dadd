#include "parallel/jobs/host_lists.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "base/process.h"
#include "language/lexer.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

int host_named(const std::string& name) {
  const std::vector<host_record>& hosts = hosts_in_use();
  const int own = process.slave && hosts.size() > 1 ? 1 : 0;
  if (name == "myself") return own;
  if (name == "parent" || name == "master") return 0;
  const auto found = std::find_if(hosts.begin(), hosts.end(), [&name](const host_record& h) {
    return is_prefix(name, h.name);
  });
  if (found == hosts.end()) error_end("No host named", name);
  return static_cast<int>(found - hosts.begin());
}

int read_host() {
  double number = 0;
  if (std::isdigit(skip_blanks_peek()) && read_optional_whole(&number)) {
    if (!(number >= 0 && number < static_cast<double>(hosts_in_use().size())))
      error_end_f("No host %g", number);
    return static_cast<int>(number);
  }
  read_name();
  return host_named(std::string(token()));
}

}  // namespace

std::vector<host_share> read_host_list() {
  std::vector<host_share> shares;
  for (int next = skip_blanks_peek(); std::isalnum(next); next = skip_blanks_peek()) {
    host_share share{read_host(), 0};
    if (accept_char('(')) {
      share.tasks = read_int();
      if (share.tasks < 1 || !accept_char(')')) error_end("Must give number of tasks for host");
    }
    shares.push_back(share);
  }
  return shares;
}

}  // namespace zeb
