// The search engine on its own: draws, efforts, beams, windows and what takes their place.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "support/gate_lists.h"
#include "support/tasks.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace {

using namespace zelt::braidwerk::internal;

TEST(Rng, IsTheSameEverywhereAndStreamsDiffer) {
  Rng rng(1, 0);
  EXPECT_EQ(rng.next(), 14971601782005023387ULL);
  EXPECT_EQ(rng.next(), 13781649495232077965ULL);
  EXPECT_NE(Rng(1, 1).next(), Rng(1, 0).next());
  EXPECT_NE(Rng(2, 0).next(), Rng(1, 0).next());
  std::array<int, 7> seen{};
  for (int k = 0; k < 7000; ++k) ++seen[static_cast<std::size_t>(rng.below(7))];
  for (const int count : seen) EXPECT_NEAR(count, 1000, 150);
  EXPECT_EQ(rng.below(1), 0);
  EXPECT_EQ(rng.below(0), 0);
}

TEST(Meter, EndsAtItsStepsOrItsDeadline) {
  Effort effort;
  effort.steps = 5;
  Meter meter(effort);
  int made = 1;
  while (meter.step()) ++made;
  EXPECT_EQ(made, 5);
  effort.steps = 1'000'000'000;
  effort.control.deadline = Control::Clock::now();
  Meter late(effort);
  EXPECT_TRUE(late.ended());
  EXPECT_FALSE(late.step());
}

/// The steps that a search makes which is told of a circuit after `told` of them.
std::uint64_t steps_made(const Effort& effort, const LowerBound& bound, bool by_depth, int told,
                         const LowerBound& found) {
  Meter meter(effort, support::objective(by_depth));
  meter.better(100, 100);
  meter.prove(bound);
  for (int k = 0; k < told; ++k) meter.step();
  meter.better(found.count, found.depth);
  while (!meter.ended()) meter.step();
  return meter.steps();
}

TEST(Meter, EndsWhenNothingBetterIsPossible) {
  Effort effort;
  effort.steps = 100'000;
  LowerBound heard;
  effort.on_bound = [&](const LowerBound& bound) { heard = bound; };
  const LowerBound bound{4, 3};
  for (const bool by_depth : {false, true}) {
    const LowerBound one_met = by_depth ? LowerBound{5, 3} : LowerBound{4, 4};
    const LowerBound other_met = by_depth ? LowerBound{4, 4} : LowerBound{5, 3};
    EXPECT_EQ(steps_made(effort, bound, by_depth, 50, {4, 3}), 50U);
    EXPECT_EQ(steps_made(effort, bound, by_depth, 50, one_met), 100 + Meter::polish);
    EXPECT_EQ(steps_made(effort, bound, by_depth, 50, other_met), 100'000U);
  }
  EXPECT_EQ(heard.count, 4);
  // An effort that ends before is spent as ever, and a bound may be proven after its circuit.
  effort.steps = 70;
  EXPECT_EQ(steps_made(effort, bound, false, 50, {4, 4}), 70U);
  Meter meter(effort);
  meter.better(4, 3);
  EXPECT_TRUE(meter.step());
  meter.prove({2, 3});
  EXPECT_FALSE(meter.ended() || meter.proven());
  meter.prove({4, 0});
  EXPECT_TRUE(meter.ended() && meter.proven());
}

/// Numbers to be brought to 0 by adding 3 or taking off 5, with a score that misleads: every other
/// number is a local minimum.
struct Numbers {
  using State = int;
  using Move = int;
  std::multiset<int> made;
  template <class Sink>
  void children(int state, Rng&, Sink&& sink) {
    for (const int move : {3, -5}) {
      const int child = state + move;
      sink(std::abs(child) + (child % 2 == 0 ? 0 : 3), move);
    }
  }
  std::uint64_t hash(int state, int move) const { return static_cast<std::uint64_t>(state + move); }
  void make(int& state, int move) {
    state += move;
    made.insert(state);
  }
  bool done(int state) const { return state == 0; }
};

/// The same, told of its levels.
struct NumbersByLevel : Numbers {
  static int score(int state) { return std::abs(state) + (state % 2 == 0 ? 0 : 3); }
  std::vector<std::vector<int>> levels;  // the state that was told of, then those asked about
  void begin_level(int best) { levels.push_back({best}); }
  template <class Sink>
  void children(int state, Rng& rng, Sink&& sink) {
    levels.back().push_back(state);
    Numbers::children(state, rng, sink);
  }
};

TEST(BeamSearch, TellsOfTheBestStateBeforeEachLevel) {
  NumbersByLevel problem;
  Rng rng(1, 0);
  const Effort unbounded;
  Meter meter(unbounded);
  const auto found = BeamSearch<NumbersByLevel>(problem, {.width = 4}, rng, meter).run(19);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(problem.levels.size(), found[0].moves.size());
  std::size_t widest = 0;
  for (const std::vector<int>& level : problem.levels) {
    widest = std::max(widest, level.size() - 1);
    EXPECT_TRUE(std::ranges::count(level, level[0]) == 2);
    for (const int state : level) {
      EXPECT_GE(NumbersByLevel::score(state), NumbersByLevel::score(level[0]));
    }
  }
  EXPECT_EQ(widest, 4U);
}

TEST(BeamSearch, LeavesLocalMinimaAndMakesNoStateTwice) {
  const Effort unbounded;
  for (const int width : {1, 2, 10}) {
    Numbers problem;
    Rng rng(1, 0);
    Meter meter(unbounded);
    BeamOptions options;
    options.width = width;
    const auto found = BeamSearch<Numbers>(problem, options, rng, meter).run(19);
    ASSERT_EQ(found.size(), 1U) << width;
    int number = 19;
    for (const int move : found[0].moves) number += move;
    EXPECT_EQ(number, 0);
    for (const int state : problem.made) EXPECT_EQ(problem.made.count(state), 1U);
  }
  Numbers problem;
  Rng rng(1, 0);
  Effort spent;
  spent.steps = 0;
  Meter meter(spent);
  EXPECT_TRUE(BeamSearch<Numbers>(problem, {}, rng, meter).run(19).empty());
  EXPECT_EQ(BeamSearch<Numbers>(problem, {}, rng, meter).run(0).size(), 1U);
}

using support::map_of;

/// All rows that wires ever hold.
std::set<std::vector<bool>> shown(const std::vector<Gate>& gates, int wires) {
  std::set<std::vector<bool>> all;
  for (std::size_t k = 0; k <= gates.size(); ++k) {
    const auto end = gates.begin() + static_cast<std::ptrdiff_t>(k);
    for (const auto& row : map_of({gates.begin(), end}, wires).unpack()) all.insert(row);
  }
  return all;
}

TEST(Window, ItsGatesCanBeBroughtTogether) {
  Rng rng(3, 0);
  const int wires = 8;
  WindowFinder finder(wires);
  Window window;
  for (int round = 0; round < 2000; ++round) {
    std::vector<Gate> list;
    for (int g = 0; g < 25; ++g) {
      const int c = rng.below(wires);
      list.push_back(cnot(c, (c + 1 + rng.below(wires - 1)) % wires));
    }
    const bool by_values = round % 2 == 1;
    const int at = rng.below(25);
    const int size = 2 + rng.below(4);
    Rng same_draws = rng;
    finder.find(list, at, size, by_values ? Gathering::by_values : Gathering::by_labels, rng,
                window);
    ASSERT_FALSE(window.gates.empty());
    if (!by_values) {
      Window sooner;
      finder.find(list, at, size, Gathering::of_cnots, same_draws, sooner);
      ASSERT_EQ(sooner.positions, window.positions);
      for (const auto end : {&Window::from_start, &Window::to_end}) {
        const unsigned all = (1U << window.size) - 1;
        ASSERT_EQ(sooner.*end == all, window.*end == all);
      }
    }
    const BitMatrix before = map_of(list, wires);
    const auto values = shown(list, wires);
    // Gates before the block leave places alone that it says they do, and those after it.
    for (int place = 0; place < window.size; ++place) {
      const int wire = window.wires[static_cast<std::size_t>(place)];
      const auto touches = [&](int p) {
        const Gate& gate = list[static_cast<std::size_t>(p)];
        return wire_of(gate.a) == wire || wire_of(gate.b) == wire;
      };
      const auto& block = window.positions;
      for (int p = 0; p < static_cast<int>(list.size()); ++p) {
        if (std::ranges::find(block, p) != block.end() || !touches(p)) continue;
        const unsigned free = p < window.centre ? window.from_start : window.to_end;
        ASSERT_FALSE((free >> place) & 1);
      }
    }
    std::vector<Gate> same = list;
    const int next = WindowFinder::replace(same, window, window.gates);
    ASSERT_EQ(map_of(same, wires), before);
    ASSERT_EQ(same.size(), list.size());
    if (by_values) {
      ASSERT_EQ(shown(same, wires), values);
    }
    // Twice the block backward and forward: longer, and the same.
    std::vector<Gate> longer = window.gates;
    longer.insert(longer.end(), window.gates.rbegin(), window.gates.rend());
    longer.insert(longer.end(), window.gates.begin(), window.gates.end());
    std::vector<Gate> grown = list;
    const int end = WindowFinder::replace(grown, window, longer);
    ASSERT_EQ(map_of(grown, wires), before);
    ASSERT_EQ(end - next, static_cast<int>(longer.size() - window.gates.size()));
  }
}

TEST(Depth, IsThatOfGatesAsSoonAsPossible) {
  EXPECT_EQ(depth_of({}, 0), 0);
  EXPECT_EQ(depth_of({cnot(0, 1), cnot(2, 3), cnot(1, 2), cnot(0, 3)}, 4), 2);
}

}  // namespace
