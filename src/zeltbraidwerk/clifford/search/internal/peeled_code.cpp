#include "zeltbraidwerk/clifford/search/internal/peeled_code.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/state_graph.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

PauliFrame generators_of(const StateGroup& group) {
  PauliFrame strings(group.qubits(), group.generators());
  for (int k = 0; k < group.generators(); ++k) {
    group.each_letter(k, [&](int q, int label) { strings.set_letter(k, q, letter_for(label)); });
  }
  return strings;
}

class Peeling {
 public:
  Peeling(PauliFrame generators, int most, Rng& rng)
      : strings_(std::move(generators)),
        most_(most),
        rng_(rng),
        layers_(index(strings_.qubits())) {}

  /// Leaves generators that have these letters alone, as they then are, and others of one letter.
  /// False where it takes too many gates.
  bool peel(std::vector<int> labels) {
    labels_ = std::move(labels);
    open_.assign(index(strings_.words()), 0);
    for (int q = 0; q < strings_.qubits(); ++q) {
      for (int w = 0; w < strings_.words(); ++w) open_[index(w)] |= with_another(q, w);
    }
    int gates = static_cast<int>(gates_.size());
    for (int r = 0; r < strings_.rows(); ++r) gates += is_open(r) ? strings_.weight(r) - 1 : 0;
    if (gates > most_) return false;
    for (auto [row, q] = next(); row >= 0; std::tie(row, q) = next()) {
      stop_point();
      make_alone(row, q);
      if (static_cast<int>(gates_.size()) + strings_.weight(row) - 1 > most_) return false;
      take(row, q);
    }
    return true;
  }

  const PauliFrame& strings() const { return strings_; }
  const std::vector<Gate>& gates() const { return gates_; }

 private:
  /// The rows that have a letter on a qubit that is not the one chosen.
  Word with_another(int q, int w) const {
    const int label = labels_[index(q)];
    return (strings_.x(q)[w] & (Word{0} - Word(label >> 1 & 1))) ^
           (strings_.z(q)[w] & (Word{0} - Word(label & 1)));
  }
  bool has_another(int r, int q) const {
    return (with_another(q, r / word_bits) >> (r % word_bits) & 1) != 0;
  }
  bool is_open(int r) const { return (open_[index(r / word_bits)] >> (r % word_bits) & 1) != 0; }

  /// The qubit on which the fewest rows have another letter, of several one in the lowest layer,
  /// and the lightest of these rows.
  std::pair<int, int> next() {
    int qubit = -1;
    std::pair least{std::numeric_limits<int>::max(), 0};
    int equal = 0;
    for (int q = 0; q < strings_.qubits(); ++q) {
      int rows = 0;
      for (int w = 0; w < strings_.words(); ++w) {
        rows += std::popcount(with_another(q, w) & open_[index(w)]);
      }
      const std::pair here{rows, layers_[index(q)]};
      if (rows == 0 || here > least) continue;
      equal = here < least ? 1 : equal + 1;
      least = here;
      if (rng_.below(equal) == 0) qubit = q;
    }
    int row = -1;
    for (int r = 0; qubit >= 0 && r < strings_.rows(); ++r) {
      if (!is_open(r) || !has_another(r, qubit)) continue;
      if (row < 0 || strings_.weight(r) < strings_.weight(row)) row = r;
    }
    return {row, qubit};
  }

  void make_alone(int row, int q) {
    for (int r = 0; r < strings_.rows(); ++r) {
      if (r != row && is_open(r) && has_another(r, q)) multiply(strings_, row, r);
    }
  }

  void take(int row, int q) {
    std::vector<int> others;
    for (int j = 0; j < strings_.qubits(); ++j) {
      if (j != q && label_at(strings_, row, j) != 0) others.push_back(j);
    }
    std::ranges::stable_sort(others, {}, [&](int j) { return layers_[index(j)]; });
    for (const int j : others) {
      const int label = label_at(strings_, row, j);
      gates_.push_back({end_of(q, labels_[index(q)]), end_of(j, label)});
      apply_unsigned(strings_, gates_.back());
      layers_[index(q)] = layers_[index(j)] = std::max(layers_[index(q)], layers_[index(j)]) + 1;
      // Of the other rows the gate only gives new names to two letters on j.
      if (label != labels_[index(j)]) labels_[index(j)] ^= label;
    }
    open_[index(row / word_bits)] &= ~(Word{1} << (row % word_bits));
  }

  PauliFrame strings_;
  int most_;
  Rng& rng_;
  std::vector<int> layers_;  // by qubit: of its last gate
  std::vector<int> labels_;
  std::vector<Word> open_;
  std::vector<Gate> gates_;
};

}  // namespace

std::vector<int> common_labels(const PauliFrame& generators, Rng& rng) {
  const int n = generators.qubits();
  const int r = generators.rows();
  std::vector<int> labels(index(n));
  const std::vector<int> weights = generators.weights();
  const int heaviest = weights.empty() ? 0 : std::ranges::max(weights);
  std::vector<int> agreeing;  // on how many qubits; -1: taken, or on some not at all
  for (const int weight : weights) agreeing.push_back(weight == heaviest ? 1 : 0);
  const auto most_agreeing = [&] {
    int best = -1;
    int equal = 0;
    for (int k = 0; k < r; ++k) {
      const int here = agreeing[index(k)];
      if (here < 0 || (best >= 0 && here < agreeing[index(best)])) continue;
      equal = best >= 0 && here == agreeing[index(best)] ? equal + 1 : 1;
      if (rng.below(equal) == 0) best = k;
    }
    return best;
  };
  for (int k = most_agreeing(); k >= 0; k = most_agreeing()) {
    stop_point();
    agreeing[index(k)] = -1;
    for (int q = 0; q < n; ++q) {
      const int label = label_at(generators, k, q);
      if (label == 0 || labels[index(q)] != 0) continue;
      labels[index(q)] = label;
      for (int other = 0; other < r; ++other) {
        const int there = label_at(generators, other, q);
        int& count = agreeing[index(other)];
        if (there != 0 && count >= 0) count = there == label ? count + 1 : -1;
      }
    }
  }
  for (int& label : labels) label = label == 0 ? label_x : label;
  return labels;
}

StateGroup alone_on_qubits(const PauliFrame& strings) {
  const int n = strings.qubits();
  BitMatrix bits = bits_of(strings);
  BitMatrix along(bits.rows(), 0);
  reduce_to_echelon(bits, along);
  PauliFrame result(n, bits.rows());
  for (int r = 0; r < bits.rows(); ++r) {
    for (int q = 0; q < n; ++q) {
      result.set_letter(r, q, letter_of(bits.get(r, q), bits.get(r, n + q)));
    }
  }
  return StateGroup(result);
}

std::optional<TakenApart> peeled(const StateGroup& group, int most, Rng& rng) {
  PauliFrame generators = generators_of(group);
  std::vector<int> labels = common_labels(generators, rng);
  Peeling peeling(std::move(generators), most, rng);
  if (!peeling.peel(std::move(labels))) return std::nullopt;
  StateGroup left = alone_on_qubits(peeling.strings());
  if (left.left() == 0) return TakenApart{peeling.gates(), std::move(left)};
  left.lighten(state_tuning.sets_at_once, rng);
  Peeling rest(generators_of(left), most - static_cast<int>(peeling.gates().size()), rng);
  labels.assign(index(group.qubits()), label_x);
  for (int k = 0; k < left.generators(); ++k) {
    left.each_letter(k, [&](int q, int label) { labels[index(q)] = next_label(label); });
  }
  if (!rest.peel(std::move(labels))) return std::nullopt;
  std::vector<Gate> gates = peeling.gates();
  gates.insert(gates.end(), rest.gates().begin(), rest.gates().end());
  return TakenApart{std::move(gates), StateGroup(rest.strings())};
}

}  // namespace zelt::braidwerk::internal
