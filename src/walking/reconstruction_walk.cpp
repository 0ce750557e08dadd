#include "walking/reconstruction_walk.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "macro/macro_state.h"

namespace zeb {
namespace {

// 0 to count - 1.
std::int64_t draw_below(std::int64_t count) {
  const auto high = static_cast<std::int64_t>(macros.generator.draw());
  return (high << 31 | macros.generator.draw()) % count;
}

}  // namespace

reconstruction_walk::reconstruction_walk(reconstruction_request request)
    : request_(std::move(request)),
      shape_(request_.tree),
      list_(listed(request_.allowed)),
      values_(shape_.nodes(), -1) {
  if (request_.choice == reconstruction_choice::sample) draw_sample();
  if (request_.choice == reconstruction_choice::settled) reseed();
}

bool reconstruction_walk::next() {
  switch (request_.choice) {
    case reconstruction_choice::all:
      if (!list_.next()) return false;
      take(list_);
      return true;
    case reconstruction_choice::sample:
      if (at(done_) == sample_.size()) return false;
      values_ = sample_[at(done_++)];
      return true;
    case reconstruction_choice::settled:
      if (done_++ >= request_.wanted) return false;
      settle();
      return true;
  }
  return false;
}

reconstruction_list reconstruction_walk::listed(const std::vector<std::uint32_t>& allowed) const {
  return {shape_, request_.character, {.allowed = allowed, .increment = request_.increment}};
}

void reconstruction_walk::take(const reconstruction_list& list) {
  for (int v = 0; v < static_cast<int>(shape_.nodes()); ++v)
    if (shape_.has(v)) values_[at(v)] = list.value(v);
}

// Each new one takes the place of one of the sample with the chance that it has to be in it, so
// that all of them have the same chance in the end.
void reconstruction_walk::draw_sample() {
  const auto wanted = at(request_.wanted);
  for (std::int64_t seen = 0; list_.next(); ++seen) {
    if (seen % 1024 == 1023) check_interrupt();
    if (sample_.size() < wanted) {
      take(list_);
      sample_.push_back(values_);
      continue;
    }
    const auto place = static_cast<std::size_t>(draw_below(seen + 1));
    if (place >= wanted) continue;
    take(list_);
    sample_[place] = values_;
  }
}

// An ambiguous node gets one of its states, both by chance, until none is left.
void reconstruction_walk::settle() {
  std::vector<std::uint32_t> allowed = request_.allowed;
  allowed.resize(shape_.nodes(), 0);
  for (;;) {
    reconstruction_list list = listed(allowed);
    std::vector<int> ambiguous;
    for (const int v : shape_.inner)
      if (list.values_of(v).size() > 1) ambiguous.push_back(v);
    if (ambiguous.empty()) {
      list.next();
      take(list);
      return;
    }
    const int node = ambiguous[at(draw() % static_cast<int>(ambiguous.size()))];
    const std::vector<int>& states = list.values_of(node);
    const int state = states[at(draw() % static_cast<int>(states.size()))];
    allowed[at(node)] = 1U << state;
  }
}

}  // namespace zeb
