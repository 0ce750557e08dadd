#include "distances/supertrees/block_splitting.h"

#include <algorithm>
#include <numeric>

#include "base/indices.h"

namespace zeb {
namespace {

class block_splitter {
 public:
  block_splitter(int taxa, const std::function<int(int, int, int)>& strength)
      : taxa_(taxa), strength_(strength), ties_(at(taxa) * at(taxa), 0) {
    for (int a = 0; a < taxa_; ++a)
      for (int b = a + 1; b < taxa_; ++b)
        for (int c = 0; c < taxa_; ++c)
          if (c != a && c != b) tie(a, b) += strength_(a, b, c);
  }

  split_blocks run() {
    std::vector<int> all(at(taxa_));
    std::iota(all.begin(), all.end(), 0);
    std::vector<std::vector<int>> waiting{all};
    while (!waiting.empty()) {
      const std::vector<int> block = std::move(waiting.back());
      waiting.pop_back();
      if (block.size() < 3) continue;
      for (std::vector<int>& part : parts_of(block)) {
        if (part.size() < 2) continue;
        taxon_set group(taxa_);
        for (const int t : part) group.insert(t);
        out_.groups.push_back(std::move(group));
        leave_out(block, part);
        waiting.push_back(std::move(part));
      }
    }
    return std::move(out_);
  }

 private:
  long& tie(int a, int b) { return ties_[at(a) * at(taxa_) + at(b)]; }

  /// From here on, what is in the block but not in its part says nothing.
  void leave_out(const std::vector<int>& block, const std::vector<int>& part) {
    std::vector<int> outside;
    std::ranges::set_difference(block, part, std::back_inserter(outside));
    for (std::size_t i = 0; i < part.size(); ++i)
      for (std::size_t j = i + 1; j < part.size(); ++j) {
        long& t = tie(part[i], part[j]);
        if (t == 0) continue;
        for (const int c : outside) t -= strength_(part[i], part[j], c);
      }
  }

  /// The parts that hang together by ties, each increasing; two where all of the block does.
  std::vector<std::vector<int>> parts_of(const std::vector<int>& block) {
    std::vector<std::vector<int>> parts = joined(block, 1);
    if (parts.size() > 1) return parts;
    if (!out_.stuck || static_cast<int>(block.size()) < out_.conflict.count()) {
      out_.conflict = taxon_set(taxa_);
      for (const int t : block) out_.conflict.insert(t);
    }
    out_.stuck = true;
    return joined(block, weakest_link(block) + 1);
  }

  std::vector<std::vector<int>> joined(const std::vector<int>& block, long least) {
    std::vector<std::vector<int>> parts;
    std::vector<char> met(block.size(), 0);
    for (std::size_t first = 0; first < block.size(); ++first) {
      if (met[first]) continue;
      std::vector<std::size_t> part{first};
      met[first] = 1;
      for (std::size_t i = 0; i < part.size(); ++i)
        for (std::size_t j = 0; j < block.size(); ++j) {
          if (met[j] || tie_between(block[part[i]], block[j]) < least) continue;
          met[j] = 1;
          part.push_back(j);
        }
      std::ranges::sort(part);
      std::vector<int> members;
      for (const std::size_t i : part) members.push_back(block[i]);
      parts.push_back(std::move(members));
    }
    return parts;
  }
  long tie_between(int a, int b) { return tie(std::min(a, b), std::max(a, b)); }

  /// The weakest of the ties that hold the block together where stronger ones are taken first.
  long weakest_link(const std::vector<int>& block) {
    std::vector<long> strongest(block.size(), -1);
    std::vector<char> in(block.size(), 0);
    long weakest = -1;
    std::size_t now = 0;
    for (std::size_t count = 1; count < block.size(); ++count) {
      in[now] = 1;
      std::size_t next = now;
      for (std::size_t i = 0; i < block.size(); ++i) {
        if (in[i]) continue;
        strongest[i] = std::max(strongest[i], tie_between(block[now], block[i]));
        if (in[next] || strongest[i] > strongest[next]) next = i;
      }
      now = next;
      if (weakest < 0 || strongest[now] < weakest) weakest = strongest[now];
    }
    return weakest;
  }

  int taxa_;
  const std::function<int(int, int, int)>& strength_;
  std::vector<long> ties_;  // a < b: by a, then b
  split_blocks out_;
};

}  // namespace

split_blocks split_by_triplets(int taxa, const std::function<int(int, int, int)>& strength) {
  return block_splitter(taxa, strength).run();
}

}  // namespace zeb
