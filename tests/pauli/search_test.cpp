#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>

#include "support/rotations.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::PauliRows;
using support::text;

Rotations numbered(const PauliRows& table, int n) {
  Rotations rotations{PauliFrame::pack(table, n), {}};
  for (std::size_t r = 0; r < table.size(); ++r) {
    rotations.params.emplace_back("a" + std::to_string(r));
  }
  return rotations;
}

bool clash(const std::string& a, const std::string& b) {
  bool odd = false;
  for (std::size_t q = 0; q < a.size(); ++q) {
    odd ^= a[q] != 'I' && b[q] != 'I' && a[q] != b[q];
  }
  return odd;
}

/// What is wrong with a result, in words; nothing when it is right.
std::string fault(const PauliRows& table, int n, const NetworkOptions& options,
                  const NetworkResult& result) {
  for (const auto& gate : result.gates) {
    if (gate.qbits.size() < 2) continue;
    if (options.graph != nullptr && !options.graph->joined(gate.qbits[0], gate.qbits[1])) {
      return "not an edge: " + gate.to_string();
    }
  }
  const support::Unfolded unfolded = support::unfold(result.gates, n);
  std::vector<std::string> served;
  std::set<std::string> angles;
  std::vector<int> rows;
  for (const auto& [string, angle] : unfolded.rotations) {
    std::size_t row = 0;
    while (row < table.size()) {
      const structures::Parameter own("a" + std::to_string(row));
      if (angle == (string.first ? own.flip_sign() : own)) break;
      ++row;
    }
    if (row == table.size()) return "no such angle: " + angle.expression;
    if (string.second != text(table[row])) return "not that rotation: " + string.second;
    if (!angles.insert("a" + std::to_string(row)).second) return "twice: " + string.second;
    for (std::size_t k = 0; k < rows.size() && options.in_order; ++k) {
      if (rows[k] > static_cast<int>(row) && clash(served[k], string.second)) return "order";
    }
    rows.push_back(static_cast<int>(row));
    served.push_back(string.second);
  }
  std::size_t wanted = 0;
  for (const auto& row : table) wanted += text(row) != std::string(row.size(), 'I');
  if (angles.size() != wanted) return "rotations are missing";

  const auto tableau = support::tableau_of(unfolded.clifford, n);
  for (int q = 0; q < n && options.end != NetworkEnd::open; ++q) {
    const int wire = result.wires[static_cast<std::size_t>(q)];
    if (options.end == NetworkEnd::closed && wire != q) return "not on its wire";
    for (const char letter : {'X', 'Z'}) {
      std::string before(static_cast<std::size_t>(n), 'I');
      std::string behind = before;
      before[static_cast<std::size_t>(q)] = letter;
      behind[static_cast<std::size_t>(wire)] = letter;
      if (support::carried(before, tableau) != support::SignedString{false, behind}) {
        return "not closed";
      }
    }
  }
  return "";
}

/// A random tree and some edges more.
BitGraph connected_graph(int n, std::mt19937& rng) {
  BitGraph graph(n);
  for (int v = 1; v < n; ++v) graph.join(v, static_cast<int>(rng() % static_cast<unsigned>(v)));
  for (int k = 0; k < n / 2; ++k) {
    const int a = static_cast<int>(rng() % static_cast<unsigned>(n));
    const int b = static_cast<int>(rng() % static_cast<unsigned>(n));
    if (a != b) graph.join(a, b);
  }
  return graph;
}

int ladder_count(const PauliRows& table) {
  int count = 0;
  for (const auto& row : table) {
    const auto weight = static_cast<int>(
        row.size() - static_cast<std::size_t>(std::count(row.begin(), row.end(), 0)));
    count += 2 * std::max(0, weight - 1);
  }
  return count;
}

Effort steps(std::uint64_t count) {
  Effort effort;
  effort.steps = count;
  return effort;
}

TEST(NetworkSearch, EveryRotationOnceWithItsSignAndInOrder) {
  std::mt19937 rng(1);
  for (int instance = 0; instance < 60; ++instance) {
    const int n = static_cast<int>(rng() % (instance % 10 == 0 ? 51 : 9));
    const int most = instance % 7 == 0 ? 60 : 15;
    PauliRows table =
        support::random_rows(static_cast<int>(rng() % static_cast<unsigned>(most)), n, rng);
    for (auto& row : table) {  // light strings, equal ones, and those of no letters as well
      for (auto& letter : row) letter = rng() % 3 == 0 ? letter : 0;
      for (std::size_t q = 0; q < row.size() && instance % 6 == 5; ++q) {
        if (row[q] != 0) row[q] = static_cast<unsigned char>(1 + q % 3);  // one letter a qubit
      }
    }
    const BitGraph graph = connected_graph(n, rng);
    for (const bool in_order : {false, true}) {
      for (const auto end : {NetworkEnd::open, NetworkEnd::closed, NetworkEnd::closed_freely}) {
        NetworkOptions options;
        options.in_order = in_order;
        options.end = end;
        options.by_depth = instance % 5 == 0;
        options.seed = static_cast<std::uint64_t>(instance);
        if (n > 0 && instance % 3 == 0) options.graph = &graph;
        const auto result =
            search_network(numbered(table, n), options, steps(instance % 4 == 0 ? 2000 : 60));
        EXPECT_EQ(fault(table, n, options, result), "")
            << "instance " << instance << ": " << text(table);
        if (options.graph == nullptr && !options.by_depth) {
          EXPECT_LE(result.count, ladder_count(table));
        }
      }
    }
  }
}

TEST(NetworkSearch, MoreStepsAreMoreOfTheSame) {
  std::mt19937 rng(2);
  for (const bool in_order : {false, true}) {
    const PauliRows table = support::random_rows(30, 6, rng);
    for (const bool by_depth : {false, true}) {
      NetworkOptions options;
      options.in_order = in_order;
      options.by_depth = by_depth;
      options.seed = 5;
      std::pair last(1000, 1000);
      for (std::uint64_t count = 0; count < 10000; count += 1 + count / 5) {
        const auto result = search_network(numbered(table, 6), options, steps(count));
        const auto size = by_depth ? std::pair(result.depth, result.count)
                                   : std::pair(result.count, result.depth);
        ASSERT_LE(size, last) << count;
        last = size;
      }
      const auto again = search_network(numbered(table, 6), options, steps(3000));
      EXPECT_EQ(again.gates, search_network(numbered(table, 6), options, steps(3000)).gates);
      // Spent before it began, an effort still gives a circuit.
      Effort spent;
      spent.control.deadline = Control::Clock::now();
      const auto first = search_network(numbered(table, 6), options, spent);
      EXPECT_EQ(first.gates, search_network(numbered(table, 6), options, steps(0)).gates);
      EXPECT_LT(last.first, by_depth ? first.depth : first.count);
    }
    // Long lists begin with relays.
    const PauliRows list = support::random_rows(320, 5, rng);
    NetworkOptions options;
    options.in_order = in_order;
    std::pair last(10000, 10000);
    for (const std::uint64_t count : {0, 300, 1000, 2000, 3000, 5000, 10000, 30000}) {
      const auto result = search_network(numbered(list, 5), options, steps(count));
      EXPECT_EQ(fault(list, 5, options, result), "");
      EXPECT_LE(std::pair(result.count, result.depth), last) << count;
      last = {result.count, result.depth};
    }
  }
}

TEST(NetworkSearch, FewestKnown) {
  // XX, YY and ZZ on a pair take three gates between them.
  PauliRows chain;
  for (int q = 0; q + 1 < 6; ++q) {
    for (unsigned char letter = 1; letter <= 3; ++letter) {
      auto& row = chain.emplace_back(6);
      row[static_cast<std::size_t>(q)] = row[static_cast<std::size_t>(q) + 1] = letter;
    }
  }
  NetworkOptions options;
  options.in_order = true;
  EXPECT_EQ(search_network(numbered(chain, 6), options, steps(3000)).count, 15);

  const auto [letters, n] = std::pair(support::rows({"XYZI", "IZXX"}), 4);
  options.end = NetworkEnd::open;
  EXPECT_EQ(search_network(numbered(letters, n), options, steps(1000)).count, 3);
}

TEST(NetworkSearch, EndsWhereALetterOnTheHubOfAStarChangesMuch) {
  // A gate between the hub and wire 9 once seemed to gain both when it was played and undone.
  const PauliRows table =
      support::rows({"XIIXZIIIIIIIIXYIIIIIIIYIIIZZXIIIZIIZIIIIIIIIZYIIIIIYXXYIIIIXZXII",
                     "XZIIIIZIIIXIIIIIIIIIXXYIXIZIIIYXZIZIIIIXYIIYZIIYIIIIIIIIXIIXZXYI",
                     "IZIXZIIYIIIIXIIIIIXIXXYIXIZZIIIIZXIZZZIXYIIYZYXYIIIYIXIXIZIIIXII",
                     "IIIIIYZIIIIIIXIIXIIIIXIIIIZIIZYIZXIZZIIIYYIYIIIIIXYIIXIIIZIIIIYI",
                     "IZIIIIIIIIIIXIIIIIIIXIYIIIIZIIIXIXZIIZIIIIIYIIIIZXIIIIYIIZIIZIYI",
                     "IIXIZIIYIIXYXIYIIIIIIXIIXIZIIIIIZIIZZIZXIIIYIYIIZIIYIIIXXZIIIXIZ",
                     "IIIIIIZIIXIYIXIIIIIYIIIXXIIIIZIIIIIZIIZXIIIIIIIIZIYIXIIXIZIIIIIZ",
                     "IZIIIYIIIIXIXIIXIIIIIIIIXIIZIZIXIIIZIIIXIYIIZYIIZXYIIXIXIIIIIXIZ",
                     "XZIXIYIIIIIIIIIXIIIIIXYIIZIIIZIXIIZZIIIIIYIIIIIIZIIIXIIIXIIIZIIZ",
                     "IIIXIIIIIIXYIIIXXZIIXIIXIIZZIIYIZIIIIZIIYYIYIYIIIIIYIXIXXIIIZXYI",
                     "XIIIZYZYXIXIXIIIIIXYIXIIXZIZIZIXZXIIIIIXIIXIZIIIZXIIXIIIXZIIZIIZ",
                     "XZIXIIIIXXXYIIIIXIIIXXIIXIZIIIIIZXIIZIIIIIIIIIXYZIYYXIIXIIIIIIYI"});
  BitGraph star(64);
  for (int v = 1; v < 64; ++v) star.join(0, v);
  NetworkOptions options;
  options.graph = &star;
  EXPECT_EQ(fault(table, 64, options, search_network(numbered(table, 64), options, steps(0))), "");
}

}  // namespace
