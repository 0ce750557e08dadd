// Settings that come back when commands that ran within another command are done.
#pragma once

#include <functional>
#include <vector>

namespace zeb {

using settings_restorer = std::function<void()>;
/// Whoever owns settings registers, at start-up, a function that notes them as they are and returns
/// what puts them back, which can't fail.
void add_settings(settings_restorer (*note)());

/// For a struct of settings that is put back as a whole.
template <auto& state>
settings_restorer noted() {
  return [former = state] { state = former; };
}

/// What commands set while one lives ends with it, also where an error passes through.
class settings_scope {
 public:
  settings_scope();
  ~settings_scope();
  settings_scope(const settings_scope&) = delete;
  settings_scope& operator=(const settings_scope&) = delete;

 private:
  std::vector<settings_restorer> restorers_;
};
/// Does one live?
bool settings_come_back();

}  // namespace zeb
