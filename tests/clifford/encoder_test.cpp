#include "zeltbraidwerk/clifford/encoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <vector>

#include "support/oracles.h"
#include "support/pauli.h"

namespace {

using namespace support;
using synthesis::EncoderOptions;
using synthesis::EncoderResult;
using synthesis::synthesize_encoder;

struct Strings {
  std::vector<std::vector<unsigned char>> letters;
  std::vector<bool> minus;

  void push_back(const SignedString& string) {
    letters.push_back(rows({string.second})[0]);
    minus.push_back(string.first);
  }
};

struct RandomCode {
  Strings stabilisers;
  Strings logicals;  // of X, then of Z
};

/// What a random circuit makes of products of Z on all but the first k qubits, and of X and Z on
/// these, multiplied by Z on others.
RandomCode random_code(int n, int k, std::mt19937& rng) {
  const auto tableau = tableau_of(random_clifford(n, 6 * n, rng), n);
  const auto image = [&](std::string letters, int first_zero) {
    for (int q = first_zero; q < n; ++q) letters[at(q)] = rng() % 2 ? 'Z' : letters[at(q)];
    return carried(letters, tableau);
  };
  RandomCode code;
  for (int q = k; q < n; ++q) {
    std::string letters(at(n), 'I');
    letters[at(q)] = 'Z';
    code.stabilisers.push_back(image(letters, q + 1));
  }
  for (const char letter : {'X', 'Z'}) {
    for (int q = 0; q < k; ++q) {
      std::string letters(at(n), 'I');
      letters[at(q)] = letter;
      code.logicals.push_back(image(letters, k));
    }
  }
  return code;
}

/// Whether each string, back through the circuit, is plus a letter on the wire of its logical qubit
/// and I or Z where zeros come in.
bool become(const Strings& strings, const std::function<std::string(int)>& wanted,
            const EncoderResult& result, const structures::OperatorTableau& undo) {
  for (std::size_t r = 0; r < strings.letters.size(); ++r) {
    auto [minus, letters] = carried(text(strings.letters[r]), undo);
    std::string logical;
    for (const int wire : result.logical_wires) {
      logical += letters[at(wire)];
      letters[at(wire)] = 'I';
    }
    if (minus != strings.minus[r] || logical != wanted(static_cast<int>(r))) return false;
    if (letters.find_first_of("XY") != std::string::npos) return false;
  }
  return true;
}

TEST(Encoder, has_the_stabilisers_and_logical_operators_with_their_signs) {
  std::mt19937 rng(3);
  for (int round = 0; round < 60; ++round) {
    const int n = 1 + round % 12;
    const int k = static_cast<int>(rng() % at(n));
    const RandomCode code = random_code(n, k, rng);
    EncoderOptions options;
    options.seed = rng();
    options.steps = round % 3 * 400;
    options.objective = round % 2 == 0 ? synthesis::Objective::count : synthesis::Objective::depth;
    for (const Strings& logicals : {Strings{}, code.logicals}) {
      SCOPED_TRACE(std::to_string(n) + " qubits, " + std::to_string(k) + " logical");
      const EncoderResult result =
          synthesize_encoder(code.stabilisers.letters, code.stabilisers.minus, logicals.letters,
                             logicals.minus, options);
      ASSERT_EQ(static_cast<int>(result.logical_wires.size()), k);
      const auto undo = tableau_of(inverse(result.gates), n);
      const auto none = [&](int) { return std::string(at(k), 'I'); };
      const auto own = [&](int r) {
        std::string letters(at(k), 'I');
        letters[at(r % k)] = r < k ? 'X' : 'Z';
        return letters;
      };
      EXPECT_TRUE(become(code.stabilisers, none, result, undo));
      EXPECT_TRUE(become(logicals, own, result, undo));
      EXPECT_EQ(result.count, std::ranges::count(result.gates, "CNOT", &structures::Gate::name));
    }
  }
}

/// More generators than a word has bits, and fewer words of them than of qubits.
TEST(Encoder, takes_codes_of_more_qubits_than_a_word_has_bits) {
  std::mt19937 rng(5);
  for (const auto& [n, k] : {std::pair{66, 3}, std::pair{130, 70}}) {
    const RandomCode code = random_code(n, k, rng);
    EncoderOptions options;
    options.steps = 30;
    const EncoderResult result =
        synthesize_encoder(code.stabilisers.letters, code.stabilisers.minus, options);
    const auto none = [k = k](int) { return std::string(at(k), 'I'); };
    EXPECT_TRUE(become(code.stabilisers, none, result, tableau_of(inverse(result.gates), n)));
  }
}

TEST(Encoder, refuses_what_is_no_code) {
  using Letters = std::vector<std::vector<unsigned char>>;
  const auto refused = [](const Letters& stabilisers, const Letters& logicals) {
    EXPECT_THROW(synthesize_encoder(stabilisers, std::vector<bool>(stabilisers.size()), logicals,
                                    std::vector<bool>(logicals.size())),
                 std::invalid_argument);
  };
  refused(rows({"XX", "ZI"}), {});                             // do not commute
  refused(rows({"XX", "XX"}), {});                             // one and the same
  refused(rows({"XX", "XXX"}), {});                            // of two lengths
  refused(rows({"X", "X"}), {});                               // more than qubits
  refused({{4, 0}}, {});                                       // no letters
  refused(rows({"ZZ"}), rows({"XX"}));                         // one of two
  refused(rows({"ZZ"}), rows({"XI", "ZI"}));                   // does not commute with a stabiliser
  refused(rows({"ZZ"}), rows({"XX", "ZZ"}));                   // commute with each other
  refused(rows({"ZZI"}), rows({"XXI", "IIX", "IIZ", "ZII"}));  // in another order
  EXPECT_THROW(synthesize_encoder(rows({"ZZ"}), {}), std::invalid_argument);
  EncoderOptions anywhere;
  anywhere.outputs = synthesis::Outputs::anywhere;
  EXPECT_THROW(synthesize_encoder(rows({"ZZ"}), {false}, anywhere), std::invalid_argument);
}

}  // namespace
