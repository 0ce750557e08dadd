// Constraints that a search sets itself.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "search/search_context.h"

namespace zeb {

/// As long as it lives, the search keeps the clades that two trees (internal numbering) have in
/// common, besides what the user's constraints ask for.
class auto_constraint {
 public:
  auto_constraint(search_context& context, std::span<const std::int32_t> a,
                  std::span<const std::int32_t> b);
  ~auto_constraint();
  auto_constraint(const auto_constraint&) = delete;
  auto_constraint& operator=(const auto_constraint&) = delete;

 private:
  search_context& context_;
  std::unique_ptr<search_constraints> others_;  // in force before
};

}  // namespace zeb
