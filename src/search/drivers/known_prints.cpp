#include "search/drivers/known_prints.h"

#include <array>

namespace zeb {

constexpr int most_prints = 100'000;

struct known_prints::page {
  std::atomic<int> count;
  std::array<std::atomic<std::uint64_t>, most_prints> prints;
};

known_prints::known_prints() : shared_(sizeof(page)), page_(shared_.as<page>()) {}

void known_prints::add(std::uint64_t print) {
  const int count = page_->count;
  if (count >= most_prints) return;
  page_->prints[static_cast<std::size_t>(count)] = print;
  page_->count = count + 1;
}

bool known_prints::has(std::uint64_t print) const {
  const int count = page_->count;
  for (int i = 0; i < count; ++i)
    if (page_->prints[static_cast<std::size_t>(i)] == print) return true;
  return false;
}

}  // namespace zeb
