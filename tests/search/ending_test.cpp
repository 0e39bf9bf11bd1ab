// Searches of all families that a lower bound ends.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "support/gate_lists.h"
#include "support/tasks.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::at;
using support::map_of;
using support::path;
using support::pulled_back;
using support::random_gates;
using support::Rng;

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
  const auto graph = std::make_shared<BitGraph>(path(n));
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
  const Objective objective = support::objective(by_depth);
  for (const bool place : {false, true}) {
    const Outputs outputs = support::outputs(place);
    cases.push_back({"map", by_depth, [=](const Effort& effort) {
                       if (by_depth) {
                         search_shallow_cnot(m, {.outputs = outputs, .seed = seed}, effort);
                       } else {
                         search_cnot(m, {.outputs = outputs, .seed = seed}, effort);
                       }
                     }});
    cases.push_back({"map on a line", by_depth, [=](const Effort& effort) {
                       search_cnot_on_device(m, {objective, outputs, 0, graph.get(), seed, 0},
                                             effort);
                     }});
    for (const bool placed : {false, true}) {
      const BitGraph* edges = placed ? graph.get() : nullptr;
      const Task task{objective, outputs, 0, edges, seed, 0};
      cases.push_back({"operator", by_depth, [=, owner = graph](const Effort& effort) {
                         search_clifford(images, task, effort);
                       }});
      cases.push_back({"parities", by_depth, [=, owner = graph](const Effort& effort) {
                         search_parities(parities, task, effort);
                       }});
      NetworkTask network{task, place};
      if (!place) network.outputs = Outputs::left_open;
      cases.push_back({"rotations", by_depth, [=, owner = graph](const Effort& effort) {
                         Rotations rotations{strings, {}};
                         rotations.params.assign(at(strings.rows()), structures::Parameter(0.1));
                         search_network(rotations, network, effort);
                       }});
    }
  }
  cases.push_back({"state", by_depth, [=](const Effort& effort) {
                     search_state(stabilisers, {.objective = objective, .seed = seed}, effort);
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
