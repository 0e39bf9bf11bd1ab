#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "support/graphs.h"
#include "support/phases.h"
#include "support/tasks.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"
#include "zeltbraidwerk/phase/search/internal/parity_table.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using structures::Table;

int cnots(const Placed<PhaseStep>& result) {
  return static_cast<int>(std::ranges::count_if(result.gates, &PhaseStep::is_cnot));
}

/// The first fault of a result, or an empty text: by the oracle for phase circuits, against the
/// permutation where the map is undone, and against the edges.
std::string fault(const PhasePolynomial& poly, const Task& task, const Placed<PhaseStep>& result,
                  int n) {
  std::vector<structures::Gate> circuit;
  append_gates(result.gates, angles(poly), circuit);
  Table table(n);
  if (!task.closes()) {
    for (const PhaseStep& step : result.gates) {
      if (step.is_cnot()) table.cnot(step.control, step.target);
    }
  } else {
    table.bits.assign(table.bits.size(), false);
    for (int k = 0; k < n; ++k) table.bits[at(result.wires[at(k)] * n + k)] = true;
  }
  if (task.outputs != Outputs::anywhere && !std::ranges::is_sorted(result.wires)) {
    return "outputs are not in their places";
  }
  for (const PhaseStep& step : result.gates) {
    if (step.is_cnot() && task.device != nullptr &&
        !task.device->joined(step.control, step.target)) {
      return "a gate is not on an edge";
    }
  }
  return support::fault(poly, circuit, table);
}

/// Sizes up to 30, and beyond a word; sparse and dense sets, all of the parities too.
TEST(ParitySearch, CircuitsDoWhatTheyShould) {
  support::Rng rng(1);
  std::vector<int> moved;  // qubits, by length of the cycle that they go on
  for (int n : {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 13, 20, 30, 67}) {
    for (int terms : {0, 1, n, std::min(5 * n, 100)}) {
      const PhasePolynomial poly = n == 0 ? PhasePolynomial{} : random_polynomial(n, terms, rng);
      const BitMatrix parities = pack_parities(poly, n);
      const BitGraph line(support::line(n));
      const BitGraph mesh(with_random_edges(support::line(n), 20, rng));
      for (const Outputs outputs : {Outputs::left_open, Outputs::anywhere, Outputs::in_place}) {
        for (const BitGraph* graph : {static_cast<const BitGraph*>(nullptr), &line, &mesh}) {
          const Task task{.outputs = outputs, .device = graph, .seed = rng()};
          const auto quick = search_parities(parities, task, steps(0));
          EXPECT_EQ(fault(poly, task, quick, n), "") << n << " " << terms;
          const auto longer = search_parities(parities, task, steps(n > 30 ? 50 : 2000));
          EXPECT_EQ(fault(poly, task, longer, n), "") << n << " " << terms;
          EXPECT_LE(cnots(longer), cnots(quick));
          for (int k = 0; k < n; ++k) {
            const int next = longer.wires[at(k)];
            if (next != k && longer.wires[at(next)] != k) moved.push_back(k);
          }
        }
      }
    }
  }
  EXPECT_FALSE(moved.empty()) << "no permutation tells one direction from the other";
}

/// Few enough to be sure of the least.
TEST(ParitySearch, SmallSetsComeOutShortest) {
  const auto count = [](const std::vector<std::string_view>& parities, Outputs outputs) {
    const int n = static_cast<int>(parities[0].size());
    return cnots(
        search_parities(pack_parities(polynomial(parities), n), {.outputs = outputs}, steps(3000)));
  };
  EXPECT_EQ(count({"11"}, Outputs::left_open), 1);
  EXPECT_EQ(count({"11"}, Outputs::in_place), 2);
  EXPECT_EQ(count({"110", "111"}, Outputs::left_open), 2);
  EXPECT_EQ(count({"110", "111"}, Outputs::in_place), 4);
  // All eleven sums of four wires: each CNOT shows one at most, and four of them undo the map.
  const std::vector<std::string_view> all = {"1100", "1010", "0110", "1001", "0101", "0011",
                                             "1110", "1101", "1011", "0111", "1111"};
  EXPECT_EQ(count(all, Outputs::left_open), 11);
  EXPECT_EQ(count(all, Outputs::in_place), 14);
}

/// Everything that up to `depth` CNOTs can do on four wires: maps, and sums shown on the way.
std::map<std::pair<SmallMatrix, SumSet>, int> all_circuits(int depth, WindowGraph graph) {
  constexpr SumSet units = 1 << 1 | 1 << 2 | 1 << 4 | 1 << 8;
  std::map<std::pair<SmallMatrix, SumSet>, int> found{{{0x8421, 0}, 0}};
  std::vector<std::pair<SmallMatrix, SumSet>> level{{0x8421, 0}};
  for (int d = 1; d <= depth; ++d) {
    std::vector<std::pair<SmallMatrix, SumSet>> next;
    for (const auto& [m, shown] : level) {
      for (int c = 0; c < 4; ++c) {
        for (int t = 0; t < 4; ++t) {
          if (c == t || (graph & pair_bit(c, t)) == 0) continue;
          const SmallMatrix image = m ^ (((m >> (4 * c)) & 15U) << (4 * t));
          const auto sums =
              static_cast<SumSet>((shown | 1U << ((image >> (4 * t)) & 15U)) & ~units);
          if (found.emplace(std::pair(image, sums), d).second) next.emplace_back(image, sums);
        }
      }
    }
    level = std::move(next);
  }
  return found;
}

TEST(ParityTable, DistancesArePlainSearch) {
  const WindowGraph path = pair_bit(2, 0) | pair_bit(0, 1) | pair_bit(1, 3);
  for (const WindowGraph graph : {complete_graph(4), path}) {
    const ParityTable& exact = ParityTable::of(graph, false);
    const ParityTable& permuted = ParityTable::of(graph, true);
    std::map<SmallMatrix, std::vector<std::pair<SumSet, int>>> by_map;
    for (const auto& [reached, d] : all_circuits(4, graph)) {
      by_map[reached.first].emplace_back(reached.second, d);
    }
    for (const auto& [m, ways] : by_map) {
      for (const auto& [needed, d] : ways) {
        int least = d;
        for (const auto& [shown, other] : ways) {
          if ((shown & needed) == needed) least = std::min(least, other);
        }
        ASSERT_EQ(exact.distance(m, needed), least) << m << " " << needed;
        // With the rows elsewhere it is the same to the one, and no more to the other.
        const SmallMatrix turned = (m >> 4 | m << 12) & 0xffff;
        ASSERT_EQ(permuted.distance(turned, needed), permuted.distance(m, needed));
        ASSERT_LE(permuted.distance(m, needed), least);
      }
    }
  }
}

TEST(ParityTable, DescentsShowWhatIsNeeded) {
  support::Rng draws(3);
  zelt::braidwerk::internal::Rng rng(3, 0);
  for (int k = 0; k < 2000; ++k) {
    const bool permutes = k % 2 == 1;
    const ParityTable& table = ParityTable::of(complete_graph(4), permutes);
    SmallMatrix m = 0x8421;
    for (int g = 0; g < 12; ++g) {
      const unsigned c = draws() % 4;
      const unsigned t = (c + 1 + draws() % 3) % 4;
      m ^= ((m >> (4 * c)) & 15U) << (4 * t);
    }
    const auto needed = static_cast<SumSet>(draws() & draws() & 0xfee8);
    std::vector<Gate> block;
    const bool detour = k % 4 >= 2;
    const SmallMatrix left = table.descend(m, needed, detour, rng, block);
    const int longer = static_cast<int>(block.size()) - table.distance(m, needed);
    ASSERT_TRUE(longer == 0 || (detour && longer == 1));
    unsigned shown = 0;
    SmallMatrix made = 0x8421;
    for (const Gate& gate : block) {
      made ^= ((made >> (4 * wire_of(gate.a))) & 15U) << (4 * wire_of(gate.b));
      shown |= 1U << ((made >> (4 * wire_of(gate.b))) & 15U);
    }
    ASSERT_EQ(shown & needed, needed);
    // Row r of m is the row of the block that `left` names there.
    for (int r = 0; r < 4; ++r) {
      const unsigned at_place = (left >> (4 * r)) & 15U;
      ASSERT_TRUE(std::has_single_bit(at_place));
      ASSERT_EQ((m >> (4 * r)) & 15U, (made >> (4 * std::countr_zero(at_place))) & 15U);
    }
    ASSERT_TRUE(permutes || left == 0x8421);
  }
}

}  // namespace
