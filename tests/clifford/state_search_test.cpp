#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "support/tasks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <utility>

#include "support/dense.h"
#include "support/oracles.h"
#include "support/pauli.h"
#include "zeltbraidwerk/clifford/search/internal/decoded_state.h"
#include "zeltbraidwerk/clifford/search/internal/peeled_code.h"
#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/clifford/search/internal/state_kernels.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/word_beam.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using Move = zelt::braidwerk::internal::Gate;

PauliFrame frame_of(const std::vector<SignedString>& strings, int n) {
  PauliFrame frame(n, static_cast<int>(strings.size()));
  for (int r = 0; r < frame.rows(); ++r) {
    const auto& [negative, letters] = strings[at(r)];
    frame.set_negative(r, negative);
    const auto row = rows({letters})[0];
    for (int q = 0; q < n; ++q) frame.set_letter(r, q, row[at(q)]);
  }
  return frame;
}

std::vector<SignedString> graph_state(int n, double density, std::mt19937& rng) {
  std::vector<SignedString> strings;
  for (int a = 0; a < n; ++a) {
    strings.emplace_back(rng() % 2 != 0, std::string(at(n), 'I'));
    strings[at(a)].second[at(a)] = 'X';
    for (int b = 0; b < a; ++b) {
      if (!std::bernoulli_distribution(density)(rng)) continue;
      strings[at(a)].second[at(b)] = strings[at(b)].second[at(a)] = 'Z';
    }
  }
  return strings;
}

int edges_of(const std::vector<SignedString>& strings) {
  int ends = 0;
  for (const auto& [negative, letters] : strings) {
    ends += static_cast<int>(std::ranges::count(letters, 'Z'));
  }
  return ends / 2;
}

/// Independent products of Z with random signs, carried through a random circuit.
std::vector<SignedString> random_state(int n, int gates, std::mt19937& rng) {
  const auto tableau = tableau_of(random_clifford(n, 2 * gates, rng), n);
  std::vector<SignedString> strings;
  for (int r = 0; r < n; ++r) {
    std::string letters(at(n), 'I');
    letters[at(r)] = 'Z';
    for (int q = 0; q < r; ++q) letters[at(q)] = rng() % 2 ? 'Z' : 'I';
    strings.push_back(carried(letters, tableau));
    if (rng() % 2) strings.back().first = !strings.back().first;
  }
  std::ranges::shuffle(strings, rng);
  return strings;
}

CliffordCircuit searched(const std::vector<SignedString>& strings, std::uint64_t count) {
  return search_state(frame_of(strings, static_cast<int>(strings.size())), {}, steps(count));
}

/// Qubits are counted from the left, signs of stabilisers are those of the state.
TEST(StateSearch, turns_zeros_into_the_state_itself) {
  const std::vector<SignedString> strings{{true, "XZI"}, {false, "ZYZ"}, {true, "IZY"}};
  const CliffordCircuit found = searched(strings, 100);
  ASSERT_TRUE(stabilise_a_state(frame_of(strings, 3)));
  EXPECT_EQ(found.size.count, 2);
  const Dense circuit = unitary(to_gates(found.gates), 3);
  for (const auto& [negative, letters] : strings) {
    const Dense moved = pauli(letters) * circuit;
    for (std::size_t row = 0; row < 8; ++row) {
      const auto sign = negative ? -1.0 : 1.0;
      EXPECT_NEAR(std::abs(moved(row, 0) - sign * circuit(row, 0)), 0, 1e-9) << letters;
    }
  }
}

TEST(StateSearch, finds_the_trees_of_dense_graphs) {
  std::mt19937 rng(3);
  for (const int n : {2, 5, 9, 20}) {
    EXPECT_EQ(searched(graph_state(n, 1, rng), 0).size.count, n - 1) << n;
    EXPECT_EQ(searched(graph_state(n, 0, rng), 0).size.count, 0) << n;
  }
  for (int round = 0; round < 10; ++round) {
    const auto sparse = graph_state(30, 0.05, rng);
    EXPECT_LE(searched(sparse, 0).size.count, edges_of(sparse));
  }
}

/// Dense states by layers of many gates, above 80 qubits after a split into parts, and sparse ones
/// by an edge colouring.
TEST(StateSearch, TakesFewLayers) {
  std::mt19937 rng(5);
  const auto check = [](const std::vector<SignedString>& strings, int most_layers) {
    const auto n = static_cast<int>(strings.size());
    const Task task{.objective = Objective::depth, .seed = 1};
    const CliffordCircuit found = search_state(frame_of(strings, n), task, steps(3000));
    EXPECT_TRUE(prepares(to_gates(found.gates), strings)) << n;
    EXPECT_LE(found.size.depth, most_layers) << n;
  };
  check(graph_state(32, 0.5, rng), 11);
  check(random_state(32, 500, rng), 11);
  check(graph_state(100, 0.5, rng), 35);
  check(random_state(90, 1000, rng), 32);
  check(graph_state(100, 0.05, rng), 13);
}

/// Wires that no others are far from, whose columns all are near, and that are looked at in turn.
TEST(StatesBySums, AreAnyStates) {
  std::mt19937 rng(16);
  for (const int n : {1, 2, 3, 20, 64, 65, 129, 300}) {
    for (const auto& strings : {graph_state(n, 0.5, rng), random_state(n, 20 * n, rng)}) {
      const Code code{frame_of(strings, n), {}};
      const GateList list = by_sums(StateGraph(code.stabilisers));
      EXPECT_TRUE(prepares(to_gates(encoder_circuit(list, code).gates), strings)) << n;
      EXPECT_LE(list.count(), n * n / 9 + 3 * n) << n;
    }
  }
  EXPECT_LE(searched(graph_state(300, 0.5, rng), 0).size.count, 9900);
  const auto sparse = graph_state(300, 0.05, rng);
  EXPECT_LE(searched(sparse, 0).size.count, edges_of(sparse));
}

/// A block that is left after no, one and three others; of dense states and sparse ones.
TEST(StatesByDecoding, AreAnyStates) {
  std::mt19937 rng(6);
  zelt::braidwerk::internal::Rng draws(6, 0);
  const Effort unlimited;
  Meter meter(unlimited);
  const auto check = [&](const std::vector<SignedString>& strings) {
    const auto n = static_cast<int>(strings.size());
    const Code code{frame_of(strings, n), {}};
    const GateList list = state_by_decoding(code.stabilisers, at(n), draws, meter);
    EXPECT_TRUE(prepares(to_gates(encoder_circuit(list, code).gates), strings)) << n;
  };
  for (const int n : {1, 2, 130}) {
    check(graph_state(n, 0.5, rng));
    check(random_state(n, n, rng));
    check(graph_state(n, 0, rng));
  }
  check(graph_state(200, 0.5, rng));
  Effort few;
  few.steps = 5;
  Meter ends(few);
  EXPECT_EQ(state_by_decoding(frame_of(graph_state(130, 0.5, rng), 130), 100, draws, ends).wires(),
            0);
}

/// Greedy runs gate by gate take about 1660 gates, and as many steps. Where generators are light
/// they find far fewer than decoding.
TEST(StatesByDecoding, AreShorterWhereNoGeneratorsAreLight) {
  std::mt19937 rng(7);
  const int n = 150;
  const auto dense = graph_state(n, 0.5, rng);
  const CliffordCircuit found = searched(dense, 1500);
  EXPECT_TRUE(prepares(to_gates(found.gates), dense));
  EXPECT_LE(found.size.count, 1630);
  EXPECT_EQ(searched(dense, 1500).gates, found.gates);
  EXPECT_LE(searched(random_state(n, 300, rng), 2000).size.count, 300);
}

/// The state of a torus of l x l squares with both logical qubits 0, a qubit on each edge: stars of
/// X but for one, squares of Z but for one, and Z around the torus twice. Letters are exchanged on
/// every other qubit, as no others are to be expected of users.
std::vector<SignedString> torus(int l, std::mt19937& rng) {
  const int n = 2 * l * l;
  const auto edge = [l](int row, int column, int upright) {
    return at(2 * ((row + l) % l * l + (column + l) % l) + upright);
  };
  std::vector<SignedString> strings;
  const auto add = [&](char letter, const std::vector<std::size_t>& qubits) {
    std::string letters(at(n), 'I');
    for (const std::size_t q : qubits) letters[q] = (q % 2 == 0) == (letter == 'X') ? 'X' : 'Z';
    strings.emplace_back(rng() % 2 != 0, letters);
  };
  for (int row = 0; row < l; ++row) {
    for (int column = 0; column < l; ++column) {
      if (row + column == 0) continue;
      add('X', {edge(row, column, 0), edge(row, column - 1, 0), edge(row, column, 1),
                edge(row - 1, column, 1)});
      add('Z', {edge(row, column, 0), edge(row + 1, column, 0), edge(row, column, 1),
                edge(row, column + 1, 1)});
    }
  }
  std::vector<std::size_t> across;
  std::vector<std::size_t> down;
  for (int k = 0; k < l; ++k) {
    across.push_back(edge(0, k, 0));
    down.push_back(edge(k, 0, 1));
  }
  add('Z', across);
  add('Z', down);
  return strings;
}

/// Three gates for each star, at once where the generators are given as they are; where they are
/// multiplied, the light ones have to be found first.
TEST(StateSearch, TakesGeneratorsOfFewLettersAsTheyAre) {
  std::mt19937 rng(9);
  for (const int l : {8, 16}) {
    auto given = torus(l, rng);
    std::ranges::shuffle(given, rng);
    const CliffordCircuit found = searched(given, 0);
    EXPECT_TRUE(prepares(to_gates(found.gates), given));
    EXPECT_EQ(found.size.count, 3 * (l * l - 1));
    EXPECT_LE(found.size.depth, 2 * l);
  }
  std::vector<SignedString> multiplied = torus(6, rng);
  for (std::size_t r = 2; r < 70; ++r) {  // stars by stars, squares by squares
    for (std::size_t k = r % 2; k < r; k += 2) {
      if (rng() % 4 != 0) continue;
      auto& [minus, letters] = multiplied[r];
      minus = minus != multiplied[k].first;
      for (std::size_t q = 0; q < letters.size(); ++q) {
        if (multiplied[k].second[q] == 'I') continue;
        letters[q] = letters[q] == 'I' ? multiplied[k].second[q] : 'I';
      }
    }
  }
  const CliffordCircuit found = searched(multiplied, 1000);
  EXPECT_TRUE(prepares(to_gates(found.gates), multiplied));
  EXPECT_EQ(found.size.count, 3 * 35);
}

/// Also of generators that have to be multiplied, and of codes of many logical qubits.
TEST(PeeledCode, IsAnyStateOrCode) {
  std::mt19937 rng(10);
  zelt::braidwerk::internal::Rng draws(10, 0);
  for (int round = 0; round < 60; ++round) {
    const int n = std::vector{1, 2, 3, 6, 20, 70}[at(round % 6)];
    auto strings = round % 4 == 0 ? graph_state(n, 0.2, rng) : random_state(n, n, rng);
    strings.resize(round % 2 == 0 ? at(n) : at(n - n / 3));
    const Code code{frame_of(strings, n), {}};
    const StateGroup group(code.stabilisers);
    const auto found = peeled(group, n * n, draws);
    ASSERT_TRUE(found) << n;
    const EncoderCircuit circuit = encoder_circuit(backwards(found->gates, found->left), code);
    const auto undo = tableau_of(inverse(to_gates(circuit.gates)), n);
    for (const auto& [minus, letters] : strings) {
      auto [now_minus, before] = carried(letters, undo);
      EXPECT_EQ(now_minus, minus);
      EXPECT_EQ(before.find_first_of("XY"), std::string::npos) << n;
      for (const int wire : circuit.logical_wires) EXPECT_EQ(before[at(wire)], 'I') << n;
    }
    const int fewer = static_cast<int>(found->gates.size()) / 2;
    const auto shorter = peeled(group, fewer, draws);
    EXPECT_TRUE(!shorter || shorter->gates.size() <= at(fewer)) << n;
  }
}

/// The state of a random code as products of X, some letters exchanged.
std::vector<SignedString> state_of_code(int n, int generators, std::mt19937& rng) {
  std::vector<std::string> words;
  for (int r = 0; r < generators; ++r) {
    std::string word(at(n), 'I');
    word[at(r)] = 'X';
    for (int q = generators; q < n; ++q) word[at(q)] = rng() % 2 ? 'X' : 'I';
    words.push_back(word);
  }
  for (int q = generators; q < n; ++q) {
    std::string word(at(n), 'I');
    word[at(q)] = 'Z';
    for (int r = 0; r < generators; ++r) word[at(r)] = words[at(r)][at(q)] == 'X' ? 'Z' : 'I';
    words.push_back(word);
  }
  std::vector<SignedString> strings;
  for (std::string& word : words) {
    for (int q = 0; q < n; ++q) {
      char& letter = word[at(q)];
      if (letter != 'I') letter = "XYZ"[(q + (letter == 'Z' ? 1 : 0)) % 3];
    }
    strings.emplace_back(rng() % 2 != 0, word);
  }
  return strings;
}

/// Of codes with few generators of either kind, and of no other states.
TEST(WordBeam, TakesStatesOfTwoKindsApart) {
  std::mt19937 rng(11);
  zelt::braidwerk::internal::Rng draws(11, 0);
  const Effort unlimited;
  Meter meter(unlimited);
  const auto check = [&](const std::vector<SignedString>& strings, int most) {
    const auto n = static_cast<int>(strings.size());
    const Code code{frame_of(strings, n), {}};
    const auto beam = WordBeam::of(code.stabilisers);
    ASSERT_TRUE(beam) << n;
    const auto found = beam->run(20, draws, meter);
    ASSERT_TRUE(found) << n;
    const GateList list = backwards(found->gates, found->left);
    EXPECT_TRUE(prepares(to_gates(encoder_circuit(list, code).gates), strings)) << n;
    EXPECT_LE(list.count(), most) << n;
  };
  for (const int n : {2, 5, 12, 20}) {
    for (const int generators : {1, n / 3, n - 1, n - 2}) {
      if (generators < 1 || std::min(generators, n - generators) > 7) continue;
      check(state_of_code(n, generators, rng), generators * (n - generators));
    }
  }
  check(state_of_code(64, 6, rng), 6 * 58);
  check(torus(3, rng), 3 * 8);
  Effort few;
  few.steps = 5;
  Meter ends(few);
  EXPECT_FALSE(WordBeam::of(frame_of(torus(3, rng), 18))->run(20, draws, ends));
  const std::vector<SignedString> ring{
      {false, "XZIIZ"}, {false, "ZXZII"}, {false, "IZXZI"}, {false, "IIZXZ"}, {false, "ZIIZX"}};
  EXPECT_FALSE(WordBeam::of(frame_of(ring, 5)));
  EXPECT_FALSE(WordBeam::of(frame_of(torus(6, rng), 72)));
  EXPECT_FALSE(WordBeam::of(frame_of(state_of_code(3, 0, rng), 3)));
}

TEST(StateSearch, knows_what_stabilises_no_state_and_ends_on_it) {
  const std::vector<std::vector<SignedString>> wrong{
      {{false, "XI"}, {false, "ZI"}},                    // do not commute
      {{false, "XX"}, {true, "XX"}},                     // one and the same
      {{false, "II"}, {false, "IZ"}},                    // nothing
      {{false, "XXI"}, {false, "IXX"}, {false, "XIX"}},  // one the product of the others
  };
  for (const auto& strings : wrong) {
    const int n = static_cast<int>(strings.size());
    EXPECT_FALSE(stabilise_a_state(frame_of(strings, n)));
    searched(strings, 500);
  }
  EXPECT_FALSE(stabilise_a_state(frame_of({{false, "ZI"}}, 2)));
  EXPECT_TRUE(stabilise_a_state(frame_of({{true, "ZX"}, {false, "XZ"}}, 2)));
}

/// Multiplies every string by the gate's that anticommutes with it; labels are letters but for Y
/// and Z.
void apply_to(PauliFrame& strings, const Move& gate) {
  const auto label = [](unsigned char letter) { return letter < 2 ? letter : letter ^ 1; };
  for (int r = 0; r < strings.rows(); ++r) {
    int odd = 0;
    for (const End end : {gate.a, gate.b}) {
      const int now = label(strings.letter(r, wire_of(end)));
      odd ^= now != 0 && now != label_of(end) ? 1 : 0;
    }
    if (odd == 0) continue;
    for (const End end : {gate.a, gate.b}) {
      const int now = label(strings.letter(r, wire_of(end))) ^ label_of(end);
      strings.set_letter(r, wire_of(end), static_cast<unsigned char>(now < 2 ? now : now ^ 1));
    }
  }
}

/// Whether the group's generators are independent and commute with all stabilisers of the state,
/// which they then are themselves.
bool generates(const StateGroup& group, const PauliFrame& stabilisers) {
  const int n = group.qubits();
  PauliFrame generators(n, n);
  std::vector<Word> odd(static_cast<std::size_t>(words_for(n)));
  for (int k = 0; k < n; ++k) {
    group.each_letter(k, [&](int q, int label) {
      generators.set_letter(k, q, static_cast<unsigned char>(label < 2 ? label : label ^ 1));
    });
    stabilisers.anticommuting_rows(generators, k, odd.data());
    if (std::ranges::any_of(odd, [](Word word) { return word != 0; })) return false;
  }
  return stabilise_a_state(generators);
}

/// What a gate is told to make of the generators is what it makes of them; products found are never
/// heavier than what was known; and the state stays what it is.
TEST(StateGroup, foresees_what_a_gate_does) {
  std::mt19937 rng(5);
  zelt::braidwerk::internal::Rng draws(5, 0);
  const auto worth = [](const StateGroup& group) {
    double sum = 0;
    for (int k = 0; k < group.qubits(); ++k) {
      sum += weight_worth(static_cast<std::size_t>(group.weight(k)));
    }
    return sum;
  };
  for (int round = 0; round < 60; ++round) {
    const int n = std::vector{3, 5, 10, 40, 66}[static_cast<std::size_t>(round % 5)];
    PauliFrame stabilisers = frame_of(random_state(n, (round % 3 + 1) * n, rng), n);
    StateGroup group(stabilisers);
    for (int k = 0; k < 3 * n && group.left() > 0; ++k) {
      std::vector<int> open;
      for (int q = 0; q < n; ++q) {
        if (group.label(q) == 0) open.push_back(q);
      }
      std::ranges::shuffle(open, rng);
      const auto label = [&] { return static_cast<int>(rng() % 3U) + 1; };
      const Move gate{end_of(open[0], label()), end_of(open[1], label())};
      const double foreseen = group.outlook_after(gate).worth;
      const int left = group.left();
      group.apply(gate);
      apply_to(stabilisers, gate);
      // A qubit that comes to be finished is taken out of the others, which is not foreseen.
      if (group.left() == left) {
        EXPECT_DOUBLE_EQ(worth(group), foreseen);
      }
      EXPECT_GE(worth(group), foreseen);
      if (k % 4 == 0) {
        const double before = worth(group);
        group.lighten(3, draws);
        EXPECT_GE(worth(group), before);
      }
      ASSERT_TRUE(generates(group, stabilisers)) << n << " qubits, gate " << k;
    }
  }
}

/// A qubit that two rows have to themselves: they alone have letters there, X and Z, every row is
/// still the product that it says, and the rows can be had back.
TEST(InformationSets, ExchangeQubits) {
  std::mt19937 rng(7);
  for (const int n : {5, 40, 64, 65, 128, 150}) {
    const int words = words_for(n);
    const auto length = at(3 * words);
    std::vector<Word> rows(at(n) * length);
    for (int r = 0; r < n; ++r) {
      Word* row = rows.data() + at(r) * length;
      for (int q = 0; q < n; ++q) {
        for (int plane = 0; plane < 2; ++plane) {
          row[plane * words + q / word_bits] |= Word{rng() % 2U} << (q % word_bits);
        }
      }
      row[2 * words + r / word_bits] = Word{1} << (r % word_bits);
    }
    const std::vector<Word> given = rows;
    const auto bit = [&](int r, int plane, int q) {
      return (rows[at(r) * length + at(plane * words + q / word_bits)] >> (q % word_bits) & 1) != 0;
    };
    const auto is_alone = [&](int r, int plane, int q) {
      for (int other = 0; other < n; ++other) {
        if (bit(other, plane, q) != (other == r)) return false;
      }
      return true;
    };
    std::vector<int> order(at(n));
    std::iota(order.begin(), order.end(), 0);
    std::vector<int> owned(at(n), -1);
    const int done = reduce_rows(rows.data(), n, words, order.data(), n, 0, owned.data());
    EXPECT_GT(done, n / 2);
    for (int r = 0; r + 1 < done; ++r) {
      if (owned[at(r)] != owned[at(r + 1)]) continue;
      EXPECT_TRUE(is_alone(r, 0, owned[at(r)]) && is_alone(r + 1, 1, owned[at(r)]));
    }
    int taken = 0;
    for (int k = 0; k < 200; ++k) {
      const int first = static_cast<int>(rng() % static_cast<unsigned>(n - 1));
      const int q = static_cast<int>(rng() % static_cast<unsigned>(n));
      const Word* row = rows.data() + at(first) * length;
      const bool differ =
          (bit(first, 0, q) && bit(first + 1, 1, q)) != (bit(first, 1, q) && bit(first + 1, 0, q));
      ASSERT_EQ(anticommute_at(row, row + length, words, q), differ);
      if (!differ) continue;
      ++taken;
      take_qubit(rows.data(), n, words, first, q);
      ASSERT_TRUE(is_alone(first, 0, q) && is_alone(first + 1, 1, q)) << n << " qubits";
    }
    EXPECT_GT(taken, 10);
    BitMatrix parts(n, n);
    for (int r = 0; r < n; ++r) {
      std::vector<Word> product(length);
      for (int g = 0; g < n; ++g) {
        if (!bit(r, 2, g)) continue;
        parts.set(r, g);
        for (std::size_t w = 0; w < length; ++w) product[w] ^= given[at(g) * length + w];
      }
      EXPECT_TRUE(std::equal(product.begin(), product.end(), rows.data() + at(r) * length));
    }
    EXPECT_TRUE(is_invertible(parts)) << n << " qubits";
  }
}

// --- on a device ---------------------------------------------------------------------------------

/// The generators of a state, signs left out, brought to a form that only its own have: X bits from
/// bit n on, Z bits below, in reduced row echelon form.
using Rows = std::vector<unsigned>;

Rows reduced(Rows rows) {
  std::size_t done = 0;
  for (unsigned bit = 1U << (2 * rows.size()); (bit >>= 1) != 0;) {
    const auto pivot = std::find_if(rows.begin() + static_cast<std::ptrdiff_t>(done), rows.end(),
                                    [&](unsigned row) { return (row & bit) != 0; });
    if (pivot == rows.end()) continue;
    std::iter_swap(rows.begin() + static_cast<std::ptrdiff_t>(done), pivot);
    for (std::size_t r = 0; r < rows.size(); ++r) {
      if (r != done && (rows[r] & bit) != 0) rows[r] ^= rows[done];
    }
    ++done;
  }
  return rows;
}

template <class F>
Rows after(Rows rows, F&& gate) {
  for (unsigned& row : rows) row = gate(row);
  return reduced(rows);
}

/// The fewest gates on edges from zeros to every state: breadth first, gates on single qubits free.
std::map<Rows, int> fewest_gates(const BitGraph& device) {
  const int n = device.size();
  const auto x = [n](int q) { return 1U << (n + q); };
  const auto z = [](int q) { return 1U << q; };
  Rows zeros;
  for (int q = 0; q < n; ++q) zeros.push_back(z(q));
  std::map<Rows, int> fewest;
  std::vector<Rows> level;
  const auto reach = [&](const Rows& first, int count) {
    std::vector<Rows> open{first};
    while (!open.empty()) {
      const Rows rows = open.back();
      open.pop_back();
      if (!fewest.emplace(rows, count).second) continue;
      level.push_back(rows);
      for (int q = 0; q < n; ++q) {
        open.push_back(after(rows, [&](unsigned row) {  // H
          return ((row & x(q)) != 0) != ((row & z(q)) != 0) ? row ^ x(q) ^ z(q) : row;
        }));
        open.push_back(
            after(rows, [&](unsigned row) { return (row & x(q)) != 0 ? row ^ z(q) : row; }));  // S
      }
    }
  };
  reach(reduced(zeros), 0);
  for (int count = 1; !level.empty(); ++count) {
    const std::vector<Rows> before = std::exchange(level, {});
    for (const Rows& rows : before) {
      for (int b = 1; b < n; ++b) {
        for (int a = 0; a < b; ++a) {
          if (!device.joined(a, b)) continue;
          reach(after(rows,
                      [&](unsigned row) {  // CZ
                        return row ^ ((row & x(a)) != 0 ? z(b) : 0) ^
                               ((row & x(b)) != 0 ? z(a) : 0);
                      }),
                count);
        }
      }
    }
  }
  return fewest;
}

Rows rows_of_state(const std::vector<SignedString>& strings, const std::vector<int>& wires) {
  const auto n = static_cast<int>(wires.size());
  Rows rows;
  for (const auto& [negative, letters] : strings) {
    rows.push_back(0);
    for (int q = 0; q < n; ++q) {
      const char letter = letters[at(q)];
      if (letter == 'X' || letter == 'Y') rows.back() |= 1U << (n + wires[at(q)]);
      if (letter == 'Z' || letter == 'Y') rows.back() |= 1U << wires[at(q)];
    }
  }
  return reduced(rows);
}

BitGraph device_of(int n, const std::vector<std::pair<int, int>>& edges) {
  BitGraph graph(n);
  for (const auto& [a, b] : edges) graph.join(a, b);
  return graph;
}

TEST(StatesOnADevice, AreMadeByTheFewestGatesOnFewQubits) {
  std::mt19937 rng(8);
  const BitGraph devices[] = {
      device_of(4, {{0, 1}, {1, 2}, {2, 3}}),
      device_of(4, {{0, 2}, {1, 2}, {2, 3}}),
      device_of(5, {{0, 3}, {3, 1}, {1, 4}, {4, 2}}),
      device_of(5, {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 0}}),
      device_of(5, {{0, 1}, {1, 2}, {1, 3}, {3, 4}}),
  };
  for (const BitGraph& device : devices) {
    const int n = device.size();
    const std::map<Rows, int> fewest = fewest_gates(device);
    EXPECT_EQ(fewest.size(), n == 4 ? 2295U : 75735U);
    for (int round = 0; round < 12; ++round) {
      const auto strings = random_state(n, 3 * n, rng);
      std::vector<int> wires(at(n));
      std::iota(wires.begin(), wires.end(), 0);
      const int in_place = fewest.at(rows_of_state(strings, wires));
      int anywhere = in_place;
      do {
        anywhere = std::min(anywhere, fewest.at(rows_of_state(strings, wires)));
      } while (std::ranges::next_permutation(wires).found);
      for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
        const Task task{.outputs = outputs, .device = &device, .seed = 1};
        const CliffordCircuit found = search_state(frame_of(strings, n), task, steps(3000));
        EXPECT_EQ(found.size.count, outputs == Outputs::in_place ? in_place : anywhere);
      }
    }
  }
}

/// Also above the 64 wires that beams are for.
TEST(StatesOnADevice, AreMadeOnEdgesAlone) {
  std::mt19937 rng(9);
  for (const int n : {1, 2, 7, 17, 66}) {
    BitGraph tree(n);
    for (int q = 1; q < n; ++q) tree.join(q, static_cast<int>(rng() % static_cast<unsigned>(q)));
    const auto strings = random_state(n, 2 * n, rng);
    for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
      const Task task{.outputs = outputs, .device = &tree, .seed = 1};
      const CliffordCircuit found = search_state(frame_of(strings, n), task, steps(300));
      std::vector<SignedString> placed = strings;
      for (std::size_t k = 0; k < placed.size(); ++k) {
        for (int q = 0; q < n; ++q) {
          placed[k].second[at(found.wires[at(q)])] = strings[k].second[at(q)];
        }
      }
      EXPECT_TRUE(prepares(to_gates(found.gates), placed)) << n;
      EXPECT_TRUE(std::ranges::all_of(found.gates, [&](const CliffordGate& gate) {
        return !gate.is_pair() || tree.joined(gate.a, gate.b);
      }));
      if (outputs == Outputs::in_place) {
        EXPECT_TRUE(std::ranges::is_sorted(found.wires));
      }
    }
  }
}

}  // namespace
