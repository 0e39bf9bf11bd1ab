#include "zeltbraidwerk/linear/search/internal/reduction.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/search/internal/reduction_gains.h"

namespace zelt::braidwerk::internal {

namespace {

std::vector<double> cost_of_weights(int n, double exponent) {
  // Far below 0 the differences of heavy lines would vanish beside 1: weights are then in eighths.
  std::vector<double> f(static_cast<std::size_t>(n) + 2);
  for (int w = 1; w <= n + 1; ++w) {
    f[static_cast<std::size_t>(w)] = exponent == 0   ? std::log(w)
                                     : exponent < -4 ? -std::pow(w / 8.0, exponent)
                                                     : (std::pow(w, exponent) - 1) / exponent;
  }
  return f;
}

}  // namespace

Reduction::Reduction(int n, const ReductionCost& cost)
    : n_(n),
      stride_(words_for(n)),
      kinds_(cost.with_inverse ? 4 : 2),
      cost_(cost),
      f_(cost_of_weights(n, cost.exponent)),
      gain_of_weight_(f_.begin(), f_.end()) {
  const auto size = static_cast<std::size_t>(n);
  keys_.resize(size * size);
  for (std::size_t k = 0; k < keys_.size(); ++k) keys_[k] = Rng::mixed(k + 1);
  curvatures_.resize(size * size);
  rises_.resize(size);
  row_.resize(size);
}

ReductionState Reduction::start(const BitMatrix& m) const {
  State state;
  state.words_.resize(offset(kinds_, 0));
  state.weights_.resize(index(kinds_, 0));
  const auto fill = [&](int kind, const BitMatrix& lines) {
    for (int k = 0; k < n_; ++k) {
      std::copy_n(lines.row(k), stride_,
                  state.words_.begin() + static_cast<std::ptrdiff_t>(offset(kind, k)));
    }
  };
  fill(0, m);
  fill(1, m.transposed());
  if (cost_.with_inverse) {
    const BitMatrix inverted = inverse(m);
    fill(2, inverted.transposed());
    fill(3, inverted);
  }
  count(state);
  for (int r = 0; r < n_; ++r) {
    for_each_bit(line(state, 0, r), stride_,
                 [&](int c) { state.hash_ ^= keys_[static_cast<std::size_t>(r * n_ + c)]; });
  }
  return state;
}

void Reduction::count(State& state) const {
  state.score_ = 0;
  state.excess_ = -n_;
  for (int kind = 0; kind < kinds_; ++kind) {
    for (int k = 0; k < n_; ++k) {
      const int w = weight(line(state, kind, k), stride_);
      state.weights_[index(kind, k)] = static_cast<std::uint16_t>(w);
      state.score_ += f_[static_cast<std::size_t>(w)];
      if (kind == 0) state.excess_ += w;
    }
  }
}

void Reduction::choose_targets(const State& state) {
  for (int side = 0; side < 2; ++side) {
    std::vector<std::uint16_t>& targets = targets_[side];
    if (cost_.focus <= 0) {
      if (targets.empty()) {
        targets.resize(static_cast<std::size_t>(n_));
        std::iota(targets.begin(), targets.end(), std::uint16_t{0});
      }
      continue;
    }
    const std::uint16_t* own = state.weights_.data() + index(side, 0);
    const auto lighter = [own](std::uint16_t a, std::uint16_t b) {
      return own[a] != own[b] ? own[a] < own[b] : a < b;
    };
    const auto keep = [&](std::vector<std::uint16_t>& lines) {
      const std::size_t most = std::min(lines.size(), static_cast<std::size_t>(cost_.focus));
      std::partial_sort(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(most),
                        lines.end(), lighter);
      lines.resize(most);
    };
    targets.clear();
    for (int k = 0; k < n_; ++k) {
      if (own[k] > 1) targets.push_back(static_cast<std::uint16_t>(k));
    }
    keep(targets);
    // The lines that cross the lightest one of the other side.
    const std::uint16_t* cross = state.weights_.data() + index(1 - side, 0);
    int lightest = -1;
    for (int k = 0; k < n_; ++k) {
      if (cross[k] > 1 && (lightest < 0 || cross[k] < cross[lightest])) lightest = k;
    }
    if (lightest < 0) continue;
    std::vector<std::uint16_t> crossing_lines;
    for_each_bit(line(state, 1 - side, lightest), stride_, [&](int k) {
      if (std::find(targets.begin(), targets.end(), k) == targets.end()) {
        crossing_lines.push_back(static_cast<std::uint16_t>(k));
      }
    });
    keep(crossing_lines);
    targets.insert(targets.end(), crossing_lines.begin(), crossing_lines.end());
  }
}

void Reduction::score_children(const State& state) {
  choose_targets(state);
  const float* f = gain_of_weight_.data();
  const auto size = static_cast<std::size_t>(n_);
  for (int side = 0; side < 2; ++side) gains_[side].resize(targets_[side].size() * size);
  for (int kind = 0; kind < kinds_; ++kind) {
    const int side = kind % 2;
    const int crossing = kind ^ 1;
    const std::uint16_t* cross_weights = state.weights_.data() + index(crossing, 0);
    for (std::size_t c = 0; c < size; ++c) {
      const std::size_t w = cross_weights[c];
      rises_[c] = f[w + 1] - f[w];
      const float curvature = w == 0 ? 0.0F : (f[w - 1] - f[w]) - rises_[c];
      fill_curvatures(line(state, crossing, static_cast<int>(c)), curvature, n_,
                      curvatures_.data() + c * size);
    }
    const CrossedLines lines{line(state, kind, 0), line(state, crossing, 0),
                             state.weights_.data() + index(kind, 0), n_, stride_};
    sum_over_lines(lines, rises_.data(), row_.data());
    std::swap(rises_, row_);
    if (kind < 2) {
      float* out = gains_[side].data();
      for (const std::uint16_t to : targets_[side]) {
        stop_point();
        gains_of_line(lines, to, curvatures_.data(), rises_.data(), f, out);
        out += size;
      }
    } else {
      // Line i of M gains line j: line j of N gains line i.
      for (int j = 0; j < n_; ++j) {
        stop_point();
        gains_of_line(lines, j, curvatures_.data(), rises_.data(), f, row_.data());
        float* out = gains_[side].data() + j;
        for (const std::uint16_t to : targets_[side]) {
          *out += row_[to];
          out += size;
        }
      }
    }
  }
}

std::uint64_t Reduction::hash(const State& state, const Move& move) const {
  std::uint64_t hash = state.hash_;
  for_each_bit(line(state, move.side, move.from), stride_, [&](int k) {
    const int r = move.side == 0 ? move.to : k;
    const int c = move.side == 0 ? k : move.to;
    hash ^= keys_[static_cast<std::size_t>(r * n_ + c)];
  });
  return hash;
}

void Reduction::add(State& state, int kind, int to, int from) const {
  Word* target = state.words_.data() + offset(kind, to);
  const Word* source = state.words_.data() + offset(kind, from);
  const int crossing = kind ^ 1;
  double change = 0;
  for_each_bit(source, stride_, [&](int k) {
    Word& word = state.words_[offset(crossing, k) + static_cast<std::size_t>(to / word_bits)];
    const Word bit = Word{1} << (to % word_bits);
    std::uint16_t& w = state.weights_[index(crossing, k)];
    change -= f_[w];
    word ^= bit;
    w = static_cast<std::uint16_t>(word & bit ? w + 1 : w - 1);
    change += f_[w];
  });
  std::uint16_t& w = state.weights_[index(kind, to)];
  const int before = w;
  change -= f_[w];
  for (int k = 0; k < stride_; ++k) target[k] ^= source[k];
  w = static_cast<std::uint16_t>(weight(target, stride_));
  change += f_[w];
  state.score_ += change;
  if (kind < 2) state.excess_ += w - before;
}

void Reduction::make(State& state, const Move& move) const {
  state.hash_ = hash(state, move);
  add(state, move.side, move.to, move.from);
  if (kinds_ == 4) add(state, 2 + move.side, move.from, move.to);
}

double Reduction::change(const State& state, int kind, int to, int from) const {
  const Word* target = line(state, kind, to);
  const Word* source = line(state, kind, from);
  const std::uint16_t* cross = state.weights_.data() + index(kind ^ 1, 0);
  double change = 0;
  int both = 0;
  for_each_bit(source, stride_, [&](int k) {
    const std::size_t w = cross[k];
    const bool falls = (target[k / word_bits] >> (k % word_bits)) & 1;
    both += falls;
    change += f_[falls ? w - 1 : w + 1] - f_[w];
  });
  const int w = state.weights_[index(kind, to)];
  const int sum = w + state.weights_[index(kind, from)] - 2 * both;
  return change + (f_[static_cast<std::size_t>(sum)] - f_[static_cast<std::size_t>(w)]);
}

double Reduction::gain(const State& state, const Move& move) const {
  const double gain = change(state, move.side, move.to, move.from);
  return kinds_ == 4 ? gain + change(state, 2 + move.side, move.from, move.to) : gain;
}

GateList Reduction::circuit(const State& reduced, const std::vector<Move>& moves) const {
  // M = rows^-1 * permutation * columns^-1: the column additions come first, then the row additions
  // in reverse on the wires where the permutation finds their rows.
  std::vector<int> wire(static_cast<std::size_t>(n_));
  for (int r = 0; r < n_; ++r) {
    for_each_bit(line(reduced, 0, r), stride_,
                 [&](int c) { wire[static_cast<std::size_t>(r)] = c; });
  }
  std::vector<Gate> gates;
  gates.reserve(moves.size());
  for (const Move& move : moves) {
    if (move.side == 1) gates.push_back(cnot(move.to, move.from));
  }
  for (auto move = moves.rbegin(); move != moves.rend(); ++move) {
    if (move->side == 0) gates.push_back(cnot(wire[move->from], wire[move->to]));
  }
  GateList list(n_, std::move(gates));
  list.frame = WireFrame(wire);
  return list;
}

}  // namespace zelt::braidwerk::internal
