#include "zeltbraidwerk/pauli/search/internal/reach.h"

#include <algorithm>

#include "zeltbraidwerk/graphs/internal/path_tree.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t least_known = std::size_t{1} << 10;
constexpr std::size_t most_known = std::size_t{1} << 18;

}  // namespace

Reach::Reach(const BitGraph& graph) : words_(words_for(graph.size())), known_(least_known) {
  for (int root = 0; root < graph.size(); ++root) {
    PathTree tree;
    search_tree(graph, root, tree);
    distances_.push_back(std::move(tree.distance));
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
      known_.assign(std::min(4 * known_.size(), most_known), {});
      count_ = 1;
      slot = slot_of(key);
    }
    known_[slot] = {key, compute(wires)};
  }
  return known_[slot].reach;
}

/// Grows the tree from the first wire, always to the nearest one.
int Reach::compute(const Word* wires) {
  outside_.clear();
  for_each_bit(wires, words_, [&](int q) { outside_.push_back(q); });
  const int weight = static_cast<int>(outside_.size());
  int last = outside_.back();
  outside_.pop_back();
  nearest_.clear();
  for (const int q : outside_)
    nearest_.push_back(distances_[static_cast<std::size_t>(last)][static_cast<std::size_t>(q)]);
  int edges = 0;
  while (!outside_.empty()) {
    const auto next = std::ranges::min_element(nearest_) - nearest_.begin();
    const auto at = static_cast<std::size_t>(next);
    edges += nearest_[at];
    last = outside_[at];
    std::swap(outside_[at], outside_.back());
    std::swap(nearest_[at], nearest_.back());
    outside_.pop_back();
    nearest_.pop_back();
    const auto& from_last = distances_[static_cast<std::size_t>(last)];
    for (std::size_t k = 0; k < outside_.size(); ++k) {
      nearest_[k] = std::min(nearest_[k], from_last[static_cast<std::size_t>(outside_[k])]);
    }
  }
  return 2 * edges - weight + 2;
}

}  // namespace zelt::braidwerk::internal
