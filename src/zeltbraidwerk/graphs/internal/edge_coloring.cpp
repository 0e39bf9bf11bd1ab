#include "zeltbraidwerk/graphs/internal/edge_coloring.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int none = -1;

/// Edges get a colour one after the other; at a vertex no two have the same.
class EdgeColoring {
 public:
  /// With `by_paths` two colours change places along a path, and one more is taken where that does
  /// not help; otherwise fans are turned.
  EdgeColoring(const BitGraph& graph, bool by_paths)
      : size_(static_cast<std::size_t>(graph.size())), color_(size_ * size_, none) {
    int most = 0;
    for (int v = 0; v < graph.size(); ++v) {
      int degree = 0;
      for_each_bit(graph.row(v), graph.words(), [&](int) { ++degree; });
      most = std::max(most, degree);
    }
    // Each end of an edge has at most one edge less than `most` already: twice as many will do.
    colors_ = static_cast<std::size_t>(by_paths ? 2 * most : most + 1);
    neighbour_.assign(size_ * colors_, none);
    free_ = BitMatrix(graph.size(), static_cast<int>(colors_));
    for (int u = 0; u < graph.size(); ++u) {
      for (int c = 0; c < static_cast<int>(colors_); ++c) free_.set(u, c);
    }
    for (int u = 0; u < graph.size(); ++u) {
      stop_point();
      for_each_bit(graph.row(u), graph.words(), [&](int v) {
        if (u < v) by_paths ? add_by_path(u, v) : add(u, v);
      });
    }
  }

  std::vector<std::vector<std::pair<int, int>>> matchings() const {
    std::vector<std::vector<std::pair<int, int>>> found(colors_);
    for (int u = 0; u < static_cast<int>(size_); ++u) {
      for (int v = u + 1; v < static_cast<int>(size_); ++v) {
        const int c = color_[at(u, v)];
        if (c != none) found[static_cast<std::size_t>(c)].emplace_back(u, v);
      }
    }
    std::erase_if(found, [](const auto& matching) { return matching.empty(); });
    return found;
  }

 private:
  std::size_t at(int u, int v) const {
    return static_cast<std::size_t>(u) * size_ + static_cast<std::size_t>(v);
  }
  /// Along the edge of a colour.
  int& neighbour(int u, int c) {
    return neighbour_[static_cast<std::size_t>(u) * colors_ + static_cast<std::size_t>(c)];
  }
  bool is_free(int u, int c) const { return free_.get(u, c); }
  /// The first colour of those in words of bits; -1 where there is none.
  template <class Bits>
  int first_color(Bits&& word) const {
    for (int w = 0; w < free_.stride(); ++w) {
      if (const Word bits = word(w); bits != 0) return word_bits * w + std::countr_zero(bits);
    }
    return -1;
  }
  int free_color(int u) const {
    return first_color([free = free_.row(u)](int w) { return free[w]; });
  }
  void color(int u, int v, int c) {
    color_[at(u, v)] = color_[at(v, u)] = c;
    neighbour(u, c) = v;
    neighbour(v, c) = u;
    free_.set(u, c, false);
    free_.set(v, c, false);
  }
  void uncolor(int u, int v) {
    const int c = color_[at(u, v)];
    if (c == none) return;
    color_[at(u, v)] = color_[at(v, u)] = none;
    neighbour(u, c) = neighbour(v, c) = none;
    free_.set(u, c);
    free_.set(v, c);
  }

  void add(int u, int v) {
    const std::vector<int> fan = fan_of(u, v);
    const int wanted = free_color(fan.back());
    exchange(u, wanted, free_color(u));
    std::size_t last = 0;
    while (!is_free(fan[last], wanted)) ++last;
    turn(u, fan, last, wanted);
  }

  void add_by_path(int u, int v) {
    const int free_at_u = free_color(u);
    const int free_at_v = free_color(v);
    if (free_at_u < free_at_v) {
      exchange(v, free_at_u, free_at_v);
    } else if (free_at_v < free_at_u) {
      exchange(u, free_at_v, free_at_u);
    }
    color(u, v, first_color([a = free_.row(u), b = free_.row(v)](int w) { return a[w] & b[w]; }));
  }

  /// Neighbours of u from v on, the colour of the edge to each of which is free at the one before.
  std::vector<int> fan_of(int u, int v) {
    std::vector<int> fan{v};
    BitMatrix left(1, static_cast<int>(colors_));  // of the edges to the others
    for (int c = 0; c < left.cols(); ++c) left.set(0, c, !is_free(u, c));
    while (true) {
      const int c = first_color(
          [&, free = free_.row(fan.back())](int w) { return left.row(0)[w] & free[w]; });
      if (c < 0) break;
      left.set(0, c, false);
      fan.push_back(neighbour(u, c));
    }
    return fan;
  }

  /// On the path of these two colours that begins at u, with the first of them.
  void exchange(int u, int first, int second) {
    std::vector<int> path{u};
    for (int c = first; !is_free(path.back(), c); c = c == first ? second : first) {
      path.push_back(neighbour(path.back(), c));
    }
    for (std::size_t k = 0; k + 1 < path.size(); ++k) uncolor(path[k], path[k + 1]);
    for (std::size_t k = 0; k + 1 < path.size(); ++k) {
      color(path[k], path[k + 1], k % 2 == 0 ? second : first);
    }
  }

  /// Every edge of the fan up to the last gets the colour of the next one.
  void turn(int u, const std::vector<int>& fan, std::size_t last, int wanted) {
    std::vector<int> colors;
    for (std::size_t k = 1; k <= last; ++k) colors.push_back(color_[at(u, fan[k])]);
    colors.push_back(wanted);
    for (std::size_t k = 1; k <= last; ++k) uncolor(u, fan[k]);
    for (std::size_t k = 0; k <= last; ++k) color(u, fan[k], colors[k]);
  }

  std::size_t size_;
  std::size_t colors_ = 0;
  std::vector<int> color_;      // of the edge between two vertices
  std::vector<int> neighbour_;  // by vertex and colour
  BitMatrix free_;              // the same: whether no edge of the vertex has it
};

}  // namespace

std::vector<std::vector<std::pair<int, int>>> matchings_of(const BitGraph& graph) {
  return EdgeColoring(graph, false).matchings();
}

std::vector<std::vector<std::pair<int, int>>> few_matchings_of(const BitGraph& graph) {
  auto by_paths = EdgeColoring(graph, true).matchings();
  auto by_fans = matchings_of(graph);
  return by_paths.size() <= by_fans.size() ? std::move(by_paths) : std::move(by_fans);
}

}  // namespace zelt::braidwerk::internal
