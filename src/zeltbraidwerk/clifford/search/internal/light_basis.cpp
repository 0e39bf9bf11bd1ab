#include "zeltbraidwerk/clifford/search/internal/light_basis.h"

#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

}  // namespace

LightBasis::LightBasis(int generators, int qubits, std::size_t capacity)
    : qubits_(qubits),
      words_(index(words_for(qubits))),
      parts_(words_ * capacity),
      generates_(capacity) {
  for (std::size_t k = 0; k < index(generators); ++k) {
    parts(k)[k / word_bits] = Word{1} << (k % word_bits);
    elements_.push_back(static_cast<std::uint16_t>(k));
    generates_[k] = 1;
  }
}

/// By weight, the generators that are heavier.
const std::vector<Word>& LightBasis::heavier_than(const std::vector<Word>& weights) const {
  static thread_local std::vector<Word> heavier;
  const std::size_t above = index(qubits_) + 2;
  heavier.assign(words_ * above, 0);
  for (std::size_t k = 0; k < elements_.size(); ++k) {
    heavier[weights[elements_[k]] * words_ + k / word_bits] |= Word{1} << (k % word_bits);
  }
  for (std::size_t w = 0; w < words_; ++w) {
    Word all = 0;
    for (std::size_t weight = above; weight-- > 0;) {
      std::swap(all, heavier[weight * words_ + w]);
      all |= heavier[weight * words_ + w];
    }
  }
  return heavier;
}

/// The first element from `e` on that is lighter than a generator in it; else the number of all.
std::size_t LightBasis::next_exchange(std::size_t e, const std::vector<Word>& weights,
                                      const std::vector<Word>& heavier) const {
  for (; e < generates_.size(); ++e) {
    if (weights[e] == no_element || generates(e)) continue;
    const Word* own = parts(e);
    const Word* wanted = heavier.data() + weights[e] * words_;
    Word both = 0;
    for (std::size_t w = 0; w < words_; ++w) both |= own[w] & wanted[w];
    if (both != 0) break;
  }
  return e;
}

bool LightBasis::is_least(const std::vector<Word>& weights) const {
  return next_exchange(0, weights, heavier_than(weights)) == generates_.size();
}

void LightBasis::make_least(const std::vector<Word>& weights) {
  for (bool changed = true; changed;) {
    changed = false;
    const std::vector<Word>* heavier = &heavier_than(weights);
    for (std::size_t e = 0; (e = next_exchange(e, weights, *heavier)) < generates_.size(); ++e) {
      stop_point();
      int heaviest = -1;
      for_each_bit(parts(e), static_cast<int>(words_), [&](int k) {
        if (heaviest < 0 || weights[element(k)] > weights[element(heaviest)]) heaviest = k;
      });
      exchange(e, heaviest);
      heavier = &heavier_than(weights);
      changed = true;
    }
  }
}

/// Element e takes the place of generator k, which is in it: where k was, now e and all the other
/// generators in it are.
void LightBasis::exchange(std::size_t e, int k) {
  static thread_local std::vector<Word> change;
  change.assign(parts(e), parts(e) + words_);
  const std::size_t word = index(k / word_bits);
  const int shift = k % word_bits;
  change[word] ^= Word{1} << shift;
  for (std::size_t u = 0; u < generates_.size(); ++u) {
    Word* own = parts(u);
    const Word mask = Word{0} - (own[word] >> shift & 1);
    for (std::size_t w = 0; w < words_; ++w) own[w] ^= change[w] & mask;
  }
  generates_[element(k)] = 0;
  generates_[e] = 1;
  elements_[index(k)] = static_cast<std::uint16_t>(e);
}

void LightBasis::finish(int k) {
  for (std::size_t e = 0; e < generates_.size(); ++e) {
    if (e != element(k)) parts(e)[k / word_bits] &= ~(Word{1} << (k % word_bits));
  }
}

}  // namespace zelt::braidwerk::internal
