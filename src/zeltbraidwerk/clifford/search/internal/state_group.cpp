#include "zeltbraidwerk/clifford/search/internal/state_group.h"

#include <algorithm>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr Word no_element = LightBasis::no_element;
constexpr std::size_t at_once = 128;  ///< rows or qubits between looks at the time

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

/// What is needed while a group is looked at, once a thread.
struct Scratch {
  std::vector<Word> weights;
  std::vector<Word> row;
  std::vector<Word> rows;
  std::vector<int> qubits;
  std::vector<int> owned;
  std::vector<LightPair> pairs;
  LightBasis basis;
};

Scratch& scratch() {
  static thread_local Scratch mine;
  return mine;
}

/// Reduces rows for the qubits in a random order, and finds which qubit each row is alone on.
void draw_information_set(std::vector<Word>& rows, int count, int words, std::vector<int>& qubits,
                          std::vector<int>& owned, Rng& rng) {
  for (std::size_t k = qubits.size(); k > 1; --k) {
    std::swap(qubits[k - 1], qubits[index(rng.below(static_cast<int>(k)))]);
  }
  owned.assign(index(count), -1);
  int done = 0;
  for (std::size_t k = 0; k < qubits.size(); k += at_once) {
    stop_point();
    const auto some = static_cast<int>(std::min(at_once, qubits.size() - k));
    done = reduce_rows(rows.data(), count, words, qubits.data() + k, some, done, owned.data());
  }
}

/// Steps from an information set to one that differs by a few qubits, at a tenth of the price of a
/// new one: other qubits take the place of those that two rows are alone on.
class NeighbouringSets {
 public:
  NeighbouringSets() = default;
  NeighbouringSets(const std::vector<int>& qubits, const std::vector<int>& owned, int size) {
    std::vector<char> is_in(index(size));
    for (std::size_t r = 0; r < owned.size(); ++r) {
      if (owned[r] < 0) continue;
      is_in[index(owned[r])] = 1;
      if (r > 0 && owned[r - 1] == owned[r]) {
        inside_.push_back({static_cast<int>(r) - 1, owned[r]});
      }
    }
    for (const int q : qubits) {
      if (is_in[index(q)] == 0) outside_.push_back(q);
    }
    // Of codes with hardly any such qubits all sets would be alike.
    if (4 * inside_.size() < owned.size()) outside_.clear();
  }

  bool any() const { return !outside_.empty(); }

  void step(std::vector<Word>& rows, int count, int words, Rng& rng) {
    for (int k = 0; k < state_tuning.exchanged; ++k) {
      for (int tries = 0; tries < state_tuning.exchange_tries; ++tries) {
        auto& [first, qubit] = inside_[index(rng.below(static_cast<int>(inside_.size())))];
        int& other = outside_[index(rng.below(static_cast<int>(outside_.size())))];
        const Word* row = rows.data() + first * 3 * words;
        if (!anticommute_at(row, row + 3 * words, words, other)) continue;
        take_qubit(rows.data(), count, words, first, other);
        std::swap(qubit, other);
        break;
      }
    }
  }

 private:
  std::vector<std::pair<int, int>> inside_;  // the first of its rows, and a qubit
  std::vector<int> outside_;
};

}  // namespace

StateGroup::StateGroup(const PauliFrame& generators)
    : n_(generators.qubits()),
      generators_(generators.rows()),
      words_(words_for(n_)),
      capacity_(index(words_for(spare * n_) * word_bits)),
      x_(index(words_) * capacity_),
      z_(index(words_) * capacity_),
      weights_(capacity_, no_element),
      labels_(index(n_)),
      basis_(generators_, n_, capacity_) {
  const BitMatrix x = generators.x_planes().transposed();
  const BitMatrix z = generators.z_planes().transposed();
  const std::vector<int> weights = generators.weights();
  for (int r = 0; r < generators_; ++r) {
    for (int w = 0; w < words_; ++w) {
      x_[at(w, index(r))] = x.row(r)[w];
      z_[at(w, index(r))] = z.row(r)[w];
    }
    weights_[index(r)] = static_cast<Word>(weights[index(r)]);
  }
  settle();
}

double StateGroup::worth() const {
  double sum = 0;
  for (int k = 0; k < generators_; ++k) sum += weight_worth(weights_[basis_.element(k)]);
  return sum;
}

GateSide StateGroup::side(End end) const {
  const std::size_t word = at(wire_of(end) / word_bits, 0);
  return {x_.data() + word, z_.data() + word, wire_of(end) % word_bits, Word{0} - (end & 1),
          Word{0} - (end >> 1 & 1)};
}

void StateGroup::weigh_all_after(Gate gate, std::vector<Word>& weights) const {
  weights.resize(capacity_);
  weigh_after(side(gate.a), side(gate.b), weights_.data(), capacity_, weights.data());
}

StateGroup::Outlook StateGroup::outlook_after(Gate gate) const {
  std::vector<Word>& weights = scratch().weights;
  weigh_all_after(gate, weights);
  const LightBasis* basis = &basis_;
  if (!basis->is_least(weights)) {
    scratch().basis = basis_;
    scratch().basis.make_least(weights);
    basis = &scratch().basis;
  }
  Outlook outlook{0, 0};
  for (int k = 0; k < generators_; ++k) {
    outlook.worth += weight_worth(weights[basis->element(k)]);
    outlook.hash += hash_after(gate, basis->element(k));
  }
  return outlook;
}

/// Of the qubits on which an element has letters after the gate.
std::uint64_t StateGroup::hash_after(Gate gate, std::size_t e) const {
  std::uint64_t hash = 0;
  const GateSide a = side(gate.a);
  const GateSide b = side(gate.b);
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
  weigh_all_after(gate, weights);
  const GateSide a = side(gate.a);
  const GateSide b = side(gate.b);
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
  for (int k = 0; k < generators_; ++k) left_ += weight(k) > 1 ? 1 : 0;
  find_place();
}

/// Multiplies generators that have come to be alone on their qubit to all that have a letter there,
/// which is the same one.
bool StateGroup::strip_finished() {
  bool stripped = false;
  for (int k = 0; k < generators_; ++k) {
    if (weight(k) != 1) continue;
    int qubit = 0;
    int label = 0;
    each_letter(k, [&](int q, int l) { qubit = q, label = l; });
    if (labels_[index(qubit)] != 0) continue;
    labels_[index(qubit)] = static_cast<std::uint8_t>(label);
    stripped = true;
    basis_.finish(k);
    const std::size_t word = at(qubit / word_bits, 0);
    for (std::size_t e = 0; e < capacity_; ++e) {
      if (e == basis_.element(k)) continue;
      if (((x_[word + e] | z_[word + e]) >> (qubit % word_bits) & 1) == 0) continue;
      multiply_letters(basis_.element(k), e);
      if (!basis_.generates(e) && (weights_[e] == 0 || has_copy(e))) drop(e);
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
  for (int k = 0; k < generators_; ++k) {
    if (weight(k) <= 1) continue;
    Word* row = rows.data() + count++ * length;
    for (int w = 0; w < words_; ++w) {
      row[w] = x_[at(w, basis_.element(k))];
      row[words_ + w] = z_[at(w, basis_.element(k))];
    }
    row[2 * words_ + k / word_bits] = Word{1} << (k % word_bits);
  }
  mine.pairs.resize(1024);
  NeighbouringSets sets;
  for (int round = 0; round < rounds; ++round) {
    stop_point();
    if (sets.any()) {
      sets.step(rows, count, words_, rng);
    } else {
      draw_information_set(rows, count, words_, qubits, mine.owned, rng);
      if (left_ > state_tuning.few_qubits) sets = {qubits, mine.owned, n_};
    }
    for (int r = 0; r < count; ++r) {
      stop_point();
      const Word* row = rows.data() + r * length;
      insert(row, row_weight(row, words_));
    }
    const auto limit = static_cast<int>(std::min<Word>(weights_[place_], index(n_) + 1));
    const auto room = static_cast<int>(mine.pairs.size());
    int found = 0;
    for (int r = 0; r < count && found < room; r += static_cast<int>(at_once)) {
      stop_point();
      found += find_light_pairs(rows.data(), r, std::min(count, r + static_cast<int>(at_once)),
                                count, words_, limit, mine.pairs.data() + found, room - found);
    }
    for (int k = 0; k < found; ++k) {
      stop_point();
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
