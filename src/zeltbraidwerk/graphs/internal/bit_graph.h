#pragma once

#include <bit>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/graph.h"

namespace zelt::braidwerk::internal {

/// A set of vertices 0 to size - 1.
class VertexSet {
 public:
  VertexSet() = default;
  explicit VertexSet(int size) : size_(size), words_(static_cast<std::size_t>(words_for(size))) {}
  /// Members outside 0 to size - 1 are left out.
  template <class Range>
  VertexSet(int size, const Range& members) : VertexSet(size) {
    for (const int v : members) {
      if (v >= 0 && v < size) insert(v);
    }
  }

  bool contains(int v) const {
    return v >= 0 && v < size_ && ((word(v) >> (v % word_bits)) & 1) != 0;
  }
  void insert(int v) { word(v) |= Word{1} << (v % word_bits); }
  void erase(int v) { word(v) &= ~(Word{1} << (v % word_bits)); }

  int first() const {  ///< -1 for the empty set
    for (int w = 0; w < count(); ++w) {
      if (words()[w] != 0) return w * word_bits + std::countr_zero(words()[w]);
    }
    return -1;
  }
  bool empty() const { return first() < 0; }
  int members() const { return weight(words(), count()); }  ///< how many

  template <class F>
  void for_each(F&& f) const {
    for_each_bit(words(), count(), f);
  }

  const Word* words() const { return words_.data(); }
  Word* words() { return words_.data(); }
  int count() const { return static_cast<int>(words_.size()); }  ///< of words
  int size() const { return size_; }                             ///< of the ground set

  bool operator==(const VertexSet&) const = default;

 private:
  Word& word(int v) { return words_[static_cast<std::size_t>(v / word_bits)]; }
  Word word(int v) const { return words_[static_cast<std::size_t>(v / word_bits)]; }

  int size_ = 0;
  std::vector<Word> words_;
};

/// The edges of an undirected graph, one packed row of neighbours a vertex. Symmetric.
class BitGraph {
 public:
  BitGraph() = default;
  explicit BitGraph(int n) : rows_(n, n) {}
  explicit BitGraph(const structures::Graph& graph);

  int size() const { return rows_.rows(); }
  int words() const { return rows_.stride(); }
  const Word* row(int v) const { return rows_.row(v); }

  bool contains(int v) const { return v >= 0 && v < size(); }
  bool joined(int a, int b) const { return rows_.get(a, b); }
  void join(int a, int b) {
    rows_.set(a, b);
    rows_.set(b, a);
  }
  void part(int a, int b) {
    rows_.set(a, b, false);
    rows_.set(b, a, false);
  }
  void isolate(int v) {
    for_each_neighbour(v, [&](int w) { part(v, w); });
  }

  template <class F>
  void for_each_neighbour(int v, F&& f) const {
    for_each_bit(row(v), words(), f);
  }

  /// Smallest neighbour in the set, or outside it; -1 when there is none.
  int first_neighbour_in(int v, const VertexSet& set) const;
  int first_neighbour_outside(int v, const VertexSet& set) const;

  /// Takes the neighbours of v out of `unmet` and appends them to `met`, ascending.
  void meet_neighbours(int v, VertexSet& unmet, std::vector<int>& met) const;

  bool has_edges(int v) const;
  bool is_leaf(int v) const;  ///< exactly one neighbour

  void unpack_into(structures::Graph& graph) const;  ///< adjacency alone; graph.n is size()

 private:
  BitMatrix rows_;
};

inline int BitGraph::first_neighbour_in(int v, const VertexSet& set) const {
  for (int w = 0; w < words(); ++w) {
    if (const Word both = row(v)[w] & set.words()[w]) {
      return w * word_bits + std::countr_zero(both);
    }
  }
  return -1;
}

inline int BitGraph::first_neighbour_outside(int v, const VertexSet& set) const {
  for (int w = 0; w < words(); ++w) {
    if (const Word outside = row(v)[w] & ~set.words()[w]) {
      return w * word_bits + std::countr_zero(outside);
    }
  }
  return -1;
}

inline void BitGraph::meet_neighbours(int v, VertexSet& unmet, std::vector<int>& met) const {
  for_each_bit_of_both(row(v), unmet.words(), words(), [&](int w) { met.push_back(w); });
  for (int w = 0; w < words(); ++w) unmet.words()[w] &= ~row(v)[w];
}

inline bool BitGraph::has_edges(int v) const {
  for (int w = 0; w < words(); ++w) {
    if (row(v)[w] != 0) return true;
  }
  return false;
}

inline bool BitGraph::is_leaf(int v) const {
  Word one = 0;
  for (int w = 0; w < words(); ++w) {
    const Word bits = row(v)[w];
    if (bits == 0) continue;
    if (one != 0 || (bits & (bits - 1)) != 0) return false;
    one = bits;
  }
  return one != 0;
}

/// Whether the members, with the edges among them, are connected. False for no members.
bool is_connected(const BitGraph& graph, const VertexSet& members);

/// Throws std::invalid_argument unless the graph is a connected one of n vertices.
void require_connected(const BitGraph& graph, int n);

/// Vertex v of the result is vertex names[v] of the graph.
BitGraph renamed(const BitGraph& graph, const std::vector<int>& names);

/// The members without which the others are connected: by cut vertices where all of them are
/// connected, O(n + edges). None for a single member.
VertexSet non_cutting(const BitGraph& graph, const VertexSet& members);

}  // namespace zelt::braidwerk::internal
