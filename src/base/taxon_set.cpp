#include "base/taxon_set.h"

#include <algorithm>

namespace zeb {

taxon_set taxon_set::of_flags(std::span<const std::uint8_t> flags) {
  taxon_set set(static_cast<int>(flags.size()));
  for (int i = 0; i < set.size(); ++i) {
    if (flags[at(i)]) set.insert(i);
  }
  return set;
}

void taxon_set::fill() {
  words_.assign(words_.size(), ~set_word{0});
  const int rest = size_ % taxa_per_word;
  if (rest != 0) words_.back() = bit(rest) - 1;
}

int taxon_set::count() const {
  int members = 0;
  for (const set_word w : words_) members += std::popcount(w);
  return members;
}

bool taxon_set::empty() const {
  return std::all_of(words_.begin(), words_.end(), [](set_word w) { return w == 0; });
}

int taxon_set::next(int number) const {
  if (number >= size_) return -1;
  std::size_t at_word = word(number);
  set_word rest = words_[at_word] & ~(bit(number) - 1);
  while (rest == 0) {
    if (++at_word == words_.size()) return -1;
    rest = words_[at_word];
  }
  return static_cast<int>(at_word) * taxa_per_word + std::countr_zero(rest);
}

taxon_set& taxon_set::operator|=(const taxon_set& other) {
  for (std::size_t i = 0; i < words_.size(); ++i) words_[i] |= other.words_[i];
  return *this;
}

taxon_set& taxon_set::operator&=(const taxon_set& other) {
  for (std::size_t i = 0; i < words_.size(); ++i) words_[i] &= other.words_[i];
  return *this;
}

taxon_set& taxon_set::operator-=(const taxon_set& other) {
  for (std::size_t i = 0; i < words_.size(); ++i) words_[i] &= ~other.words_[i];
  return *this;
}

taxon_set taxon_set::complement() const {
  taxon_set others(size_);
  others.fill();
  return others -= *this;
}

bool taxon_set::is_subset_of(const taxon_set& other) const {
  for (std::size_t i = 0; i < words_.size(); ++i) {
    if (words_[i] & ~other.words_[i]) return false;
  }
  return true;
}

bool taxon_set::meets(const taxon_set& other) const {
  for (std::size_t i = 0; i < words_.size(); ++i) {
    if (words_[i] & other.words_[i]) return true;
  }
  return false;
}

}  // namespace zeb

std::size_t std::hash<zeb::taxon_set>::operator()(const zeb::taxon_set& set) const noexcept {
  zeb::set_word mixed = static_cast<zeb::set_word>(set.size());
  for (const zeb::set_word w : set.words()) {
    mixed = (mixed ^ w) * 0x9e3779b97f4a7c15ULL;
    mixed ^= mixed >> 32;
  }
  return mixed;
}
