#include "zeltbraidwerk/pauli/search/internal/reach.h"

#include <algorithm>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
Reach::Reach(const BitGraph& graph)
    : words_(words_for(graph.size())),
      neighbours_(static_cast<std::size_t>(graph.size())),
      known_(reach_tuning.least_slots),
      distance_(neighbours_.size()),
      region_(neighbours_.size()) {
  for (int q = 0; q < graph.size(); ++q) {
    for_each_bit(graph.row(q), graph.words(),
                 [&](int v) { neighbours_[static_cast<std::size_t>(q)].push_back(v); });
  }
}

std::uint64_t Reach::key_of(const Word* wires) const {
  std::uint64_t key = 0;
  for (int w = 0; w < words_; ++w) key = Rng::mixed(key) ^ wires[w];
  return key;
}

std::size_t Reach::slot_of(std::uint64_t key) const {
  const std::size_t mask = known_.size() - 1;
  std::size_t slot = Rng::mixed(key) & mask;
  while (known_[slot].key != key && known_[slot].key != 0) slot = (slot + 1) & mask;
  return slot;
}

int Reach::operator()(const Word* wires) {
  const std::uint64_t key = key_of(wires);
  if (key == 0) return 0;
  std::size_t slot = slot_of(key);
  if (known_[slot].key == 0) {
    if (2 * ++count_ > known_.size()) {  // all is forgotten, what is needed will soon be back
      known_.assign(std::min(reach_tuning.growth * known_.size(), reach_tuning.most_slots), {});
      count_ = 1;
      slot = slot_of(key);
    }
    known_[slot] = {key, compute(wires)};
  }
  return known_[slot].reach;
}

int Reach::region_of(int q) {
  const auto next = [&](int v) -> int& { return region_[static_cast<std::size_t>(v)]; };
  while (next(q) != q) q = next(q) = next(next(q));
  return q;
}

/// Regions grow around all letters at once, a wire at a time. Where two meet, the path between
/// their letters is the next edge of a shortest tree (Mehlhorn, Information Processing Letters 27,
/// 1988).
int Reach::compute(const Word* wires) {
  const auto at = [](int q) { return static_cast<std::size_t>(q); };
  std::ranges::fill(distance_, -1);
  rim_.clear();
  for_each_bit(wires, words_, [&](int q) {
    distance_[at(q)] = 0;
    region_[at(q)] = q;
    rim_.push_back(q);
  });
  const int weight = static_cast<int>(rim_.size());
  int apart = weight - 1;
  int edges = 0;
  const auto meet = [&](int a, int b, int length) {
    const int one = region_of(a);
    const int other = region_of(b);
    if (one == other) return;
    region_[at(one)] = other;
    edges += length;
    --apart;
  };
  for (int level = 0; apart > 0; ++level) {
    for (const int q : rim_) {
      if (apart == 0) break;
      for (const int v : neighbours_[at(q)]) {
        if (distance_[at(v)] == level) meet(q, v, 2 * level + 1);
      }
    }
    next_.clear();
    for (const int q : rim_) {
      if (apart == 0) break;
      for (const int v : neighbours_[at(q)]) {
        if (distance_[at(v)] < 0) {
          distance_[at(v)] = level + 1;
          region_[at(v)] = q;
          next_.push_back(v);
        } else if (distance_[at(v)] == level + 1) {
          meet(q, v, 2 * level + 2);
        }
      }
    }
    std::swap(rim_, next_);
  }
  return 2 * edges - weight + 2;
}

}  // namespace zelt::braidwerk::internal
