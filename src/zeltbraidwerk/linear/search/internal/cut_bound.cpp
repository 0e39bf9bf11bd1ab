#include "zeltbraidwerk/linear/search/internal/cut_bound.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/foundations/internal/echelon.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr std::size_t most_roots = 6;  // wires from which distances are taken

/// No more gates than there are wires of either part with an edge to the other.
Cut cut_of(const BitGraph& graph, VertexSet side) {
  int within = 0;
  int outside = 0;
  for (int v = 0; v < graph.size(); ++v) {
    bool crosses = false;
    graph.for_each_neighbour(
        v, [&](int w) { crosses = crosses || side.contains(v) != side.contains(w); });
    if (crosses) ++(side.contains(v) ? within : outside);
  }
  return {std::move(side), std::min(within, outside)};
}

Cuts cuts_of_edges(const BitGraph& graph, const Distances& distances) {
  const int n = graph.size();
  Cuts found;
  for (int a = 0; a < n; ++a) {
    graph.for_each_neighbour(a, [&](int b) {
      VertexSet side(n);
      VertexSet other(n);
      for (int w = 0; w < n; ++w) {
        (distances(w, a) < distances(w, b) ? side : other).insert(w);
      }
      const bool known = std::ranges::any_of(
          found.cuts, [&](const Cut& cut) { return cut.side == side || cut.side == other; });
      if (!known) found.cuts.push_back(cut_of(graph, std::move(side)));
    });
  }
  for (int a = 0; a < n; ++a) {
    graph.for_each_neighbour(a, [&](int b) {
      const auto crosses = [&](const Cut& cut) {
        return cut.side.contains(a) != cut.side.contains(b);
      };
      found.load =
          std::max(found.load, static_cast<int>(std::ranges::count_if(found.cuts, crosses)));
    });
  }
  return found;
}

Cuts cuts_by_distance(const BitGraph& graph, const Distances& distances, int root) {
  const int n = graph.size();
  Cuts found;
  VertexSet side(n);
  for (int far = 0; side.members() < n; ++far) {
    for (int w = 0; w < n; ++w) {
      if (distances(root, w) == far) side.insert(w);
    }
    if (side.members() < n) found.cuts.push_back(cut_of(graph, side));
  }
  return found;
}

}  // namespace

Cuts cuts_of_all_pairs(int n) {
  Cuts found;
  const unsigned end = std::bit_ceil(static_cast<unsigned>(std::max(n, 2)));
  found.load = static_cast<int>(end / 2);
  for (unsigned k = 1; k < end; ++k) {
    VertexSet side(n);
    for (int w = 0; w < n; ++w) {
      if (std::popcount(static_cast<unsigned>(w) & k) % 2 == 1) side.insert(w);
    }
    const int members = side.members();
    found.cuts.push_back({std::move(side), std::min(members, n - members)});
  }
  return found;
}

std::vector<Cuts> cuts_of_graph(const BitGraph& graph, const Distances& distances) {
  const int n = graph.size();
  std::vector<Cuts> found{cuts_of_edges(graph, distances)};
  std::vector<std::pair<int, int>> roots;  // the farthest wire, less than 0, and the root
  for (int v = 0; v < n; ++v) {
    int farthest = 0;
    for (int w = 0; w < n; ++w) farthest = std::max(farthest, distances(v, w));
    roots.emplace_back(-farthest, v);
  }
  std::ranges::sort(roots);
  roots.resize(std::min(roots.size(), most_roots));
  for (const auto& [_, root] : roots) found.push_back(cuts_by_distance(graph, distances, root));
  return found;
}

LowerBound bound_of_cuts(const Cuts& cuts, const std::function<int(const VertexSet&)>& across) {
  LowerBound bound;
  int all = 0;
  for (const Cut& cut : cuts.cuts) {
    if (cut.most_in_layer == 0) continue;
    const int gates = across(cut.side);
    all += gates;
    bound.raise({gates, (gates + cut.most_in_layer - 1) / cut.most_in_layer});
  }
  bound.raise({(all + cuts.load - 1) / cuts.load, 0});
  return bound;
}

int gates_across(const BitMatrix& m, const VertexSet& side) {
  const int members = side.members();
  BitMatrix to_side(members, m.cols());
  BitMatrix from_side(m.rows() - members, m.cols());
  int within = 0;
  for (int r = 0; r < m.rows(); ++r) {
    const bool in_side = side.contains(r);
    Word* part = in_side ? to_side.row(within++) : from_side.row(r - within);
    for (int w = 0; w < m.stride(); ++w) {
      const Word columns = side.words()[w];
      part[w] = m.row(r)[w] & (in_side ? ~columns : columns);
    }
  }
  return rank(std::move(to_side)) + rank(std::move(from_side));
}

}  // namespace zelt::braidwerk::internal
