#include "zeltbraidwerk/phase/search/internal/steiner_weights.h"

#include <bit>
#include <limits>

namespace zelt::braidwerk::internal {

namespace {

constexpr int most_in_table = 20;

bool contains(const Word* set, int v) {
  return ((set[v / word_bits] >> (v % word_bits)) & 1) != 0;
}

}  // namespace

SteinerWeights::SteinerWeights(const BitGraph& graph)
    : n_(graph.size()),
      stride_(graph.words()),
      graph_(&graph),
      neighbours_(static_cast<std::size_t>(stride_)) {
  if (n_ <= most_in_table) {
    fill_table(graph);
  } else {
    grow_tree(graph, true);
    grow_tree(graph, false);
  }
}

/// From the largest set down: one that is connected weighs its size, another one more than the
/// best with one vertex more.
void SteinerWeights::fill_table(const BitGraph& graph) {
  by_set_.assign(std::size_t{1} << n_, 0);
  for (std::size_t set = by_set_.size(); set-- > 1;) {
    Word joined = set & (~set + 1);
    for (Word fresh = joined; fresh != 0;) {
      Word near = 0;
      for_each_bit(&fresh, 1, [&](int v) { near |= *graph.row(v); });
      fresh = near & set & ~joined;
      joined |= fresh;
    }
    if (joined == set) {
      by_set_[set] = static_cast<std::uint8_t>(std::popcount(set));
      continue;
    }
    std::uint8_t best = std::numeric_limits<std::uint8_t>::max() - 1;
    for (int v = 0; v < n_; ++v) {
      if (((set >> v) & 1) == 0) best = std::min(best, by_set_[set | std::size_t{1} << v]);
    }
    by_set_[set] = static_cast<std::uint8_t>(best + 1);
  }
}

/// By breadth first from a vertex of many neighbours, which come in turn from the lowest on or from
/// the highest on: on a grid its rows, or its columns.
void SteinerWeights::grow_tree(const BitGraph& graph, bool ascending) {
  const auto size = static_cast<std::size_t>(n_);
  const auto neighbours = [&](int v) {
    std::vector<int> near;
    graph.for_each_neighbour(v, [&](int w) { near.push_back(w); });
    if (!ascending) std::reverse(near.begin(), near.end());
    return near;
  };
  int root = 0;
  for (int v = 1; v < n_; ++v) {
    if (neighbours(v).size() > neighbours(root).size()) root = v;
  }
  std::vector<std::vector<int>> children(size);
  std::vector<char> seen(size);
  std::vector<int> queue{root};
  seen[static_cast<std::size_t>(root)] = 1;
  for (std::size_t k = 0; k < queue.size(); ++k) {
    for (const int w : neighbours(queue[k])) {
      if (seen[static_cast<std::size_t>(w)]) continue;
      seen[static_cast<std::size_t>(w)] = 1;
      children[static_cast<std::size_t>(queue[k])].push_back(w);
      queue.push_back(w);
    }
  }
  Tree& tree = trees_.emplace_back();
  tree.place.resize(size);
  tree.distance.resize(size * size);
  std::vector<std::pair<int, std::size_t>> stack{{root, 0}};  // vertex, place of its parent
  while (!stack.empty()) {
    const auto [v, parent] = stack.back();
    stack.pop_back();
    const std::size_t place = tree.order.size();
    tree.order.push_back(v);
    tree.place[static_cast<std::size_t>(v)] = place;
    for (std::size_t other = 0; other < place; ++other) {
      const auto steps = static_cast<std::uint16_t>(tree.distance[parent * size + other] + 1);
      tree.distance[place * size + other] = tree.distance[other * size + place] = steps;
    }
    for (const int w : children[static_cast<std::size_t>(v)]) stack.emplace_back(w, place);
  }
  tree.before.resize(size);
  tree.after.resize(size);
}

void SteinerWeights::walk_tree(const Word* set, Tree& tree) {
  const std::size_t size = tree.order.size();
  const auto member = [&](std::size_t place) { return contains(set, tree.order[place]); };
  std::size_t first = 0;
  while (!member(first)) ++first;
  std::size_t last = size - 1;
  while (!member(last)) --last;
  tree.tour = tree.between(last, first);
  std::size_t at = last;
  for (std::size_t p = 0; p < size; ++p) {
    tree.before[p] = at;
    if (!member(p)) continue;
    if (p != first) tree.tour += tree.between(at, p);
    at = p;
  }
  at = first;
  for (std::size_t p = size; p-- > 0;) {
    tree.after[p] = at;
    if (member(p)) at = p;
  }
}

int SteinerWeights::walk_trees(const Word* set) {
  members_ = internal::weight(set, stride_);
  int tour = std::numeric_limits<int>::max();
  for (Tree& tree : trees_) {
    walk_tree(set, tree);
    tour = std::min(tour, tree.tour);
  }
  return tour + 2 - members_;
}

int SteinerWeights::changed_weight(const Word* set, int v) const {
  const int sign = contains(set, v) ? -1 : 1;
  int tour = std::numeric_limits<int>::max();
  for (const Tree& tree : trees_) {
    const std::size_t p = tree.place[static_cast<std::size_t>(v)];
    const std::size_t a = tree.before[p];
    const std::size_t b = tree.after[p];
    const int detour = tree.between(a, p) + tree.between(p, b) - tree.between(a, b);
    tour = std::min(tour, tree.tour + sign * detour);
  }
  return tour + 2 - (members_ + sign);
}

int SteinerWeights::weight(const Word* set) {
  return by_set_.empty() ? walk_trees(set) : by_set_[*set];
}

void SteinerWeights::find_neighbours(const Word* set) {
  std::fill(neighbours_.begin(), neighbours_.end(), 0);
  for_each_bit(set, stride_, [&](int v) {
    for (int w = 0; w < stride_; ++w) neighbours_[static_cast<std::size_t>(w)] |= graph_->row(v)[w];
  });
}

}  // namespace zelt::braidwerk::internal
