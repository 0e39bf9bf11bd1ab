#include "zeltbraidwerk/clifford/search/internal/one_sided.h"

#include <algorithm>
#include <bit>

namespace zelt::braidwerk::internal {
namespace {

/// The rows of two wires behind a gate on them, six rows.
void multiply(Word* of_k, Word* of_l, int a, int b, int words) {
  const auto row = [words](Word* rows, int label) { return rows + (label - 1) * 2 * words; };
  for (int w = 0; w < 2 * words; ++w) {
    const Word sum = row(of_k, a)[w] ^ row(of_l, b)[w];
    for (const int label : other_labels[a]) row(of_k, label)[w] ^= sum;
    for (const int label : other_labels[b]) row(of_l, label)[w] ^= sum;
  }
}

}  // namespace

/// Over all weights that there are, f goes through about 13 orders of magnitude: doubles have 16.
OneSidedReduction::OneSidedReduction(int wires)
    : wires_(wires),
      words_(words_for(wires)),
      light_(3 * wires, 1 - std::min(0.2, 13.0 / std::max(wires, 1)), letter_limit) {}

OneSidedReduction::State OneSidedReduction::start(const OperatorRows& rows, int side) const {
  State state;
  if (wires_ == 0) return state;
  const Word* first = rows.row(side, 0, 1);
  state.rows_.assign(first, first + offset(wires_, 1));
  state.weights_.resize(static_cast<std::size_t>(words_ * word_bits));
  state.hashes_.resize(static_cast<std::size_t>(wires_));
  for (int k = 0; k < wires_; ++k) {
    weigh(state, k, 1);
    state.hashes_[static_cast<std::size_t>(k)] = hash_of(state.rows_.data() + offset(k, 1));
    state.hash_ += state.hashes_[static_cast<std::size_t>(k)];
  }
  state.sum_ = light_.sum(state.weights_, wires_);
  return state;
}

int OneSidedReduction::label_at(const State& state, int wire, int label, int at) const {
  const Word* row = state.rows_.data() + offset(wire, label) + at / word_bits;
  const auto bit = [&](Word word) { return static_cast<int>(word >> (at % word_bits) & 1); };
  return bit(row[0]) * label_x | bit(row[words_]) * label_z;
}

void OneSidedReduction::weigh(State& state, int wire, int sign) const {
  for (int label = 1; label < 4; ++label) {
    const Word* row = state.rows_.data() + offset(wire, label);
    for (int w = 0; w < words_; ++w) {
      for (Word rest = row[w] | row[words_ + w]; rest != 0; rest &= rest - 1) {
        auto& weight =
            state.weights_[static_cast<std::size_t>(w * word_bits + std::countr_zero(rest))];
        weight = static_cast<std::uint16_t>(weight + sign);
      }
    }
  }
}

std::uint64_t OneSidedReduction::hash_of(const Word* rows) const {
  std::uint64_t sum = 0;
  for (int label = 1; label < 4; ++label) {
    std::uint64_t of_row = 0;
    for (int w = 0; w < 2 * words_; ++w, ++rows) {
      of_row = Rng::mixed(of_row + *rows + 0x9e3779b97f4a7c15U);
    }
    sum += of_row;
  }
  return Rng::mixed(sum);
}

std::uint64_t OneSidedReduction::hash(const State& state, const Move& gate) const {
  const int k = wire_of(gate.a), l = wire_of(gate.b);
  const std::size_t size = offset(1, 1);
  std::vector<Word> rows(2 * size);
  std::copy_n(state.rows_.data() + offset(k, 1), size, rows.data());
  std::copy_n(state.rows_.data() + offset(l, 1), size, rows.data() + size);
  multiply(rows.data(), rows.data() + size, label_of(gate.a), label_of(gate.b), words_);
  return state.hash_ - state.hashes_[static_cast<std::size_t>(k)] -
         state.hashes_[static_cast<std::size_t>(l)] + hash_of(rows.data()) +
         hash_of(rows.data() + size);
}

void OneSidedReduction::make(State& state, const Move& gate) const {
  const int k = wire_of(gate.a), l = wire_of(gate.b);
  for (const int wire : {k, l}) weigh(state, wire, -1);
  Word* rows = state.rows_.data();
  multiply(rows + offset(k, 1), rows + offset(l, 1), label_of(gate.a), label_of(gate.b), words_);
  for (const int wire : {k, l}) {
    weigh(state, wire, 1);
    std::uint64_t& hash = state.hashes_[static_cast<std::size_t>(wire)];
    state.hash_ -= hash;
    hash = hash_of(rows + offset(wire, 1));
    state.hash_ += hash;
  }
  state.sum_ = light_.sum(state.weights_, wires_);
}

void OneSidedReduction::price_lightest(const State& state) {
  light_.choose(state.weights_, wires_);
  const std::vector<std::uint16_t>& lightest = light_.chosen();
  met_.clear();
  for (int wire = 0; wire < wires_; ++wire) {
    const Word* rows = state.rows_.data() + offset(wire, 1);
    const auto bit_of = [&](int plane, int at) {
      return static_cast<int>(rows[plane * words_ + at / word_bits] >> (at % word_bits) & 1);
    };
    Met met;
    met.wire = wire;
    for (std::size_t t = 0; t < lightest.size(); ++t) {
      const int at = lightest[t];
      for (std::size_t label = 1; label < 3; ++label) {
        const int plane = 2 * static_cast<int>(label) - 2;
        met.x[label] = static_cast<std::uint8_t>(met.x[label] | bit_of(plane, at) << t);
        met.z[label] = static_cast<std::uint8_t>(met.z[label] | bit_of(plane + 1, at) << t);
      }
      if (t == 0 && (met.x[1] | met.z[1] | met.x[2] | met.z[2]) == 0) break;
    }
    if (((met.x[1] | met.z[1] | met.x[2] | met.z[2]) & 1) == 0) continue;
    met.x[3] = met.x[1] ^ met.x[2];
    met.z[3] = met.z[1] ^ met.z[2];
    for (std::size_t label = 1; label < 4; ++label) {
      met.price[label] = light_.price(met.x[label] | met.z[label]);
      met.price[0] += met.price[label];
    }
    met_.push_back(met);
  }
}

/// A wire keeps one of its rows, and each of the others becomes the product of the third with the
/// other wire's.
std::array<double, 9> OneSidedReduction::changes_of(const Met& k, const Met& l) const {
  std::array<double, 9> products;
  std::array<double, 3> of_k{}, of_l{};
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::size_t b = 0; b < 3; ++b) {
      const double price = light_.price(
          static_cast<std::size_t>((k.x[a + 1] ^ l.x[b + 1]) | (k.z[a + 1] ^ l.z[b + 1])));
      products[3 * a + b] = price;
      of_k[a] += price;
      of_l[b] += price;
    }
  }
  std::array<double, 9> changes;
  for (std::size_t a = 0; a < 3; ++a) {
    const double own = k.price[a + 1] - k.price[0] - l.price[0] + of_k[a];
    for (std::size_t b = 0; b < 3; ++b) {
      changes[3 * a + b] = own + l.price[b + 1] + of_l[b] - 2 * products[3 * a + b];
    }
  }
  return changes;
}

/// On side 1 the gates are the first of the circuit, in order. On side 0 they are behind the
/// operator: the last comes first, carried to before what is left.
GateList OneSidedReduction::circuit(const State& left, const std::vector<Move>& gates,
                                    int side) const {
  GateList list(wires_, {});
  WireFrame before(wires_);
  for (int wire = 0; wire < wires_; ++wire) {
    int place = 0;
    while (place + 1 < wires_ && label_at(left, wire, 1, place) == 0) ++place;
    for (int label = 0; label < 4; ++label) {
      const End here = end_of(wire, label);
      const End there = end_of(place, label == 0 ? 0 : label_at(left, wire, label, place));
      before[here] = there;
      (side == 0 ? list.frame[there] : list.frame[here]) = side == 0 ? here : there;
    }
  }
  list.gates = gates;
  if (side == 0) {
    std::reverse(list.gates.begin(), list.gates.end());
    for (Gate& gate : list.gates) gate = {before[gate.a], before[gate.b]};
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
