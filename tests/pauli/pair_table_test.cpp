#include "zeltbraidwerk/pauli/search/internal/pair_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/letter_rows.h"

namespace {

using namespace zelt::braidwerk::internal;

using Labels = std::vector<int>;  // by wire, 0 for no letter

struct Strings {
  Strings(int qubits, int count, std::mt19937& random) : rows(qubits, count) {
    const auto words = static_cast<std::size_t>(words_for(qubits));
    for (int row = 0; row < count; ++row) {
      Labels string(static_cast<std::size_t>(qubits));
      std::vector<Word> packed(2 * words);
      const unsigned density = 1 + static_cast<unsigned>(row) % 4;
      for (std::size_t q = 0; q < string.size(); ++q) {
        const bool has_letter = random() % 4 < density;
        string[q] = has_letter ? 1 + static_cast<int>(random() % 3) : 0;
        packed[q / word_bits] |= static_cast<Word>(string[q] & 1) << (q % word_bits);
        packed[words + q / word_bits] |= static_cast<Word>(string[q] >> 1) << (q % word_bits);
      }
      rows.append(packed.data());
      labels.push_back(string);
    }
  }

  LetterRows rows;
  std::vector<Labels> labels;
};

int weight_of(const Labels& string) {
  return static_cast<int>(string.size() - static_cast<std::size_t>(std::ranges::count(string, 0)));
}

/// A letter that is not the gate's is multiplied by the gate's label on the other wire.
Labels after(const Labels& string, const Gate& gate) {
  const auto a = static_cast<std::size_t>(wire_of(gate.a));
  const auto b = static_cast<std::size_t>(wire_of(gate.b));
  Labels result = string;
  if (string[a] != 0 && string[a] != label_of(gate.a)) result[b] ^= label_of(gate.b);
  if (string[b] != 0 && string[b] != label_of(gate.b)) result[a] ^= label_of(gate.a);
  return result;
}

// On one word, on several, and with gates across them.
TEST(LetterRows, FollowEveryGateByItsDefinition) {
  std::mt19937 random(1);
  for (const int qubits : {2, 5, 64, 65, 130}) {
    Strings strings(qubits, 40, random);
    for (int k = 0; k < 300; ++k) {
      const int a = static_cast<int>(random() % static_cast<unsigned>(qubits));
      const int b =
          (a + 1 + static_cast<int>(random() % static_cast<unsigned>(qubits - 1))) % qubits;
      const Gate gate{end_of(a, 1 + static_cast<int>(random() % 3)),
                      end_of(b, 1 + static_cast<int>(random() % 3))};
      strings.rows.play(gate);
      for (std::size_t row = 0; row < strings.labels.size(); ++row) {
        Labels& string = strings.labels[row];
        string = after(string, gate);
        ASSERT_EQ(strings.rows.weight(static_cast<int>(row)), weight_of(string));
        for (const int q : {a, b}) {
          ASSERT_EQ(strings.rows.label(static_cast<int>(row), q),
                    string[static_cast<std::size_t>(q)]);
        }
      }
    }
  }
}

// Rows of all weights, light and heavy, together and one by one.
TEST(PairTable, TellsWhatEveryGateGains) {
  std::mt19937 random(2);
  for (const int qubits : {3, 9, 24, 70}) {
    const Strings strings(qubits, 60, random);
    PairTable table(qubits);
    std::vector<std::vector<PairTable::Pull>> pulls(static_cast<std::size_t>(qubits) + 1);
    std::vector<int> letters(static_cast<std::size_t>(qubits));
    std::vector<PairTable::Pull> all;
    for (int row = 0; row < strings.rows.count(); ++row) {
      const PairTable::Pull pull{row, static_cast<std::uint32_t>(random() % 1'000'000),
                                 static_cast<std::uint32_t>(random() % 1'000'000)};
      all.push_back(pull);
      if (row % 5 == 0) {
        table.add(letters.data(), strings.rows.letters(row, letters.data()), pull.less, pull.more);
      } else {
        pulls[static_cast<std::size_t>(strings.rows.weight(row))].push_back(pull);
      }
    }
    for (int weight = 0; weight <= qubits; ++weight) {
      table.add(strings.rows, weight, pulls[static_cast<std::size_t>(weight)]);
    }
    GateCosts costs(qubits, nullptr);
    table.score(costs);
    for (const GateCosts::Pair& pair : costs.pairs()) {
      for (int k = 0; k < 9; ++k) {
        std::int64_t cost = 0;
        for (const PairTable::Pull& pull : all) {
          const Labels& string = strings.labels[static_cast<std::size_t>(pull.row)];
          const Labels changed = after(string, GateCosts::gate(pair, k));
          for (const int q : {pair.a, pair.b}) {
            const int before = string[static_cast<std::size_t>(q)];
            const int now = changed[static_cast<std::size_t>(q)];
            if (before != 0 && now == 0) cost -= pull.less;
            if (before == 0 && now != 0) cost += pull.more;
          }
        }
        ASSERT_EQ(costs.of(pair, k), cost);
      }
    }
  }
}

}  // namespace
