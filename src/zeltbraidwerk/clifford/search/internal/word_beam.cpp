#include "zeltbraidwerk/clifford/search/internal/word_beam.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

/// All words of a code, a row of bits for each qubit: words of one weight side by side, filled up
/// to whole machine words.
struct WordPlanes {
  struct Weight {
    int weight;
    int words;
    int first;  ///< machine word
    int end;
  };
  int qubits = 0;
  int stride = 0;
  std::vector<Weight> weights;
  std::vector<Word> planes;
  std::vector<Word> words;
  std::vector<Word> sorted;

  void list(const std::vector<Word>& generators, int n);
  const Word* plane(int q) const { return planes.data() + q * stride; }
};

void WordPlanes::list(const std::vector<Word>& generators, int n) {
  qubits = n;
  words.assign(std::size_t{1} << generators.size(), 0);
  std::array<int, WordBeam::most_qubits + 1> counts{};
  for (std::size_t k = 0; k < words.size(); ++k) {
    if (k > 0) words[k] = words[k & (k - 1)] ^ generators[index(std::countr_zero(k))];
    ++counts[index(std::popcount(words[k]))];
  }
  weights.clear();
  stride = 0;
  std::array<std::size_t, WordBeam::most_qubits + 1> places{};
  for (int weight = 0; weight <= n; ++weight) {
    const int count = counts[index(weight)];
    if (count == 0) continue;
    places[index(weight)] = index(stride) * word_bits;
    const int end = stride + (count + word_bits - 1) / word_bits;
    weights.push_back({weight, count, stride, end});
    stride = end;
  }
  sorted.assign(index(stride) * word_bits, 0);
  for (const Word word : words) sorted[places[index(std::popcount(word))]++] = word;
  planes.assign(index(n * stride), 0);
  for (std::size_t k = 0; k < sorted.size(); ++k) {
    for (Word rest = sorted[k]; rest != 0; rest &= rest - 1) {
      planes[index(std::countr_zero(rest) * stride) + k / word_bits] |= Word{1} << (k % word_bits);
    }
  }
}

/// By weight, how many words have a one on both qubits.
ZELTBRAIDWERK_CLONES
void count_common(const Word* a, const Word* b, const WordPlanes::Weight* weights,
                  std::size_t count, int* common) {
  for (std::size_t k = 0; k < count; ++k) {
    int sum = 0;
    for (int w = weights[k].first; w < weights[k].end; ++w) sum += std::popcount(a[w] & b[w]);
    common[k] = sum;
  }
}

/// CNOTs that take a code apart: to words of one letter, and all that they generate.
class WordProblem {
 public:
  using State = std::vector<Word>;  // generators
  struct Move {
    int control;
    int target;
    std::uint64_t hash;
  };

  WordProblem(int qubits, std::uint64_t steps_of_state, Meter& meter)
      : n_(qubits), steps_of_state_(steps_of_state), meter_(meter) {}

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    meter_.charge(steps_of_state_ - 1);
    words_.list(state, n_);
    kinds_ = words_.weights.size();
    ones_.resize(index(n_) * kinds_);
    for (int q = 0; q < n_; ++q) count(q, q, ones(q));
    double worth = 0;
    std::uint64_t hash = 0;
    for (const WordPlanes::Weight& each : words_.weights) {
      worth += each.words * worth_of(each.weight);
      hash += static_cast<std::uint64_t>(each.words) * Rng::mixed(index(each.weight + 1));
    }
    std::array<int, WordBeam::most_qubits + 1> common;
    for (int a = 0; a < n_; ++a) {
      for (int b = 0; b < a && has_words(a); ++b) {
        if (!has_words(b)) continue;
        count(a, b, common.data());
        for (const auto& [control, target] : {std::pair{a, b}, std::pair{b, a}}) {
          const auto [gain, change] = changes(ones(control), common.data());
          sink(-(worth + gain), Move{control, target, Rng::mixed(hash + change)});
        }
      }
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  static void make(State& state, const Move& move) {
    for (Word& word : state) word ^= (word >> move.control & 1) << move.target;
  }
  static bool done(const State& state) {
    Word all = 0;
    for (const Word word : state) all |= word;
    return std::popcount(all) == std::ssize(state);
  }

 private:
  /// Sums of these are exact, so they are the same on every machine.
  static double worth_of(int weight) { return weight_worth(index(weight)); }

  int* ones(int q) { return ones_.data() + index(q) * kinds_; }
  bool has_words(int q) {
    return std::any_of(ones(q), ones(q) + kinds_, [](int words) { return words != 0; });
  }
  void count(int a, int b, int* common) const {
    count_common(words_.plane(a), words_.plane(b), words_.weights.data(), kinds_, common);
  }
  /// Words with a one on the control lose the one on the target, or get one.
  std::pair<double, std::uint64_t> changes(const int* of_control, const int* common) const {
    double gain = 0;
    std::uint64_t change = 0;
    for (std::size_t k = 0; k < kinds_; ++k) {
      const int weight = words_.weights[k].weight;
      const auto move = [&](int words, int to) {
        if (words == 0) return;
        gain += words * (worth_of(to) - worth_of(weight));
        change += static_cast<std::uint64_t>(words) *
                  (Rng::mixed(index(to + 1)) - Rng::mixed(index(weight + 1)));
      };
      move(common[k], weight - 1);
      move(of_control[k] - common[k], weight + 1);
    }
    return {gain, change};
  }

  int n_;
  std::uint64_t steps_of_state_;
  Meter& meter_;
  WordPlanes words_;
  std::size_t kinds_ = 0;  // of weights
  std::vector<int> ones_;  // by qubit, then by weight
};

/// The places of some strings with a letter that anticommutes with the label of its qubit.
BitMatrix other_letters(const PauliFrame& strings, const std::vector<int>& labels) {
  BitMatrix found(strings.rows(), strings.qubits());
  for (int r = 0; r < strings.rows(); ++r) {
    for (int q = 0; q < strings.qubits(); ++q) {
      const int label = label_at(strings, r, q);
      found.set(r, q, label != 0 && label != labels[index(q)]);
    }
  }
  return found;
}

/// The products of the strings that have the labels alone, as many as are independent: one row of
/// bits each.
std::vector<Word> strings_of(const PauliFrame& strings, const std::vector<int>& labels,
                             const std::vector<int>& others) {
  BitMatrix away = other_letters(strings, labels);
  BitMatrix along = other_letters(strings, others);
  const std::vector<int> pivots = reduce_to_echelon(away, along);
  std::vector<Word> found;
  for (int r = static_cast<int>(pivots.size()); r < along.rows(); ++r) {
    found.push_back(along.row(r)[0]);
  }
  return found;
}

/// What is the label of the other kind: of the first string that has another one than `labels`.
std::vector<int> labels_of_others(const PauliFrame& strings, const std::vector<int>& labels) {
  std::vector<int> others;
  for (int q = 0; q < strings.qubits(); ++q) {
    int other = next_label(labels[index(q)]);
    for (int r = strings.rows(); r-- > 0;) {
      const int label = label_at(strings, r, q);
      if (label != 0 && label != labels[index(q)]) other = label;
    }
    others.push_back(other);
  }
  return others;
}

}  // namespace

std::optional<WordBeam> WordBeam::of(const PauliFrame& stabilisers) {
  const int n = stabilisers.qubits();
  if (n > most_qubits || n != stabilisers.rows()) return std::nullopt;
  Rng rng(0, 0);
  WordBeam found;
  found.stabilisers_ = stabilisers;
  found.own_ = common_labels(stabilisers, rng);
  found.other_ = labels_of_others(stabilisers, found.own_);
  found.generators_ = strings_of(stabilisers, found.own_, found.other_);
  std::vector<Word> others = strings_of(stabilisers, found.other_, found.own_);
  if (std::ssize(found.generators_) + std::ssize(others) != n) return std::nullopt;
  if (others.size() < found.generators_.size()) {
    std::swap(found.generators_, others);
    std::swap(found.own_, found.other_);
  }
  const auto generators = static_cast<int>(found.generators_.size());
  if (generators == 0 || generators > most_generators) return std::nullopt;
  return found;
}

std::uint64_t WordBeam::steps_of_state() const {
  const std::uint64_t pairs = generators_.size() * index(stabilisers_.qubits());
  const std::uint64_t words = std::uint64_t{1} << generators_.size();
  return 1 + pairs * words / state_tuning.words_per_step;
}

std::optional<TakenApart> WordBeam::run(int width, Rng& rng, Meter& meter) const {
  WordProblem problem(stabilisers_.qubits(), steps_of_state(), meter);
  const BeamOptions options{.width = width, .patience = state_tuning.patience};
  BeamSearch<WordProblem> search(problem, options, rng, meter);
  const auto finished = search.run(generators_);
  if (finished.empty()) return std::nullopt;
  std::vector<int> own = own_;
  std::vector<int> other = other_;
  PauliFrame strings = stabilisers_;
  std::vector<Gate> gates;
  for (const auto& [control, target, hash] : finished[0].moves) {
    const auto c = index(control);
    const auto t = index(target);
    gates.push_back({end_of(control, other[c]), end_of(target, own[t])});
    apply_unsigned(strings, gates.back());
    own[c] ^= other[c];
    other[t] ^= own[t];
  }
  return TakenApart{std::move(gates), alone_on_qubits(strings)};
}

}  // namespace zelt::braidwerk::internal
