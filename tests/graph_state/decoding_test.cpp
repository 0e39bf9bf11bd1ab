#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/foundations/internal/engine_draw.h"
#include "zeltbraidwerk/graph_state/internal/decoder.h"
#include "zeltbraidwerk/graph_state/parities.h"
#include "zeltbraidwerk/graph_state/syndrome.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::at;
using support::matrix;
using support::Rng;
using support::show;
using testing::ElementsAre;

struct Lists {
  BoolMatrix parities;
  std::vector<int> positions, qubits, codes;
};

Lists listed(const TripleCircuit& circuit, const BoolMatrix& graph, BoolRow& target, int n) {
  Lists l;
  get_parities(circuit, graph, target, l.parities, l.positions, l.qubits, l.codes, n);
  return l;
}

TEST(Parities, TellWhatAnInsertedGroupAddsToTheNewRow) {
  Rng rng(1);
  for (int round = 0; round < 100; ++round) {
    const int n = 1 + round % 5;
    const int last = n;
    const BoolMatrix graph = support::random_symmetric(n + 1, rng);
    TripleCircuit circuit;
    for (int k = 0; n > 1 && k < 6; ++k) {
      const int a = static_cast<int>(rng() % at(n));
      circuit.emplace_back(rng() % 4, a, (a + 1) % n);
    }
    BoolRow target = graph[at(last)];
    const Lists l = listed(circuit, graph, target, n);
    const auto new_row = [&](const TripleCircuit& all) {
      BoolMatrix rest = graph;
      simulate_circuit(rest, all, n + 1);
      return BoolRow(rest[at(last)].begin(), rest[at(last)].begin() + n);
    };
    const BoolRow before = new_row(circuit);
    ASSERT_TRUE(std::equal(before.begin(), before.end(), target.begin()));
    ASSERT_TRUE(std::is_sorted(l.positions.begin(), l.positions.end()));
    for (std::size_t j = 0; j < l.codes.size(); ++j) {
      TripleCircuit longer = circuit;
      insert_gates(longer, {static_cast<int>(j)}, l.positions, l.qubits, l.codes, n + 1);
      BoolRow wanted = new_row(longer);
      for (int k = 0; k < n; ++k) wanted[at(k)] = wanted[at(k)] != before[at(k)];
      BoolRow parity = l.parities[j];
      ASSERT_EQ(parity.size(), at(l.codes[j] == 2 ? n : n + 1));
      parity.resize(at(n));
      ASSERT_EQ(show(BoolMatrix{parity}), show(BoolMatrix{wanted})) << "candidate " << j;
    }
  }
}

TEST(Parities, StandInOrder) {
  BoolRow target{true, true, false};
  const BoolMatrix graph = matrix({"010", "101", "010"});
  const Lists l = listed({{1, 0, 1}, {0, 0, 0}, {2, 0, 1}}, graph, target, 2);
  EXPECT_THAT(l.positions, ElementsAre(0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 3, 3, 3, 3));
  EXPECT_THAT(l.codes, ElementsAre(2, 1, 3, 2, 1, 3, 1, 1, 3, 3, 1, 3, 2, 2));
  EXPECT_THAT(l.qubits, ElementsAre(0, 0, 0, 1, 1, 1, 0, 1, 0, 1, 0, 0, 0, 1));
  EXPECT_EQ(show(l.parities), "10 110 010 11 101 011 000 001 100 111 100 000 10 01");
  EXPECT_EQ(target, (BoolRow{false, true, false}));

  TripleCircuit circuit{{1, 0, 1}};
  insert_gates(circuit, {}, l.positions, l.qubits, l.codes, 3);
  EXPECT_EQ(circuit.size(), 1U);
  insert_gates(circuit, {0, 2, 7}, l.positions, l.qubits, l.codes, 3);
  EXPECT_EQ(circuit,
            (TripleCircuit{{1, 2, 0}, {0, 0, 0}, {2, 2, 0}, {0, 0, 0}, {1, 0, 1}, {2, 2, 1}}));
}

/// Whether the sum of the chosen vectors is the syndrome, at the first n places.
bool adds_up(const BoolMatrix& vectors, const std::vector<int>& chosen, BoolRow syndrome, int n) {
  for (const int j : chosen) {
    for (int k = 0; k < n; ++k) syndrome[at(k)] = syndrome[at(k)] != vectors[at(j)][at(k)];
  }
  return std::find(syndrome.begin(), syndrome.begin() + n, true) == syndrome.begin() + n;
}

TEST(Syndrome, DecodesAndKeepsItsAnswers) {
  Rng rng(2);
  support::Digest digest;
  for (int round = 0; round < 2000; ++round) {
    const bool is_large = round % 200 == 0;
    const int n = is_large ? 62 + round / 200 : 1 + static_cast<int>(rng() % 9);
    const int count = static_cast<int>(rng() % (is_large ? 1200 : 40));
    // With and without the unit vectors, and with places beyond n that must not matter.
    BoolMatrix vectors = support::random_matrix(count, n + 2, rng);
    const bool has_units = round % 2 || is_large;
    for (int k = 0; has_units && k < n; ++k) {
      vectors.insert(vectors.begin(), BoolRow(at(n + 2)))->at(at(k)) = true;
    }
    const BoolRow syndrome = support::random_matrix(1, n + 2, rng)[0];
    const auto greedy = solve_decoding_greedy(vectors, syndrome, n);
    EXPECT_EQ(solve_syndrome(vectors, syndrome, n, 0), greedy);

    BoolMatrix columns{BoolRow(syndrome.begin(), syndrome.begin() + n)};
    for (const BoolRow& v : vectors) columns.emplace_back(v.begin(), v.begin() + n);
    const BitMatrix problem =
        BitMatrix::pack(columns, static_cast<int>(columns.size()), n).transposed();
    const auto decoded = decode(problem, 5, SeededDraw(3, 0), Control{});
    digest.add(greedy, decoded);
    for (const auto& answer : {greedy, decoded}) {
      // Without unit vectors there may be no answer, or none that this way leads to.
      ASSERT_TRUE((answer.empty() && !has_units) || adds_up(vectors, answer, syndrome, n)) << round;
    }
  }
  EXPECT_EQ(digest.text(), "7dc487c800c97d07");
}

}  // namespace
