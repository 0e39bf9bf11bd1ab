#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

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
using testing::IsEmpty;

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
    BoolMatrix graph = support::random_matrix(n + 1, n + 1, rng);
    for (int i = 0; i <= n; ++i) {
      for (int j = 0; j < i; ++j) graph[at(i)][at(j)] = graph[at(j)][at(i)];
    }
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

/// The greedy decoder a bit at a time. Gives up where the way must be going round in circles.
std::vector<int> naive_greedy(const BoolMatrix& vectors, BoolRow syndrome, int n, bool& solved) {
  std::vector<bool> odd(vectors.size());
  const BoolRow zero(syndrome.size());
  solved = true;
  for (int step = 0; HammingXOR(syndrome, zero, n) != 0; ++step) {
    int best = -1;
    int least = n + 1;
    for (int j = 0; j < static_cast<int>(vectors.size()); ++j) {
      const int distance = HammingXOR(vectors[at(j)], syndrome, n);
      if (distance < least) best = j;
      least = std::min(least, distance);
    }
    solved = best >= 0 && step <= 1000;
    if (!solved) return {};
    for (int k = 0; k < n; ++k) {
      syndrome[at(k)] = syndrome[at(k)] != vectors[at(best)][at(k)];
    }
    odd[at(best)] = !odd[at(best)];
  }
  std::vector<int> answer;
  for (int j = 0; j < static_cast<int>(odd.size()); ++j) {
    if (odd[at(j)]) answer.push_back(j);
  }
  return answer;
}

/// The restarts a bit at a time, positions combined as written.
std::vector<int> naive_decode(const BoolMatrix& vectors, const BoolRow& syndrome, int n, int tries,
                              const Draw& draw) {
  bool solved = false;
  std::vector<int> best = naive_greedy(vectors, syndrome, n, solved);
  std::vector<int> order(vectors.size());
  std::iota(order.begin(), order.end(), 0);
  for (int t = 0; t < tries && !(solved && best.size() <= 2); ++t) {
    BoolMatrix form = vectors;
    form.push_back(syndrome);
    const auto add = [&](int u, int v) {
      for (BoolRow& row : form) row[at(v)] = row[at(v)] != row[at(u)];
    };
    for (int p = 0, l = 0; p < n && l < static_cast<int>(order.size()); ++l) {
      shuffle_step(order, at(l), draw);
      const BoolRow& w = form[at(order[at(l)])];
      int u = p;
      while (u < n && !w[at(u)]) ++u;
      if (u < n && u != p) add(u, p);
      if (!w[at(p)]) continue;
      for (int v = 0; v < n; ++v) {
        if (v != p && w[at(v)]) add(p, v);
      }
      ++p;
    }
    const BoolRow target = form.back();
    form.pop_back();
    bool also_solved = false;
    const std::vector<int> answer = naive_greedy(form, target, n, also_solved);
    if (also_solved && (!solved || answer.size() < best.size())) {
      best = answer;
      solved = true;
    }
  }
  return best;
}

TEST(Syndrome, DecodesAsWritten) {
  Rng rng(2);
  for (int round = 0; round < 2000; ++round) {
    const bool is_large = round % 200 == 0;
    const int n = is_large ? 62 + round / 200 : 1 + static_cast<int>(rng() % 9);
    const int count = static_cast<int>(rng() % (is_large ? 1200 : 40));
    // With and without the unit vectors, and with places beyond n that must not matter.
    BoolMatrix vectors = support::random_matrix(count, n + 2, rng);
    if (round % 2 || is_large) {
      for (int k = 0; k < n; ++k)
        vectors.insert(vectors.begin(), BoolRow(at(n + 2)))->at(at(k)) = true;
    }
    const BoolRow syndrome = support::random_matrix(1, n + 2, rng)[0];
    bool solved = false;
    ASSERT_EQ(solve_decoding_greedy(vectors, syndrome, n),
              naive_greedy(vectors, syndrome, n, solved));
    ASSERT_EQ(solve_syndrome(vectors, syndrome, n, 0), naive_greedy(vectors, syndrome, n, solved));

    BoolMatrix columns{BoolRow(syndrome.begin(), syndrome.begin() + n)};
    for (const BoolRow& v : vectors) columns.emplace_back(v.begin(), v.begin() + n);
    const BitMatrix problem =
        BitMatrix::pack(columns, static_cast<int>(columns.size()), n).transposed();
    ASSERT_EQ(decode(problem, 5, SeededDraw(3, 0), Control{}),
              naive_decode(vectors, syndrome, n, 5, SeededDraw(3, 0)));
  }
}

TEST(Syndrome, KeepsToItsWorkedExamples) {
  const BoolMatrix vectors = matrix({"110", "011", "011", "100", "010", "001"});
  EXPECT_THAT(solve_decoding_greedy(vectors, {false, false, false}, 3), IsEmpty());
  EXPECT_THAT(solve_decoding_greedy(vectors, {true, true, true}, 0), IsEmpty());
  EXPECT_THAT(solve_decoding_greedy(vectors, {false, true, true}, 3), ElementsAre(1));
  EXPECT_THAT(solve_syndrome(vectors, {true, true, true}, 3, -1), ElementsAre(0, 5));
  // No unit vectors: there may be no answer, or none that this way leads to.
  EXPECT_THAT(solve_decoding_greedy({}, {true}, 1), IsEmpty());
  EXPECT_THAT(solve_syndrome(matrix({"11"}), {true, false}, 2, 3), IsEmpty());
}

}  // namespace
