#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "support/oracles.h"
#include "zeltbraidwerk/linear/internal/factor_decoding.h"
#include "zeltbraidwerk/linear/syndrome_decoding.h"
#include "zeltbraidwerk/linear/syndrome_synthesis.h"

namespace {

using namespace synthesis;
using support::at;
using support::matrix;
using testing::ElementsAre;
using testing::IsEmpty;
using Entries = std::vector<DecodingEntry>;
using Pairs = std::vector<std::tuple<int, int>>;

BoolRow bits(std::string_view text) {
  return matrix({text})[0];
}

void add(const BoolMatrix& h, int row, const std::vector<int>& idx, BoolRow& residual) {
  for (std::size_t b = 0; b < residual.size(); ++b) {
    residual[b] = residual[b] != h[at(row)][at(idx[b])];
  }
}

/// The search on whole entries, every child built and sorted.
struct PlainSearch {
  const BoolMatrix& h;
  const std::vector<int>& idx;
  int depth;
  int width;
  Entries queue;
  std::vector<int> result;

  bool expand() {
    Entries next;
    for (const auto& [weight, residual, path] : queue) {
      Entries children;
      for (int row = 0; row < static_cast<int>(h.size()); ++row) {
        BoolRow rest = residual;
        add(h, row, idx, rest);
        std::vector<int> steps = path;
        steps.push_back(row);
        const int ones = static_cast<int>(std::ranges::count(rest, true));
        if (ones == 0) {
          result.insert(result.end(), steps.begin(), steps.end());
          return true;
        }
        children.emplace_back(ones, rest, steps);
      }
      std::ranges::sort(children);
      if (children.size() > at(width)) children.resize(at(width));
      next.insert(next.end(), children.begin(), children.end());
    }
    queue = next;
    return false;
  }

  bool start(const BoolRow& s) {
    queue = {{0, s, {}}};
    for (int level = 0; level < depth; ++level) {
      if (expand()) return true;
    }
    return false;
  }

  std::vector<int> solve(BoolRow s, bool afresh) {
    if (std::ranges::count(s, true) == 0 || start(s)) return result;
    while (true) {
      std::ranges::sort(queue);
      const int first = std::get<2>(queue[0])[0];
      result.push_back(first);
      add(h, first, idx, s);
      Entries kept;
      for (auto [weight, residual, path] : queue) {
        if (path[0] != first) continue;
        path.erase(path.begin());
        kept.emplace_back(weight, residual, path);
      }
      queue = kept;
      if (afresh ? start(s) : expand()) return result;
    }
  }
};

/// A solvable problem: unit rows among random ones, in columns of their own order.
struct Problem {
  BoolMatrix h;
  BoolRow s;
  std::vector<int> idx;

  Problem(int length, support::Rng& rng) {
    const int columns = length + 3;
    for (int c = 0; c < columns; ++c) idx.push_back(c);
    std::ranges::shuffle(idx, rng);
    const int others = static_cast<int>(rng() % 12);
    h = support::random_matrix(others + length, columns, rng);
    for (int b = 0; b < length; ++b) {
      std::fill(h[at(others + b)].begin(), h[at(others + b)].end(), false);
      h[at(others + b)][at(idx[at(b)])] = true;
    }
    std::ranges::shuffle(h, rng);
    s = support::random_matrix(1, length, rng)[0];
  }

  bool solved_by(const std::vector<int>& rows) const {
    BoolRow rest = s;
    for (const int row : rows) add(h, row, idx, rest);
    return std::ranges::count(rest, true) == 0;
  }
};

TEST(SyndromeDecoding, SolversMatchThePlainSearchStepForStep) {
  support::Rng rng(1);
  for (int round = 0; round < 600; ++round) {
    Problem p(round % 20 == 0 ? 70 : static_cast<int>(rng() % 14), rng);
    const int depth = 1 + static_cast<int>(rng() % 3);
    const int width = 1 + static_cast<int>(rng() % 4);
    const int length = static_cast<int>(p.s.size());
    const auto kept = SyndromeDecodingSolver_heuristic(p.h, p.s, length, depth, width, p.idx);
    ASSERT_EQ(kept, (PlainSearch{p.h, p.idx, depth, width, {}, {}}.solve(p.s, false)));
    ASSERT_TRUE(p.solved_by(kept));
    // With a depth of one, greedy steps over unit rows always lead down.
    const auto afresh = SyndromeDecodingSolver_heuristic_bis(p.h, p.s, length, 1, width, p.idx);
    ASSERT_EQ(afresh, (PlainSearch{p.h, p.idx, 1, width, {}, {}}.solve(p.s, true)));
    ASSERT_TRUE(p.solved_by(afresh));
  }
}

TEST(SyndromeDecoding, StepsMatchThePlainOnes) {
  support::Rng rng(2);
  int open = 0;
  for (int round = 0; round < 200; ++round) {
    Problem p(4 + static_cast<int>(rng() % 10), rng);
    const int depth = static_cast<int>(rng() % 3);
    const int width = 1 + static_cast<int>(rng() % 3);
    const int length = static_cast<int>(p.s.size());
    PlainSearch plain{p.h, p.idx, depth, width, {}, {9}};
    const bool solved = plain.start(p.s);
    Entries current(p.h.size() * 16);
    Entries next(current.size());
    Entries scratch(p.h.size());
    std::vector<int> result{9};
    auto state =
        create_queues(p.h, p.s, length, depth, width, p.idx, current, next, scratch, result);
    for (int level = 0; level < 2; ++level) {
      const auto count = solved ? 0 : plain.queue.size();
      ASSERT_EQ(state, std::pair(solved, static_cast<int>(count)));
      ASSERT_EQ(result, plain.result);
      ASSERT_TRUE(std::equal(plain.queue.begin(), plain.queue.begin() + std::ptrdiff_t(count),
                             current.begin()));
      if (solved || level == 1) break;
      ++open;
      if (plain.expand()) {
        state = update_queues(p.h, p.s, length, depth, width, p.idx, current, next, scratch, result,
                              state.second);
        EXPECT_EQ(state, std::pair(true, 0));
        EXPECT_EQ(result, plain.result);
        break;
      }
      state = update_queues(p.h, p.s, length, depth, width, p.idx, current, next, scratch, result,
                            state.second);
    }
  }
  EXPECT_GT(open, 50);
}

TEST(SyndromeDecoding, PinnedAnswers) {
  std::vector<int> idx{0, 1, 2};
  const BoolMatrix h = matrix({"110", "011", "001"});
  for (const auto solver :
       {SyndromeDecodingSolver_heuristic, SyndromeDecodingSolver_heuristic_bis}) {
    EXPECT_THAT(solver(h, bits("101"), 3, 1, 1, idx), ElementsAre(2, 0, 1, 2));
    EXPECT_THAT(solver(h, bits("101"), 3, 2, 3, idx), ElementsAre(0, 1));
    EXPECT_THAT(solver(h, bits("000"), 3, 2, 3, idx), IsEmpty());
    EXPECT_THAT(solver({}, bits("000"), 3, 2, 3, idx), IsEmpty());
    EXPECT_THAT(solver(matrix({"001", "110", "011", "011"}), bits("011"), 3, 3, 3, idx),
                ElementsAre(2));
    EXPECT_THAT(solver(h, bits("101"), 3, 0, -1, idx), ElementsAre(2, 0, 1, 2));
  }
  EXPECT_TRUE(Compare({bits("100"), {}}, {bits("011"), {}}));
  EXPECT_FALSE(Compare({bits("100"), {}}, {bits("001"), {}}));
}

TEST(SyndromeDecoding, ASearchWithoutAnEndThrows) {
  std::vector<int> idx{0, 1, 2, 3};
  for (const auto solver :
       {SyndromeDecodingSolver_heuristic, SyndromeDecodingSolver_heuristic_bis}) {
    for (const auto& h : {BoolMatrix{}, matrix({"1100", "1010"}), matrix({"0000"})}) {
      for (const int depth : {1, 2, 3}) {
        EXPECT_THROW(solver(h, bits("0010"), 4, depth, 2, idx), std::runtime_error);
      }
    }
    // The sum of all three rows, but the best second step takes back the first.
    const BoolMatrix h = matrix({"1100", "0110", "1011"});
    EXPECT_THROW(solver(h, bits("0001"), 4, 1, 1, idx), std::runtime_error);
    EXPECT_EQ(solver(h, bits("0001"), 4, 3, 3, idx).size(), 3u);
    // The circle is entered after two steps that lead down.
    const BoolMatrix blocks = matrix({"1110000000", "0001110000", "0000001100"});
    std::vector<int> all{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_THROW(solver(blocks, bits("1111110001"), 10, 1, 1, all), std::runtime_error);
  }
}

/// The circuit of a factor with the parities read off the circuit anew for every wire.
void build_factor(structures::CnotCircuit& circuit, int n, const BoolMatrix& factor,
                  const std::vector<int>& labels, int width, int depth) {
  BoolMatrix h;
  std::vector<int> positions;
  std::vector<int> wires;
  std::vector<int> idx{labels[0]};
  for (std::size_t i = 1; i < labels.size(); ++i) {
    const BoolRow s(factor[i].begin(), factor[i].begin() + std::ptrdiff_t(i));
    circuit.get_parities(h, n, positions, wires, labels[i - 1], idx);
    Pairs chosen;
    for (const int r : PlainSearch{h, idx, depth, width, {}, {}}.solve(s, false)) {
      chosen.emplace_back(positions[at(r)], wires[at(r)]);
    }
    std::ranges::sort(chosen);
    for (const auto& [position, wire] : std::vector(chosen.rbegin(), chosen.rend())) {
      circuit.insertGate(wire, labels[i], position);
      for (int& other : positions) other += other >= position;
    }
    idx.push_back(labels[i]);
  }
}

structures::CnotCircuit plain_synthesis(int n, const BoolMatrix& a, std::vector<int>& perm,
                                        int width, int depth) {
  std::vector<int> rows(at(n));
  std::vector<int> cols(at(n));
  const BoolMatrix f = LU(a, n, rows, cols);
  structures::CnotCircuit circuit(n);
  structures::CnotCircuit lower(n);
  const auto factor = [&] {
    BoolMatrix m(at(n), BoolRow(at(n)));
    for (std::size_t i = 0; i < m.size(); ++i) {
      for (std::size_t k = 0; k < m.size(); ++k) m[i][k] = f[at(rows[i])][at(cols[k])];
    }
    return m;
  };
  for (int k = 0; k < n; ++k) perm[at(rows[at(k)])] = cols[at(k)];
  build_factor(lower, n, factor(), cols, width, depth);
  std::ranges::reverse(rows);
  std::ranges::reverse(cols);
  build_factor(circuit, n, factor(), cols, width, depth);
  for (const auto& [control, target] : lower.gates) circuit.addGate(control, target);
  circuit.reverse();
  return circuit;
}

TEST(SyndromeSynthesis, MatchesThePlainAlgorithmGateForGate) {
  support::Rng rng(3);
  for (int n = 1; n <= 20; ++n) {
    for (int round = 0; round < 8; ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      const int width = 1 + round % 3;
      const int depth = 1 + round / 3 % 2;
      std::vector<int> perm(at(n));
      std::vector<int> expected_perm(at(n));
      const auto circuit = SyndromeSynthesis(n, m, perm, width, depth);
      ASSERT_EQ(circuit, plain_synthesis(n, m, expected_perm, width, depth)) << support::show(m);
      ASSERT_EQ(perm, expected_perm);
      ASSERT_TRUE(support::inverts_up_to(circuit, perm, m));
    }
  }
}

TEST(SyndromeSynthesis, PinnedAnswers) {
  std::vector<int> perm(3);
  EXPECT_THAT(SyndromeSynthesis(3, matrix({"110", "010", "101"}), perm, 2, 1).gates,
              ElementsAre(std::tuple(1, 0), std::tuple(0, 2)));
  EXPECT_THAT(perm, ElementsAre(0, 1, 2));
  EXPECT_THAT(SyndromeSynthesis(2, matrix({"11", "01"}), perm, 2, 2).gates,
              ElementsAre(std::tuple(1, 0)));
  EXPECT_THAT(SyndromeSynthesis(3, matrix({"001", "100", "010"}), perm, 2, 2).gates, IsEmpty());
  EXPECT_THAT(perm, ElementsAre(2, 0, 1));
}

TEST(SyndromeSynthesis, EndsOnSingularInputAndWhenTold) {
  std::vector<int> perm(3);
  for (const auto& m : {matrix({"110", "110", "001"}), matrix({"000", "000", "000"})}) {
    EXPECT_EQ(SyndromeSynthesis(3, m, perm, 0, 0).nbqbits, 3);
  }
  using namespace zelt::braidwerk::internal;
  const std::atomic<bool> stop = true;
  Control control;
  control.stop = &stop;
  EXPECT_FALSE(
      decode_factors(BitMatrix::pack(matrix({"10", "11"}), 2, 2), perm, 2, 2, control).finished);
}

}  // namespace
