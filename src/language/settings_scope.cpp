#include "language/settings_scope.h"

namespace zeb {
namespace {

struct settings_records {
  std::vector<settings_restorer (*)()> notes;
  int scopes = 0;  // that live
};
settings_records records;

}  // namespace

void add_settings(settings_restorer (*note)()) { records.notes.push_back(note); }

settings_scope::settings_scope() {
  for (const auto note : records.notes) restorers_.push_back(note());
  ++records.scopes;
}

settings_scope::~settings_scope() {
  --records.scopes;
  for (const settings_restorer& restore : restorers_) restore();
}

bool settings_come_back() { return records.scopes > 0; }

}  // namespace zeb
