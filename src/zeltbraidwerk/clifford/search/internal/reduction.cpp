#include "zeltbraidwerk/clifford/search/internal/reduction.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// Letters of a Pauli operator: how many, and what they cost together.
struct Letters {
  int count;
  float price;
};

/// The products of the rows of one wire with those of another, or with none.
using Products = std::array<std::array<Letters, 4>, 4>;

inline Letters letters_of_product(const Word* a, const Word* b, int words, const float* prices) {
  Letters sum{0, 0};
  for (int w = 0; w < words; ++w, prices += 8 * 256) {
    const Word letters = (a[w] ^ b[w]) | (a[words + w] ^ b[words + w]);
    sum.count += std::popcount(letters);
    const float* of_byte = prices;
    for (Word rest = letters; rest != 0; rest >>= 8, of_byte += 256)
      sum.price += of_byte[rest & 255];
  }
  return sum;
}

/// `a` and `b` are the first of the three rows of a wire.
ZELTBRAIDWERK_CLONES void multiply_out(const Word* a, const Word* b, int words, const float* prices,
                                       Products& products) {
  for (std::size_t k = 1; k < 4; ++k) {
    for (std::size_t l = 1; l < 4; ++l) {
      products[k][l] =
          letters_of_product(a + (k - 1) * 2 * static_cast<std::size_t>(words),
                             b + (l - 1) * 2 * static_cast<std::size_t>(words), words, prices);
    }
  }
}

bool meet(const OperatorRows& rows, int side, int i, int j) {
  const Word* a = rows.row(side, i, 1);
  const Word* b = rows.row(side, j, 1);
  const int words = rows.words();
  for (int w = 0; w < words; ++w) {
    const Word at_a = a[w] | a[words + w] | a[2 * words + w] | a[3 * words + w];
    const Word at_b = b[w] | b[words + w] | b[2 * words + w] | b[3 * words + w];
    if ((at_a & at_b) != 0) return true;
  }
  return false;
}

}  // namespace

OperatorReduction::OperatorReduction(int wires, const OperatorCost& cost)
    : wires_(wires), cost_(cost), value_(cost.values(3 * wires + 1)) {}

double OperatorReduction::small_change() const {
  const int typical = 9 * wires_ / 4;
  return value(typical + 1) - value(typical);
}

OperatorReduction::State OperatorReduction::start(OperatorRows rows) const {
  State state{std::move(rows), 0};
  state.cost = cost_of(state.rows);
  return state;
}

double OperatorReduction::cost_of(const OperatorRows& rows) const {
  double sums[2] = {0, 0};
  for (int side = 0; side < 2; ++side) {
    for (int i = 0; i < wires_; ++i) sums[side] += value(rows.weight(side, i));
  }
  return sums[0] + cost_.other_side * sums[1];
}

std::uint64_t OperatorReduction::hash(const State& state, const Move& move) {
  scratch_ = state.rows;
  scratch_.multiply(move.side, move.gate);
  return scratch_.hash();
}

void OperatorReduction::make(State& state, const Move& move) const {
  state.rows.multiply(move.side, move.gate);
  state.cost = cost_of(state.rows);
}

void OperatorReduction::price_letters(const OperatorRows& rows, int side) {
  const double weight = (side == 0 ? cost_.other_side : 1.0) / 2;
  letters_.assign(static_cast<std::size_t>(rows.words()) * 8 * 256, 0);
  for (int q = 0; q < wires_; ++q) {
    const int w = rows.weight(1 - side, q);
    const auto price = static_cast<float>(weight * (value(w + 1) - value(w > 0 ? w - 1 : 0)));
    float* sums = letters_.data() + static_cast<std::size_t>(q / 8) * 256;
    const unsigned bit = 1U << (q % 8);
    for (unsigned low = 0; low < bit; ++low) sums[bit | low] = sums[low] + price;
  }
}

/// The wires whose rows are the lightest, but for those that are done, and those at which the
/// lightest row of the other side has letters: nearly all good gates are there.
void OperatorReduction::choose_wires(const OperatorRows& rows, int side) {
  tried_.assign(static_cast<std::size_t>(wires_), wires_ <= cost_.most_wires);
  if (wires_ <= cost_.most_wires) return;
  const auto lightest = [&](int of, std::size_t most, auto&& takes) {
    std::vector<std::pair<int, int>> found;
    for (int i = 0; i < wires_; ++i) {
      if (takes(i)) found.emplace_back(rows.weight(of, i), i);
    }
    const std::size_t count = std::min(found.size(), most);
    std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count),
                      found.end());
    found.resize(count);
    return found;
  };
  const auto unfinished = [&](int of) { return [&, of](int i) { return rows.weight(of, i) > 3; }; };
  const auto most = static_cast<std::size_t>(cost_.most_wires);
  for (const auto& [weight, i] : lightest(side, most, unfinished(side))) {
    tried_[static_cast<std::size_t>(i)] = true;
  }
  for (const auto& [weight, q] : lightest(1 - side, 1, unfinished(1 - side))) {
    const auto met = lightest(side, most / 2, [&](int i) {
      return (rows.label_at(side, i, 1, q) | rows.label_at(side, i, 2, q)) != 0;
    });
    for (const auto& [own, i] : met) tried_[static_cast<std::size_t>(i)] = true;
  }
}

void OperatorReduction::price(const OperatorRows& rows, int side, const std::vector<char>& taken) {
  const auto is_taken = [&](int i) {
    return !taken.empty() && taken[static_cast<std::size_t>(i)] != 0;
  };
  children_.clear();
  choose_wires(rows, side);
  price_letters(rows, side);
  const double weight = side == 0 ? 1.0 : cost_.other_side;
  const std::vector<Word> nothing(2 * static_cast<std::size_t>(rows.words()));
  std::vector<std::array<Letters, 4>> alone(static_cast<std::size_t>(wires_));
  for (int i = 0; i < wires_; ++i) {
    auto& of_wire = alone[static_cast<std::size_t>(i)];
    of_wire[0] = {0, 0};
    for (int a = 1; a < 4; ++a) {
      const auto own =
          letters_of_product(rows.row(side, i, a), nothing.data(), rows.words(), letters_.data());
      of_wire[static_cast<std::size_t>(a)] = own;
      of_wire[0] = {of_wire[0].count + own.count, of_wire[0].price + own.price};
    }
  }
  // A wire keeps one of its rows, and each of the others becomes the product of the third with the
  // other wire's.
  const auto change = [&](const std::array<Letters, 4>& before, int kept, const Letters& one,
                          const Letters& other) {
    const Letters& same = before[static_cast<std::size_t>(kept)];
    const double own = value(same.count + one.count + other.count) - value(before[0].count);
    return static_cast<float>(weight * own) + same.price + one.price + other.price -
           before[0].price;
  };
  Products both;
  const auto product = [&](int a, int b) -> const Letters& {
    return both[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
  };
  for (int j = 1; j < wires_; ++j) {
    if (is_taken(j)) continue;
    for (int i = 0; i < j; ++i) {
      if (is_taken(i)) continue;
      if (!tried_[static_cast<std::size_t>(i)] && !tried_[static_cast<std::size_t>(j)]) continue;
      if (!meet(rows, side, i, j)) continue;
      multiply_out(rows.row(side, i, 1), rows.row(side, j, 1), rows.words(), letters_.data(), both);
      for (int a = 1; a < 4; ++a) {
        const auto& of_a = other_labels[a];
        for (int b = 1; b < 4; ++b) {
          const auto& of_b = other_labels[b];
          children_.push_back({change(alone[static_cast<std::size_t>(i)], a, product(of_a[0], b),
                                      product(of_a[1], b)) +
                                   change(alone[static_cast<std::size_t>(j)], b,
                                          product(a, of_b[0]), product(a, of_b[1])),
                               {end_of(i, a), end_of(j, b)}});
        }
      }
    }
  }
}

/// Gates before the operator come first; those after it last to first, carried to before what is
/// left, and with it at the end.
GateList circuit_of(const OperatorRows& left, const std::vector<OperatorReduction::Move>& moves) {
  WireFrame before(left.wires());
  for (int i = 0; i < left.wires(); ++i) {
    int place = 0;
    while (place + 1 < left.wires() && left.label_at(0, i, 1, place) == 0) ++place;
    for (int label = 0; label < 4; ++label) {
      const int from = label == 0 ? 0 : left.label_at(0, i, label, place);
      before[end_of(i, label)] = end_of(place, from);
    }
  }
  return circuit_of(before, moves);
}

GateList circuit_of(const WireFrame& left, const std::vector<OperatorReduction::Move>& moves) {
  GateList list(left.wires(), {});
  list.frame = left.inverse();
  list.gates.reserve(moves.size());
  for (const auto& [side, gate] : moves) {
    if (side == 1) list.gates.push_back(gate);
  }
  for (auto move = moves.rbegin(); move != moves.rend(); ++move) {
    if (move->side == 0) list.gates.push_back({left[move->gate.a], left[move->gate.b]});
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
