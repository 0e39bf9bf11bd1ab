#include "zeltbraidwerk/clifford/search/internal/state_group.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr Word no_element = LightBasis::no_element;

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

/// Half of what weigh_behind needs.
struct Letters {
  const Word* x;
  const Word* z;
  int shift;
  Word px;
  Word pz;
};

/// An element that anticommutes with the gate is multiplied by it: on the side where its letter
/// anticommutes it keeps one; the other letter vanishes if it was the gate's own, and appears if
/// there was none.
ZELTBRAIDWERK_CLONES void weigh_behind(const Letters& a, const Letters& b, const Word* now,
                                       std::size_t count, Word* then) {
  for (std::size_t e = 0; e < count; ++e) {
    const Word xa = a.x[e] >> a.shift;
    const Word za = a.z[e] >> a.shift;
    const Word xb = b.x[e] >> b.shift;
    const Word zb = b.z[e] >> b.shift;
    const Word odd_a = (xa & a.pz) ^ (za & a.px);
    const Word odd_b = (xb & b.pz) ^ (zb & b.px);
    const Word some_a = xa | za;
    const Word some_b = xb | zb;
    const Word odd = odd_a ^ odd_b;
    // Where a letter does not anticommute it is the gate's own or none.
    const Word falls = odd & ((odd_a & some_b) | (odd_b & some_a));
    const Word rises = odd & ~((odd_a & some_b) | (odd_b & some_a));
    then[e] = now[e] + (rises & 1) - (falls & 1);
  }
}

inline int string_weight(const Word* row, int words) {
  int weight = 0;
  for (int w = 0; w < words; ++w) weight += std::popcount(row[w] | row[words + w]);
  return weight;
}

/// Rows of x, z and parts, each of W words: W = 0 where that is known at run time alone.
template <int W>
[[gnu::always_inline]] inline void reduce(Word* rows, int count, int words, const int* order,
                                          int qubits) {
  const int length = W > 0 ? 3 * W : 3 * words;
  int done = 0;
  for (int k = 0; k < 2 * qubits && done < count; ++k) {
    const int q = order[k / 2];
    const int place = ((k & 1) != 0 ? length / 3 : 0) + q / word_bits;
    const int shift = q % word_bits;
    int pivot = done;
    while (pivot < count && (rows[pivot * length + place] >> shift & 1) == 0) ++pivot;
    if (pivot == count) continue;
    Word* own = rows + done * length;
    if (pivot != done) {
      for (int w = 0; w < length; ++w) std::swap(own[w], rows[pivot * length + w]);
    }
    for (int r = 0; r < count; ++r) {
      Word* row = rows + r * length;
      const Word mask = r == done ? 0 : Word{0} - (row[place] >> shift & 1);
      for (int w = 0; w < length; ++w) row[w] ^= own[w] & mask;
    }
    ++done;
  }
}

struct LightPair {
  std::uint16_t first;
  std::uint16_t second;
  int weight;
};

/// Writes the pairs of rows whose products are lighter than `limit`, at most `room` of them.
template <int W>
[[gnu::always_inline]] inline int light_pairs(const Word* rows, int count, int words, int limit,
                                              LightPair* pairs, int room) {
  const int size = W > 0 ? W : words;
  int found = 0;
  for (int i = 0; i < count; ++i) {
    const Word* a = rows + i * 3 * size;
    for (int j = i + 1; j < count; ++j) {
      const Word* b = rows + j * 3 * size;
      int weight = 0;
      for (int w = 0; w < size; ++w) {
        weight += std::popcount((a[w] ^ b[w]) | (a[size + w] ^ b[size + w]));
      }
      if (weight >= limit) continue;
      if (found == room) return found;
      pairs[found++] = {static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j), weight};
    }
  }
  return found;
}

ZELTBRAIDWERK_CLONES void reduce_rows(Word* rows, int count, int words, const int* order,
                                      int qubits) {
  switch (words) {
    case 1:
      return reduce<1>(rows, count, words, order, qubits);
    case 2:
      return reduce<2>(rows, count, words, order, qubits);
    case 3:
      return reduce<3>(rows, count, words, order, qubits);
    case 4:
      return reduce<4>(rows, count, words, order, qubits);
    default:
      return reduce<0>(rows, count, words, order, qubits);
  }
}

ZELTBRAIDWERK_CLONES int find_light_pairs(const Word* rows, int count, int words, int limit,
                                          LightPair* pairs, int room) {
  switch (words) {
    case 1:
      return light_pairs<1>(rows, count, words, limit, pairs, room);
    case 2:
      return light_pairs<2>(rows, count, words, limit, pairs, room);
    case 3:
      return light_pairs<3>(rows, count, words, limit, pairs, room);
    case 4:
      return light_pairs<4>(rows, count, words, limit, pairs, room);
    default:
      return light_pairs<0>(rows, count, words, limit, pairs, room);
  }
}

/// What is needed while a group is looked at, once a thread.
struct Scratch {
  std::vector<Word> weights;
  std::vector<Word> heavier;
  std::vector<Word> row;
  std::vector<Word> rows;
  std::vector<int> qubits;
  std::vector<LightPair> pairs;
  LightBasis basis;
};

Scratch& scratch() {
  static thread_local Scratch mine;
  return mine;
}

}  // namespace

LightBasis::LightBasis(int generators, std::size_t capacity)
    : generators_(generators),
      words_(index(words_for(generators))),
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
  std::vector<Word>& heavier = scratch().heavier;
  const std::size_t above = index(generators_) + 2;
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
  std::vector<Word>& change = scratch().row;
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

void LightBasis::multiplied(int from, int to) {
  const auto bit = [](int k, const Word* own) { return own[k / word_bits] >> (k % word_bits) & 1; };
  for (std::size_t u = 0; u < generates_.size(); ++u) {
    parts(u)[from / word_bits] ^= bit(to, parts(u)) << (from % word_bits);
  }
}

StateGroup::StateGroup(const PauliFrame& generators)
    : n_(generators.qubits()),
      words_(words_for(n_)),
      capacity_(index(words_for(spare * n_) * word_bits)),
      x_(index(words_) * capacity_),
      z_(index(words_) * capacity_),
      weights_(capacity_, no_element),
      labels_(index(n_)),
      basis_(n_, capacity_) {
  const BitMatrix x = generators.x_planes().transposed();
  const BitMatrix z = generators.z_planes().transposed();
  for (int r = 0; r < n_; ++r) {
    for (int w = 0; w < words_; ++w) {
      x_[at(w, index(r))] = x.row(r)[w];
      z_[at(w, index(r))] = z.row(r)[w];
    }
    weights_[index(r)] = static_cast<Word>(generators.weight(r));
  }
  settle();
}

StateGroup::Side StateGroup::side(End end) const {
  const std::size_t word = at(wire_of(end) / word_bits, 0);
  return {x_.data() + word, z_.data() + word, wire_of(end) % word_bits, Word{0} - (end & 1),
          Word{0} - (end >> 1 & 1)};
}

void StateGroup::look_behind(Gate gate, std::vector<Word>& weights) const {
  weights.resize(capacity_);
  const auto letters = [](const Side& s) { return Letters{s.x, s.z, s.shift, s.px, s.pz}; };
  weigh_behind(letters(side(gate.a)), letters(side(gate.b)), weights_.data(), capacity_,
               weights.data());
}

StateGroup::Outlook StateGroup::behind(Gate gate) const {
  std::vector<Word>& weights = scratch().weights;
  look_behind(gate, weights);
  const LightBasis* basis = &basis_;
  if (!basis->is_least(weights)) {
    scratch().basis = basis_;
    scratch().basis.make_least(weights);
    basis = &scratch().basis;
  }
  Outlook outlook{0, 0};
  for (int k = 0; k < n_; ++k) {
    outlook.worth += weight_worth(weights[basis->element(k)]);
    outlook.hash += hash_behind(gate, basis->element(k));
  }
  return outlook;
}

/// Of the qubits on which an element has letters behind the gate.
std::uint64_t StateGroup::hash_behind(Gate gate, std::size_t e) const {
  std::uint64_t hash = 0;
  const Side a = side(gate.a);
  const Side b = side(gate.b);
  const Word change = 0 - ((a.odd(e) ^ b.odd(e)) & 1);
  for (int w = 0; w < words_; ++w) {
    Word x = x_[at(w, e)];
    Word z = z_[at(w, e)];
    for (const End end : {gate.a, gate.b}) {
      if (wire_of(end) / word_bits != w) continue;
      const int shift = wire_of(end) % word_bits;
      x ^= (change & Word(end & 1)) << shift;
      z ^= (change & Word(end >> 1 & 1)) << shift;
    }
    hash = Rng::mixed(hash + (x | z) + 0x9e3779b97f4a7c15U);
  }
  return hash;
}

void StateGroup::apply(Gate gate) {
  std::vector<Word>& weights = scratch().weights;
  look_behind(gate, weights);
  const Side a = side(gate.a);
  const Side b = side(gate.b);
  for (std::size_t e = 0; e < capacity_; ++e) {
    const Word change = 0 - ((a.odd(e) ^ b.odd(e)) & 1);
    for (const End end : {gate.a, gate.b}) {
      const int shift = wire_of(end) % word_bits;
      x_[at(wire_of(end) / word_bits, e)] ^= (change & Word(end & 1)) << shift;
      z_[at(wire_of(end) / word_bits, e)] ^= (change & Word(end >> 1 & 1)) << shift;
    }
  }
  std::swap(weights_, weights);
  settle();
}

/// Makes the generators the least that the elements give, and takes finished qubits out of all.
void StateGroup::settle() {
  do {
    basis_.make_least(weights_);
  } while (strip_finished());
  left_ = 0;
  for (int k = 0; k < n_; ++k) left_ += weight(k) > 1 ? 1 : 0;
  find_place();
}

/// Multiplies generators that have come to be alone on their qubit to all that have a letter there,
/// which is the same one.
bool StateGroup::strip_finished() {
  bool stripped = false;
  for (int k = 0; k < n_; ++k) {
    if (weight(k) != 1) continue;
    int qubit = 0;
    int label = 0;
    each_letter(k, [&](int q, int l) { qubit = q, label = l; });
    if (labels_[index(qubit)] != 0) continue;
    labels_[index(qubit)] = static_cast<std::uint8_t>(label);
    stripped = true;
    const int w = qubit / word_bits;
    for (int j = 0; j < n_; ++j) {
      const std::size_t e = basis_.element(j);
      if (j == k || ((x_[at(w, e)] | z_[at(w, e)]) >> (qubit % word_bits) & 1) == 0) continue;
      basis_.multiplied(k, j);
      multiply_letters(basis_.element(k), e);
    }
    for (std::size_t e = 0; e < capacity_; ++e) {
      if (weights_[e] == no_element || basis_.generates(e)) continue;
      if (((x_[at(w, e)] | z_[at(w, e)]) >> (qubit % word_bits) & 1) == 0) continue;
      basis_.parts(e)[k / word_bits] ^= Word{1} << (k % word_bits);
      multiply_letters(basis_.element(k), e);
      if (weights_[e] == 0 || has_copy(e)) drop(e);
    }
  }
  return stripped;
}

void StateGroup::multiply_letters(std::size_t from, std::size_t to) {
  Word weight = 0;
  for (int w = 0; w < words_; ++w) {
    x_[at(w, to)] ^= x_[at(w, from)];
    z_[at(w, to)] ^= z_[at(w, from)];
    weight += static_cast<Word>(std::popcount(x_[at(w, to)] | z_[at(w, to)]));
  }
  weights_[to] = weight;
}

bool StateGroup::has_copy(std::size_t e) const {
  for (std::size_t u = 0; u < capacity_; ++u) {
    if (u != e && weights_[u] == weights_[e] &&
        std::equal(basis_.parts(u), basis_.parts(u) + words_, basis_.parts(e))) {
      return true;
    }
  }
  return false;
}

void StateGroup::drop(std::size_t e) {
  weights_[e] = no_element;
  std::fill_n(basis_.parts(e), words_, 0);
  for (int w = 0; w < words_; ++w) x_[at(w, e)] = z_[at(w, e)] = 0;
}

void StateGroup::find_place() {
  place_ = capacity_;
  for (std::size_t e = 0; e < capacity_; ++e) {
    if (basis_.generates(e)) continue;
    if (place_ == capacity_ || weights_[e] > weights_[place_]) place_ = e;
  }
}

void StateGroup::lighten(int rounds, Rng& rng) {
  if (left_ == 0) return;
  Scratch& mine = scratch();
  std::vector<Word>& rows = mine.rows;
  std::vector<int>& qubits = mine.qubits;
  qubits.clear();
  for (int q = 0; q < n_; ++q) {
    if (labels_[index(q)] == 0) qubits.push_back(q);
  }
  const int length = 3 * words_;
  rows.assign(index(left_ * length), 0);
  int count = 0;
  for (int k = 0; k < n_; ++k) {
    if (weight(k) <= 1) continue;
    Word* row = rows.data() + count++ * length;
    for (int w = 0; w < words_; ++w) {
      row[w] = x_[at(w, basis_.element(k))];
      row[words_ + w] = z_[at(w, basis_.element(k))];
    }
    row[2 * words_ + k / word_bits] = Word{1} << (k % word_bits);
  }
  mine.pairs.resize(1024);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t k = qubits.size(); k > 1; --k) {
      std::swap(qubits[k - 1], qubits[index(rng.below(static_cast<int>(k)))]);
    }
    reduce_rows(rows.data(), count, words_, qubits.data(), static_cast<int>(qubits.size()));
    for (int r = 0; r < count; ++r) {
      const Word* row = rows.data() + r * length;
      insert(row, string_weight(row, words_));
    }
    const auto limit = static_cast<int>(std::min<Word>(weights_[place_], index(n_) + 1));
    const int found = find_light_pairs(rows.data(), count, words_, limit, mine.pairs.data(),
                                       static_cast<int>(mine.pairs.size()));
    for (int k = 0; k < found; ++k) {
      const auto& [first, second, weight] = mine.pairs[index(k)];
      if (static_cast<Word>(weight) >= weights_[place_]) continue;
      mine.row.resize(index(length));
      for (int w = 0; w < length; ++w) {
        mine.row[index(w)] = rows[index(first * length + w)] ^ rows[index(second * length + w)];
      }
      insert(mine.row.data(), weight);
    }
  }
  settle();
}

/// Puts an element, its x, z and parts, in the place of the heaviest if it is lighter and new.
void StateGroup::insert(const Word* row, int weight) {
  if (static_cast<Word>(weight) >= weights_[place_]) return;
  const Word* parts = row + 2 * words_;
  for (std::size_t e = 0; e < capacity_; ++e) {
    if (weights_[e] == static_cast<Word>(weight) &&
        std::equal(parts, parts + words_, basis_.parts(e))) {
      return;
    }
  }
  for (int w = 0; w < words_; ++w) {
    x_[at(w, place_)] = row[w];
    z_[at(w, place_)] = row[words_ + w];
  }
  std::copy_n(parts, words_, basis_.parts(place_));
  weights_[place_] = static_cast<Word>(weight);
  find_place();
}

}  // namespace zelt::braidwerk::internal
