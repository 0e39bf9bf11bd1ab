#include "zeltbraidwerk/linear/search/internal/column_reduction.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/linear/search/internal/free_search.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int finished_weight = 2;  // a one in M, a one in N

}  // namespace

/// Over all weights that there are, f goes through about 9 orders of magnitude: doubles have 16.
ColumnReduction::ColumnReduction(int n)
    : n_(n),
      words_(words_for(n)),
      light_(2 * n, 1 - std::min(0.18, 12.0 / std::max(n, 1)), finished_weight) {}

ColumnReduction::State ColumnReduction::start(const BitMatrix& m) const {
  State state;
  state.columns_.resize(offset(2, 0));
  state.weights_.resize(static_cast<std::size_t>(words_ * word_bits));
  state.hashes_.resize(static_cast<std::size_t>(n_));
  const BitMatrix of_m = m.transposed();
  const BitMatrix of_n = inverse(m);
  for (int c = 0; c < n_; ++c) {
    std::copy_n(of_m.row(c), words_, state.columns_.data() + offset(0, c));
    std::copy_n(of_n.row(c), words_, state.columns_.data() + offset(1, c));
    for (const int kind : {0, 1}) weigh(state, kind, c, 1);
    std::uint64_t& hash = state.hashes_[static_cast<std::size_t>(c)];
    hash = hash_of(of_m.row(c), of_n.row(c));
    state.hash_ += hash;
  }
  state.sum_ = light_.sum(state.weights_, n_);
  return state;
}

void ColumnReduction::weigh(State& state, int kind, int column, int sign) const {
  for_each_bit(state.columns_.data() + offset(kind, column), words_, [&](int row) {
    std::uint16_t& weight = state.weights_[static_cast<std::size_t>(row)];
    weight = static_cast<std::uint16_t>(weight + sign);
  });
}

std::uint64_t ColumnReduction::hash_of(const Word* of_m, const Word* of_n) const {
  std::uint64_t hash = 0;
  for (const Word* column : {of_m, of_n}) {
    for (int w = 0; w < words_; ++w) hash = Rng::mixed(hash + column[w] + 0x9e3779b97f4a7c15U);
  }
  return hash;
}

std::uint64_t ColumnReduction::hash(const State& state, const Move& move) const {
  const auto size = static_cast<std::size_t>(words_);
  const Word* columns = state.columns_.data();
  std::vector<Word> to(columns + offset(0, move.to), columns + offset(0, move.to) + size);
  std::vector<Word> from(columns + offset(1, move.from), columns + offset(1, move.from) + size);
  for (std::size_t w = 0; w < size; ++w) {
    to[w] ^= columns[offset(0, move.from) + w];
    from[w] ^= columns[offset(1, move.to) + w];
  }
  return state.hash_ - state.hashes_[move.to] - state.hashes_[move.from] +
         hash_of(to.data(), columns + offset(1, move.to)) +
         hash_of(columns + offset(0, move.from), from.data());
}

void ColumnReduction::make(State& state, const Move& move) const {
  const auto add = [&](int kind, int to, int from) {
    weigh(state, kind, to, -1);
    Word* target = state.columns_.data() + offset(kind, to);
    const Word* source = state.columns_.data() + offset(kind, from);
    for (int w = 0; w < words_; ++w) target[w] ^= source[w];
    weigh(state, kind, to, 1);
  };
  add(0, move.to, move.from);
  add(1, move.from, move.to);
  for (const int column : {int{move.to}, int{move.from}}) {
    std::uint64_t& hash = state.hashes_[static_cast<std::size_t>(column)];
    state.hash_ -= hash;
    hash = hash_of(state.columns_.data() + offset(0, column),
                   state.columns_.data() + offset(1, column));
    state.hash_ += hash;
  }
  state.sum_ = light_.sum(state.weights_, n_);
}

void ColumnReduction::price_lightest(const State& state) {
  light_.choose(state.weights_, n_);
  const std::vector<std::uint16_t>& lightest = light_.chosen();
  met_.clear();
  for (int column = 0; column < n_; ++column) {
    unsigned bits[2] = {0, 0};
    for (std::size_t t = 0; t < lightest.size(); ++t) {
      const int row = lightest[t];
      for (const int kind : {0, 1}) {
        const Word word =
            state.columns_[offset(kind, column) + static_cast<std::size_t>(row / word_bits)];
        bits[kind] |= static_cast<unsigned>(word >> (row % word_bits) & 1) << t;
      }
      if (t == 0 && (bits[0] | bits[1]) == 0) break;
    }
    if (((bits[0] | bits[1]) & 1) == 0) continue;
    met_.push_back({static_cast<std::uint16_t>(column), static_cast<std::uint8_t>(bits[0]),
                    static_cast<std::uint8_t>(bits[1])});
  }
}

GateList ColumnReduction::circuit(const State& reduced, const std::vector<Move>& moves) const {
  GateList list(n_, {});
  for (const Move& move : moves) list.gates.push_back(cnot(move.to, move.from));
  for (int column = 0; column < n_; ++column) {
    for_each_bit(reduced.columns_.data() + offset(0, column), words_,
                 [&](int row) { list.frame.put_output(row, column); });
  }
  return list;
}

GateList reduce_by_columns(const BitMatrix& m, int width, Facing facing, Rng& rng, Meter& meter) {
  ColumnReduction problem(m.rows());
  BeamOptions options;
  options.width = width;
  options.patience = 30 + m.rows();
  BeamSearch<ColumnReduction> search(problem, options, rng, meter);
  const auto found = search.run(problem.start(face(m, facing)));
  if (found.empty()) return {};
  FreeCircuit circuit = free_circuit(problem.circuit(found[0].state, found[0].moves));
  circuit.face_back(facing);
  return gate_list(circuit);
}

}  // namespace zelt::braidwerk::internal
