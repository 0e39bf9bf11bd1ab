#include "zeltbraidwerk/linear/search/internal/cnot_search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/free_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double first_round = 1 << 15;  // steps
constexpr double growth = 1.5;

/// The blocks of a map, equal ones searched once, put together to one circuit.
class BlockwiseSearch {
 public:
  BlockwiseSearch(const BitMatrix& m, int window, Rng& rng) : n_(m.rows()), blocks_(blocks_of(m)) {
    for (const Block& block : blocks_) {
      BitMatrix matrix = block_matrix(m, block);
      const auto same = std::ranges::find(matrices_, matrix);
      which_.push_back(static_cast<std::size_t>(same - matrices_.begin()));
      if (same != matrices_.end()) continue;
      searches_.emplace_back(matrix, std::min(window, std::max(matrix.rows(), 2)), rng);
      matrices_.push_back(std::move(matrix));
    }
  }

  bool finished() const { return std::ranges::all_of(searches_, &FreeSearch::finished); }

  /// The search of a map that is one block; null for others.
  const FreeSearch* single() const { return searches_.size() == 1 ? &searches_[0] : nullptr; }

  GateList best() const { return joined(nullptr, nullptr); }

  /// Each block gets a share of the steps by its size. look is called for circuits that are no
  /// longer, with a function that makes the circuit.
  template <class Look>
  void round(int number, std::uint64_t steps, Rng& rng, Meter& meter, Look&& look) {
    for (std::size_t k = 0; k < searches_.size(); ++k) {
      const auto share = static_cast<std::uint64_t>(matrices_[k].rows()) * steps /
                         static_cast<std::uint64_t>(std::max(n_, 1));
      searches_[k].round(number, share + 1, rng, meter, [&](const GateList& list) {
        look([&] { return joined(&searches_[k], &list); });
      });
      if (meter.ended()) return;
    }
  }

 private:
  GateList joined(const FreeSearch* other, const GateList* with) const {
    GateList all(n_, {});
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
      const Block& block = blocks_[b];
      const FreeSearch& search = searches_[which_[b]];
      const GateList& part = &search == other ? *with : search.best();
      const auto wire = [&](End end) {
        return end_of(block.cols[static_cast<std::size_t>(wire_of(end))], label_of(end));
      };
      for (const Gate& gate : part.gates) all.gates.push_back({wire(gate.a), wire(gate.b)});
      for (std::size_t end = 0; end < part.frame.size(); ++end) {
        const End from = part.frame[end];
        all.frame[wire(static_cast<End>(end))] =
            end_of(block.rows[static_cast<std::size_t>(wire_of(from))], label_of(from));
      }
    }
    return all;
  }

  int n_;
  std::vector<Block> blocks_;
  std::vector<BitMatrix> matrices_;  // the different ones
  std::vector<FreeSearch> searches_;
  std::vector<std::size_t> which_;  // by block
};

/// Keeps the best circuit and tells of it. Fewer gates first, then fewer layers.
class Keeper {
 public:
  Keeper(GateList first, Meter& meter)
      : meter_(meter), best_(std::move(first)), depth_(depth_of(best_.gates, best_.wires())) {
    meter_.better(best_.count(), depth_);
  }

  const GateList& best() const { return best_; }

  void offer(const GateList& list) {
    if (list.count() > best_.count()) return;
    const int depth = depth_of(list.gates, list.wires());
    if (list.count() == best_.count() && depth >= depth_) return;
    best_ = list;
    depth_ = depth;
    meter_.better(best_.count(), depth_);
  }

 private:
  Meter& meter_;
  GateList best_;
  int depth_;
};

/// With every output on its own wire.
GateList closed(const GateList& list, Rng& rng) {
  const Draw draw = [&rng](int low, int high) { return low + rng.below(high - low + 1); };
  FreeCircuit found = free_circuit(list);
  FreeCircuit result(list.wires());
  result.circuit = close_within_gates(found, draw);
  return gate_list(result);
}

GateList search_free(const BitMatrix& m, int window, Rng& rng, Meter& meter) {
  BlockwiseSearch search(m, window, rng);
  Keeper keeper(search.best(), meter);
  if (search.single() == nullptr) keeper.offer(by_pairs(m, Facing::plain));
  if (m.rows() <= most_window_wires) {
    meter.prove({keeper.best().count(), layers_to_hold(keeper.best().count(), m.rows())});
  }
  double steps = first_round;
  for (int number = 0; !search.finished() && !meter.ended(); ++number, steps *= growth) {
    search.round(number, static_cast<std::uint64_t>(steps), rng, meter,
                 [&](const auto& list) { keeper.offer(list()); });
  }
  return keeper.best();
}

GateList search_exact(const BitMatrix& m, int window, Rng& rng, Meter& meter) {
  const int n = m.rows();
  if (n <= most_window_wires) {
    const Keeper only(shortest_circuit(m, false, rng), meter);
    meter.prove({only.best().count(), layers_to_hold(only.best().count(), n)});
    return only.best();
  }
  BlockwiseSearch search(m, window, rng);
  Keeper keeper(closed(search.best(), rng), meter);
  keeper.offer(by_pairs(m, Facing::plain));
  if (meter.ended()) return keeper.best();
  const BlockRewriter rewriter(window, false);
  const FreeSearch* single = search.single();
  const bool long_walks = single != nullptr && single->prefers_long_walks();
  const Cooling cooling = single != nullptr ? single->cooling() : Cooling{0.15F, 0.01F};
  const auto heard = [&](const GateList& list, bool) {
    keeper.offer(list);
    return true;
  };
  GateList walker = keeper.best();
  double steps = first_round;
  for (int number = 0; !meter.ended(); ++number, steps *= growth) {
    const auto whole = static_cast<std::uint64_t>(steps);
    search.round(number, long_walks ? whole / 4 : whole / 2, rng, meter, [](const auto&) {});
    if (meter.ended()) break;  // with more effort nothing would be closed here
    if (long_walks && number % 3 != 0) continue;
    GateList fresh = closed(search.best(), rng);
    keeper.offer(fresh);
    walk_round(fresh, rewriter, long_walks ? 13 * whole : whole, cooling, rng, meter, heard);
    if (fresh.count() <= walker.count()) std::swap(walker, fresh);
    if (!long_walks) walk_round(walker, rewriter, whole, cooling, rng, meter, heard);
  }
  return keeper.best();
}

}  // namespace

FreeCircuit search_cnot(const BitMatrix& m, const Task& task, const Effort& effort,
                        int largest_window) {
  Rng rng(task.seed, task.stream);
  Meter meter(effort);
  meter.prove(bound_of_map(m, task.in_place()));
  if (meter.bound().count == 0) {
    Keeper only(relabelled(m), meter);
    return free_circuit(only.best());
  }
  const int window = std::clamp(largest_window, 2, most_window_wires);
  return free_circuit(task.in_place() ? search_exact(m, window, rng, meter)
                                      : search_free(m, window, rng, meter));
}

}  // namespace zelt::braidwerk::internal
