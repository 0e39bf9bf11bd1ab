#include "zeltbraidwerk/clifford/search/internal/graph_blocks.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/linear/search/internal/block_layers.h"
#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

bool clear_between(const BitMatrix& edges, const std::vector<int>& a, const std::vector<int>& b,
                   const GraphInWork& graph, Rng& rng, Meter& meter) {
  BlockReduction problem(static_cast<int>(a.size()), static_cast<int>(b.size()));
  const auto found =
      BeamSearch<BlockReduction>(problem, {.width = clifford_tuning.block_width}, rng, meter)
          .run(problem.start(block_matrix(edges, {a, b})));
  if (found.empty()) return false;
  for (const BlockReduction::Move& number : found[0].moves) {
    for (const BlockMove& move : problem.layer(number)) {
      graph.play({move.kind == BlockMove::entry, (move.kind == BlockMove::columns ? b : a)[move.to],
                  (move.kind == BlockMove::rows ? a : b)[move.from]});
    }
  }
  return true;
}

}  // namespace

std::optional<std::vector<std::vector<int>>> clear_by_blocks(int wires, int largest,
                                                             const GraphInWork& graph, Rng& rng,
                                                             Meter& meter) {
  std::vector<std::vector<int>> done;
  std::vector<std::vector<int>> groups{
      shuffled(wires, [&](int, int last) { return rng.below(last + 1); })};
  while (!groups.empty()) {
    const BitMatrix edges = graph.edges();
    std::vector<std::vector<int>> parts;
    for (const std::vector<int>& group : groups) {
      if (static_cast<int>(group.size()) <= largest) {
        done.push_back(group);
        continue;
      }
      const auto middle = group.begin() + static_cast<std::ptrdiff_t>(group.size() / 2);
      parts.emplace_back(group.begin(), middle);
      parts.emplace_back(middle, group.end());
      if (!clear_between(edges, parts.end()[-2], parts.back(), graph, rng, meter)) {
        return std::nullopt;
      }
    }
    groups = std::move(parts);
  }
  return done;
}

}  // namespace zelt::braidwerk::internal
