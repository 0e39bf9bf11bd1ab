// Lower bounds of all families: never above what some circuit takes, and what becomes of a search
// that they end.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_table.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/phase/search/internal/parity_bound.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::at;
using support::Rng;

/// Gates on random wires, on the edges of a graph if there is one. With `labels` the ends are any
/// labels, otherwise the gates are CNOTs.
std::vector<Gate> random_gates(int n, int count, const BitGraph* graph, bool labels, Rng& rng) {
  std::vector<Gate> gates;
  const auto any = [&](int below) {
    return static_cast<int>(rng() % static_cast<unsigned>(below));
  };
  while (static_cast<int>(gates.size()) < count) {
    const int a = any(n);
    const int b = any(n);
    if (a == b || (graph != nullptr && !graph->joined(a, b))) continue;
    gates.push_back(labels ? Gate{end_of(a, 1 + any(3)), end_of(b, 1 + any(3))} : cnot(a, b));
  }
  return gates;
}

BitMatrix map_of(const std::vector<Gate>& gates, int n) {
  BitMatrix map = BitMatrix::identity(n);
  for (const Gate& gate : gates) map.add_row(wire_of(gate.a), wire_of(gate.b));
  return map;
}

BitGraph line(int n) {
  BitGraph graph(n);
  for (int v = 1; v < n; ++v) graph.join(v - 1, v);
  return graph;
}

/// What X, then Z, on the wires behind the first `count` gates stand for in front of them: the
/// images under the way back, which takes as many gates. Each wire's other labels than the one of a
/// gate are multiplied by the other wire's label of that gate.
PauliFrame pulled_back(const std::vector<Gate>& gates, int count, int n) {
  std::map<End, std::vector<int>> stands_for;  // labels by wire; products are XORs
  for (int q = 0; q < n; ++q) {
    for (int label = 1; label <= 3; ++label) {
      std::vector<int>& string = stands_for[end_of(q, label)];
      string.assign(at(n), 0);
      string[at(q)] = label;
    }
  }
  const auto multiply = [&](End kept, const std::vector<int>& by) {
    for (int label = 1; label <= 3; ++label) {
      if (label == label_of(kept)) continue;
      std::vector<int>& string = stands_for[end_of(wire_of(kept), label)];
      for (int q = 0; q < n; ++q) string[at(q)] ^= by[at(q)];
    }
  };
  for (int k = 0; k < count; ++k) {
    const auto [a, b] = gates[at(k)];
    const std::vector<int> on_a = stands_for[a];
    multiply(a, stands_for[b]);
    multiply(b, on_a);
  }
  PauliFrame frame(n, 2 * n);
  for (int row = 0; row < 2 * n; ++row) {
    const std::vector<int>& string = stands_for[end_of(row % n, row < n ? label_x : label_z)];
    for (int q = 0; q < n; ++q) {
      frame.set_letter(row, q,
                       letter_of((string[at(q)] & label_x) != 0, (string[at(q)] & label_z) != 0));
    }
  }
  return frame;
}

/// Those of two wires or more, once each, a column a parity.
BitMatrix different_parities(const std::set<std::vector<bool>>& parities, int n) {
  BitMatrix columns(n, static_cast<int>(parities.size()));
  int column = 0;
  for (const std::vector<bool>& parity : parities) {
    for (int w = 0; w < n; ++w) columns.set(w, column, parity[at(w)]);
    ++column;
  }
  return columns;
}

std::string shown(const LowerBound& bound, int count, int depth) {
  return "bound " + std::to_string(bound.count) + ", " + std::to_string(bound.depth) +
         "; there is one of " + std::to_string(count) + ", " + std::to_string(depth);
}

/// How often a bound was met by the circuit that a problem was made from.
struct Tally {
  int met = 0;
  int all = 0;
  void add(const LowerBound& bound, int count, int depth) {
    EXPECT_LE(bound.count, count) << shown(bound, count, depth);
    EXPECT_LE(bound.depth, depth) << shown(bound, count, depth);
    met += bound.count == count ? 1 : 0;
    ++all;
  }
};

TEST(Bounds, OfMapsAreNotAboveTheShortestCircuit) {
  Rng rng(1);
  const BitGraph path = line(5);
  SmallGraph edges = 0;
  for (int v = 1; v < 5; ++v) edges = static_cast<SmallGraph>(edges | edge_bit(v - 1, v));
  std::array<Tally, 4> tallies;
  for (int k = 0; k < 4000; ++k) {
    const auto gates = random_gates(5, k % 9, k % 2 == 0 ? nullptr : &path, false, rng);
    const BitMatrix m = map_of(gates, 5);
    const SmallMatrix small = small_matrix(m);
    const int depth = depth_of(gates, 5);
    for (const bool exact : {false, true}) {
      const int shortest = WindowTable::of(5, complete_graph(5), !exact).distance(small);
      tallies[exact].add(bound_of_map(m, exact), shortest, depth);
      if (k % 2 == 0) continue;
      const int on_path = WindowTable::of(5, edges, !exact).distance(small);
      tallies[2 + exact].add(bound_of_map_on_device(m, path, exact ? 0 : any_reach), on_path,
                             depth);
    }
  }
  for (const Tally& tally : tallies) EXPECT_GT(tally.met * 10, tally.all);
}

/// By levels of layers, each a set of disjoint CNOTs.
TEST(Bounds, OfMapsKnowTheFewestLayersOfThreeWires) {
  for (const bool permuted : {false, true}) {
    std::map<SmallMatrix, int> depth;
    std::deque<SmallMatrix> queue;
    std::array<int, 3> order{0, 1, 2};
    do {
      SmallMatrix m = 0;
      for (int r = 0; r < 3; ++r) m |= SmallMatrix{1} << (3 * r + order[at(r)]);
      depth[m] = 0;
      queue.push_back(m);
    } while (permuted && std::next_permutation(order.begin(), order.end()));
    for (; !queue.empty(); queue.pop_front()) {
      const SmallMatrix m = queue.front();
      for (int c = 0; c < 3; ++c) {
        for (int t = 0; t < 3; ++t) {
          const SmallMatrix other = m ^ ((m >> (3 * c) & 7U) << (3 * t));
          if (c == t || !depth.emplace(other, depth[m] + 1).second) continue;
          queue.push_back(other);
        }
      }
    }
    EXPECT_EQ(depth.size(), 168U);
    for (const auto& [m, layers] : depth) EXPECT_EQ(fewest_layers(3, m, permuted), layers);
  }
}

/// Problems made from short circuits with more wires than there are tables for.
TEST(Bounds, OfLargerProblemsAreNotAboveTheCircuitsThatTheyAreMadeFrom) {
  Rng rng(2);
  std::array<Tally, 4> tallies;
  for (int k = 0; k < 3000; ++k) {
    const int n = 4 + k % 6;
    const BitGraph path = line(n);
    const BitGraph* graph = k % 3 == 0 ? &path : nullptr;
    const auto cnots = random_gates(n, k % 11, graph, false, rng);
    const int depth = depth_of(cnots, n);
    const auto count = static_cast<int>(cnots.size());
    const BitMatrix m = map_of(cnots, n);
    tallies[0].add(
        graph == nullptr ? bound_of_map(m, k % 2 == 0) : bound_of_map_on_device(m, path, 0), count,
        depth);

    // Every parity that comes up, or some of them; undone by the way back.
    BitMatrix map = BitMatrix::identity(n);
    std::set<std::vector<bool>> shown;
    for (int g = 0; g < count; ++g) {
      const int target = wire_of(cnots[at(g)].b);
      map.add_row(wire_of(cnots[at(g)].a), target);
      if (map.row_weight(target) < 2 || (k % 4 == 0 && rng() % 2 == 0)) continue;
      std::vector<bool> parity;
      for (int w = 0; w < n; ++w) parity.push_back(map.get(target, w));
      shown.insert(parity);
    }
    const BitMatrix parities = different_parities(shown, n);
    ParitySearchOptions options;
    options.graph = graph;
    for (const Leftover leftover :
         {Leftover::returned, Leftover::closed_freely, Leftover::closed}) {
      options.leftover = leftover;
      const int times = leftover == Leftover::returned ? 1 : 2;
      tallies[1].add(bound_of_parities(parities, options), times * count, times * depth);
    }

    const auto gates = random_gates(n, k % 11, graph, true, rng);
    const GateList list(n, gates);
    const int layers = depth_of(gates, n);
    const PauliFrame images = pulled_back(gates, count, n);
    for (const Outputs outputs : {Outputs::free, Outputs::in_place}) {
      tallies[2].add(bound_of_operator(OperatorRows(images), outputs, graph), count, layers);
    }

    // Rotations about what is on a wire behind some of the gates.
    PauliFrame strings(n, count);
    for (int g = 0; g < count; ++g) {
      const PauliFrame back = pulled_back(gates, g + 1, n);
      const int row = static_cast<int>(rng() % static_cast<unsigned>(2 * n));
      for (int q = 0; q < n; ++q) strings.set_letter(g, q, back.letter(row, q));
    }
    NetworkOptions network;
    network.graph = graph;
    network.in_order = k % 2 == 0;
    for (const NetworkEnd end : {NetworkEnd::open, NetworkEnd::closed_freely, NetworkEnd::closed}) {
      network.end = end;
      const int times = end == NetworkEnd::open ? 1 : 2;
      const LowerBound bound = bound_of_network(strings, network);
      tallies[3].add(bound, times * count, times * layers);
      if (n == 4 && k % 5 == 0) {
        EXPECT_LE(fewest_network_gates(strings, network, bound.count, 100), times * count);
      }
    }
  }
  for (const Tally& tally : tallies) EXPECT_GT(tally.met * 20, tally.all);
}

/// A search of some family: counts and depths of its circuits as an effort goes on.
struct Case {
  const char* family;
  bool by_depth;
  std::function<void(const Effort&)> search;
};

struct Heard {
  LowerBound best{1 << 30, 1 << 30};
  LowerBound bound;
};

Heard heard_of(const Case& one, std::uint64_t steps, bool past_bound) {
  Heard heard;
  Effort effort;
  effort.steps = steps;
  effort.past_bound = past_bound;
  effort.on_better = [&](const SearchPoint& point) { heard.best = {point.count, point.depth}; };
  effort.on_bound = [&](const LowerBound& bound) { heard.bound = bound; };
  one.search(effort);
  return heard;
}

/// Searches of small problems, each of which owns what it needs.
std::vector<Case> small_cases(unsigned seed) {
  Rng rng(seed);
  const auto n = static_cast<int>(2 + seed % 5);
  const auto graph = std::make_shared<BitGraph>(line(n));
  const bool by_depth = seed % 3 == 0;
  const BitMatrix m = map_of(random_gates(n, static_cast<int>(seed % 7), nullptr, false, rng), n);
  const auto gates = random_gates(n, static_cast<int>(seed % 7), nullptr, true, rng);
  const auto count = static_cast<int>(gates.size());
  const PauliFrame images = pulled_back(gates, count, n);
  std::vector<int> z(at(n));
  std::iota(z.begin(), z.end(), n);
  const PauliFrame stabilisers = images.select(z);
  const PauliFrame strings = images.select(std::span(z).first(at(1 + n / 2)));
  BitMatrix parities(n, n / 2 + 1);
  for (int w = 0; w < n; ++w) {
    for (int p = 0; p < parities.cols(); ++p) parities.set(w, p, rng() % 2 == 0);
  }
  std::vector<Case> cases;
  for (const bool place : {false, true}) {
    cases.push_back({"map", by_depth, [=](const Effort& effort) {
                       if (by_depth) {
                         search_shallow_cnot(m, {.permuted = !place, .seed = seed}, effort);
                       } else {
                         search_cnot(m, {.exact = place, .seed = seed}, effort);
                       }
                     }});
    cases.push_back({"map on a line", by_depth, [=](const Effort& effort) {
                       search_cnot_on_device(m, *graph, {place ? 0 : any_reach, by_depth, seed, 0},
                                             effort);
                     }});
    for (const bool placed : {false, true}) {
      const BitGraph* edges = placed ? graph.get() : nullptr;
      const Outputs outputs = place ? Outputs::in_place : Outputs::free;
      cases.push_back({"operator", by_depth, [=, owner = graph](const Effort& effort) {
                         search_clifford(images, {outputs, by_depth, seed, 0, edges}, effort);
                       }});
      const Leftover leftover = place ? Leftover::closed : Leftover::closed_freely;
      cases.push_back({"parities", by_depth, [=, owner = graph](const Effort& effort) {
                         search_parities(parities, {leftover, edges, by_depth, seed, 0}, effort);
                       }});
      const NetworkEnd end = place ? NetworkEnd::closed : NetworkEnd::open;
      cases.push_back({"rotations", by_depth, [=, owner = graph](const Effort& effort) {
                         Rotations rotations{strings, {}};
                         rotations.params.assign(at(strings.rows()), structures::Parameter(0.1));
                         search_network(rotations, {place, end, edges, by_depth, seed, 0}, effort);
                       }});
    }
  }
  cases.push_back({"state", by_depth, [=](const Effort& effort) {
                     search_state(stabilisers, {by_depth, seed, 0}, effort);
                   }});
  return cases;
}

/// Wherever the bound is met, the search ends, and where it would have come to as few.
TEST(Bounds, EndSearchesWithWhatTheyWouldHaveFound) {
  std::map<std::string, std::array<int, 3>> tally;  // met, met in both measures, all
  for (unsigned seed = 1; seed <= 40; ++seed) {
    for (const Case& one : small_cases(seed)) {
      SCOPED_TRACE(std::string(one.family) + ", seed " + std::to_string(seed));
      constexpr std::uint64_t steps = 3000;
      const Heard whole = heard_of(one, steps, true);
      const Heard ended = heard_of(one, steps, false);
      EXPECT_LE(ended.bound.count, whole.best.count);
      EXPECT_LE(ended.bound.depth, whole.best.depth);
      const auto first = [&](const LowerBound& b) { return one.by_depth ? b.depth : b.count; };
      EXPECT_EQ(first(ended.best), first(whole.best));
      const bool met = first(ended.best) == first(ended.bound);
      const bool both =
          ended.best.count == ended.bound.count && ended.best.depth == ended.bound.depth;
      std::array<int, 3>& row = tally[one.family];
      row[0] += met ? 1 : 0;
      row[1] += both ? 1 : 0;
      ++row[2];
      // With no end of steps it ends by itself, and finds nothing else than with enough of them.
      if (!met) continue;
      EXPECT_EQ(first(heard_of(one, ~std::uint64_t{0}, false).best), first(ended.best));
    }
  }
  for (const auto& [family, row] : tally) {
    EXPECT_GT(2 * row[0], row[2]) << family;
    RecordProperty(family, std::to_string(row[0]) + " " + std::to_string(row[1]) + " of " +
                               std::to_string(row[2]));
  }
}

}  // namespace
