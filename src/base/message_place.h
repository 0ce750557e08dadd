// Where within a long text an error happened, for messages.
#pragma once

#include <functional>
#include <string>

namespace zeb {

/// What stands after each error message; written by the scopes below.
struct message_place_state {
  std::function<std::string()> text;  // empty: nothing
};
extern message_place_state message_place;

/// While one of these exists, error messages end with what it returns when they are told. One at a
/// time.
class message_place_scope {
 public:
  explicit message_place_scope(std::function<std::string()> text) {
    message_place.text = std::move(text);
  }
  ~message_place_scope() { message_place.text = nullptr; }
  message_place_scope(const message_place_scope&) = delete;
  message_place_scope& operator=(const message_place_scope&) = delete;
};

}  // namespace zeb
