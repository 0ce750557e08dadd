// Sets of taxa (or of any numbered things) as bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <span>
#include <vector>

#include "base/indices.h"

namespace zeb {

using set_word = std::uint64_t;
constexpr int taxa_per_word = 64;

/// Words that a set of `n` takes.
constexpr std::size_t set_words(int n) { return (at(n) + taxa_per_word - 1) / taxa_per_word; }

/// A subset of the numbers 0 to size()-1. Members are as many bits of 64-bit words, the lowest
/// first; bits from size() on are 0. Sets that are combined or compared have the same size.
class taxon_set {
 public:
  taxon_set() = default;
  explicit taxon_set(int size) : size_(size), words_(set_words(size)) {}
  taxon_set(int size, std::initializer_list<int> members) : taxon_set(size) {
    for (const int member : members) insert(member);
  }
  /// Of one byte per number: those whose byte isn't 0.
  static taxon_set of_flags(std::span<const std::uint8_t> flags);

  /// One more than the largest number that may be a member.
  int size() const { return size_; }
  bool contains(int number) const { return (words_[word(number)] & bit(number)) != 0; }
  void insert(int number) { words_[word(number)] |= bit(number); }
  void erase(int number) { words_[word(number)] &= ~bit(number); }
  void assign(int number, bool member) { member ? insert(number) : erase(number); }
  void clear() { words_.assign(words_.size(), 0); }
  /// Everything becomes a member.
  void fill();

  /// How many members there are.
  int count() const;
  bool empty() const;
  /// The lowest member from `number` on; -1 where there is none.
  int next(int number) const;
  int first() const { return next(0); }

  taxon_set& operator|=(const taxon_set& other);
  taxon_set& operator&=(const taxon_set& other);
  taxon_set& operator-=(const taxon_set& other);  // takes the other's members out
  friend taxon_set operator|(taxon_set a, const taxon_set& b) { return a |= b; }
  friend taxon_set operator&(taxon_set a, const taxon_set& b) { return a &= b; }
  friend taxon_set operator-(taxon_set a, const taxon_set& b) { return a -= b; }
  /// What isn't a member.
  taxon_set complement() const;
  bool is_subset_of(const taxon_set& other) const;
  bool meets(const taxon_set& other) const;  // a member in common
  bool operator==(const taxon_set&) const = default;

  std::span<const set_word> words() const { return words_; }

  /// Members in ascending order: `for (const int taxon : set)`. The set may not change meanwhile.
  class iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = int;
    using difference_type = std::ptrdiff_t;
    using pointer = const int*;
    using reference = int;
    iterator(const taxon_set& set, int number) : set_(&set), number_(number) {}
    int operator*() const { return number_; }
    iterator& operator++() {
      number_ = set_->next(number_ + 1);
      return *this;
    }
    bool operator==(const iterator& other) const { return number_ == other.number_; }

   private:
    const taxon_set* set_;
    int number_;
  };
  iterator begin() const { return {*this, first()}; }
  iterator end() const { return {*this, -1}; }

 private:
  static std::size_t word(int number) { return at(number) / taxa_per_word; }
  static set_word bit(int number) { return set_word{1} << (at(number) % taxa_per_word); }

  int size_ = 0;
  std::vector<set_word> words_;
};

}  // namespace zeb

/// Equal sets have equal hashes, on every machine.
template <>
struct std::hash<zeb::taxon_set> {
  std::size_t operator()(const zeb::taxon_set& set) const noexcept;
};
