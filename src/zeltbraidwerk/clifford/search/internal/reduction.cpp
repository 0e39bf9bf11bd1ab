#include "zeltbraidwerk/clifford/search/internal/reduction.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int others[4][2] = {{0, 0}, {2, 3}, {1, 3}, {1, 2}};

constexpr std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

/// Weights of the sums of any two rows of a side: entry (r, s) for s > r.
ZELTBRAIDWERK_CLONES void weigh_sums(const Word* rows, int count, int words, std::int16_t* sums) {
  for (int r = 0; r < count; ++r) {
    for (int s = r + 1; s < count; ++s) {
      int ones = 0;
      for (int w = 0; w < words; ++w)
        ones += std::popcount(rows[r * words + w] ^ rows[s * words + w]);
      sums[r * count + s] = static_cast<std::int16_t>(ones / 2);
    }
  }
}

/// Sums of the values that the bits of a byte stand for, for every byte of a row.
void sum_up(const std::vector<float>& values, std::vector<float>& sums) {
  const std::size_t bytes = values.size() / 8;
  sums.resize(bytes * 256);
  for (std::size_t k = 0; k < bytes; ++k) {
    float* sum = sums.data() + 256 * k;
    sum[0] = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
      for (unsigned low = 0; low < 1U << bit; ++low)
        sum[1U << bit | low] = sum[low] + values[8 * k + bit];
    }
  }
}

inline float look_up(const float* sums, const Word* a, const Word* b, int bytes) {
  float sum = 0;
  for (int k = 0; k < bytes; k += 8) {
    Word both = a[k / 8] & b[k / 8];
    const int count = std::min(8, bytes - k);
    for (int byte = 0; byte < count; ++byte, both >>= 8, sums += 256) sum += sums[both & 255];
  }
  return sum;
}

}  // namespace

OperatorRows::OperatorRows(const PauliFrame& images)
    : wires_(images.qubits()),
      plane_bytes_((wires_ + 7) / 8),
      words_((3 * plane_bytes_ + 7) / 8),
      rows_(6 * at(wires_) * at(words_)),
      weights_(6 * at(wires_)) {
  // Letters as the engine's labels: X 1, Z 2, Y 3.
  constexpr int labels[4] = {0, 1, 3, 2};
  for (int q = 0; q < wires_; ++q) {
    for (const int label : {1, 2}) {
      for (int i = 0; i < wires_; ++i) {
        const int letter = labels[images.letter((label - 1) * wires_ + q, i)];
        if (letter == 0) continue;
        flip(row(1, q, label), i, letter);
        for (const int other : others[letter]) {
          const int bit = bit_of(q, label);
          row(0, i, other)[bit / word_bits] ^= Word{1} << (bit % word_bits);
        }
      }
    }
  }
  for (int q = 0; q < wires_; ++q) {
    for (int side = 0; side < 2; ++side) {
      for (int w = 0; w < words_; ++w) row(side, q, 3)[w] = row(side, q, 1)[w] ^ row(side, q, 2)[w];
    }
    // The plane of Y is the sum of those of X and Z.
    for (int label = 1; label < 4; ++label) {
      for (int i = 0; i < wires_; ++i) {
        Word* r = row(0, q, label);
        const auto bit = [&](int plane) {
          const int b = bit_of(i, plane);
          return r[b / word_bits] >> (b % word_bits) & 1;
        };
        const Word y = bit(1) ^ bit(2);
        r[bit_of(i, 3) / word_bits] |= y << (bit_of(i, 3) % word_bits);
      }
    }
    for (int label = 1; label < 4; ++label) {
      weigh(0, q, label);
      weigh(1, q, label);
    }
  }
}

int OperatorRows::letter(int side, int wire, int label, int other) const {
  const Word* r = row(side, wire, label);
  const auto anticommutes = [&](int plane) {
    const int bit = bit_of(other, plane);
    return static_cast<int>(r[bit / word_bits] >> (bit % word_bits) & 1);
  };
  return anticommutes(label_z) * label_x | anticommutes(label_x) * label_z;
}

void OperatorRows::flip(Word* r, int wire, int label) const {
  for (const int other : others[label]) {
    const int bit = bit_of(wire, other);
    r[bit / word_bits] ^= Word{1} << (bit % word_bits);
  }
}

void OperatorRows::weigh(int side, int wire, int label) {
  const Word* r = row(side, wire, label);
  int ones = 0;
  for (int w = 0; w < words_; ++w) ones += std::popcount(r[w]);
  std::int16_t& weight = weights_[number(side, wire, label)];
  if (side == 0) total_ += ones / 2 - weight;
  weight = static_cast<std::int16_t>(ones / 2);
}

void OperatorRows::multiply(int side, const Gate& gate) {
  const int i = wire_of(gate.a), j = wire_of(gate.b);
  const int a = label_of(gate.a), b = label_of(gate.b);
  // Rows of the other side that anticommute with the gate are multiplied by it.
  const int plane = 8 * plane_bytes_;
  for (int w = 0; w < words_; ++w) {
    for (Word rest = row(side, i, a)[w] ^ row(side, j, b)[w]; rest != 0; rest &= rest - 1) {
      const int bit = w * word_bits + std::countr_zero(rest);
      const int q = bit % plane;
      const int label = bit / plane + 1;
      Word* r = row(1 - side, q, label);
      flip(r, i, a);
      flip(r, j, b);
      weigh(1 - side, q, label);
    }
  }
  const auto add = [&](int wire, int label) {
    Word* to = row(side, wire, label);
    for (int w = 0; w < words_; ++w) to[w] ^= row(side, i, a)[w] ^ row(side, j, b)[w];
    weigh(side, wire, label);
  };
  for (const int label : others[a]) add(i, label);
  for (const int label : others[b]) add(j, label);
}

std::uint64_t OperatorRows::hash() const {
  std::uint64_t sum = 0;
  for (int i = 0; i < wires_; ++i) {
    std::uint64_t of_wire = 0;
    for (int label = 1; label < 4; ++label) {
      std::uint64_t of_row = 0;
      for (int w = 0; w < words_; ++w)
        of_row = Rng::mixed(of_row + row(0, i, label)[w] + 0x9e3779b97f4a7c15U);
      of_wire += of_row;
    }
    sum += Rng::mixed(of_wire);
  }
  return sum;
}

Reduction::Reduction(int wires, const OperatorCost& cost)
    : wires_(wires), cost_(cost), value_(cost.values(3 * wires + 1)) {}

double Reduction::small_change() const {
  const int typical = (cost_.grouped ? 9 : 3) * wires_ / 4;
  return value_[at(typical + 1)] - value_[at(typical)];
}

Reduction::State Reduction::start(OperatorRows rows) const {
  State state{std::move(rows), 0};
  state.cost = cost_of(state.rows);
  return state;
}

double Reduction::cost_of(const OperatorRows& rows) const {
  double sum = 0;
  for (int side = 0; side < 2; ++side) {
    double of_side = 0;
    for (int i = 0; i < wires_; ++i) {
      const int x = rows.weight(side, i, 1), z = rows.weight(side, i, 2),
                y = rows.weight(side, i, 3);
      of_side +=
          cost_.grouped ? value_[at(x + z + y)] : value_[at(x)] + value_[at(z)] + value_[at(y)];
    }
    sum += side == 0 ? of_side : of_side * cost_.other_side;
  }
  return sum;
}

std::uint64_t Reduction::hash(const State& state, const Move& move) {
  scratch_ = state.rows;
  scratch_.multiply(move.side, move.gate);
  return scratch_.hash();
}

void Reduction::make(State& state, const Move& move) const {
  state.rows.multiply(move.side, move.gate);
  state.cost = cost_of(state.rows);
}

void Reduction::evaluate(const OperatorRows& rows) {
  children_.clear();
  for (int side = 0; side < 2; ++side) {
    price_columns(rows, side);
    price_rows(rows, side);
    add_children(rows, side);
  }
}

/// What a gate changes on the other side. A row there that anticommutes with the gate on one of its
/// wires alone gains or loses the letter on the other one.
void Reduction::price_columns(const OperatorRows& rows, int side) {
  const int n = wires_;
  const int words = rows.words();
  const int bytes = 3 * rows.plane_bytes();
  const double weight = side == 0 ? cost_.other_side : 1.0;
  std::vector<float> up(at(8 * bytes)), down(at(8 * bytes));
  for (int q = 0; q < n; ++q) {
    const int all =
        rows.weight(1 - side, q, 1) + rows.weight(1 - side, q, 2) + rows.weight(1 - side, q, 3);
    for (int label = 1; label < 4; ++label) {
      const int w = cost_.grouped ? all : rows.weight(1 - side, q, label);
      const double here = value_[at(w)];
      up[at(rows.bit_of(q, label))] = static_cast<float>(weight * (value_[at(w + 1)] - here));
      down[at(rows.bit_of(q, label))] =
          static_cast<float>(weight * (value_[at(w > 0 ? w - 1 : 0)] - here));
    }
  }
  sum_up(up, steps_up_);
  sum_up(down, steps_down_);

  letters_.resize(at(n) * 4 * at(words));
  for (int j = 0; j < n; ++j) {
    for (int w = 0; w < words; ++w) {
      const Word x = rows.row(side, j, 1)[w], z = rows.row(side, j, 2)[w], y = x ^ z;
      Word* of_wire = letters_.data() + at(j) * 4 * at(words) + w;
      of_wire[0] = ~(x | z);
      of_wire[words] = z & y;
      of_wire[2 * words] = x & y;
      of_wire[3 * words] = x & z;
    }
  }
  columns_.resize(at(3 * n) * at(3 * n));
  for (int i = 0; i < n; ++i) {
    for (int a = 1; a < 4; ++a) {
      const Word* row = rows.row(side, i, a);
      float* out = columns_.data() + at(3 * i + a - 1) * at(3 * n);
      for (int j = 0; j < n; ++j) {
        if (j == i) continue;
        const Word* of_wire = letters_.data() + at(j) * 4 * at(words);
        const float gained = look_up(steps_up_.data(), row, of_wire, bytes);
        for (int b = 1; b < 4; ++b) {
          out[3 * j + b - 1] =
              gained + look_up(steps_down_.data(), row, of_wire + b * words, bytes);
        }
      }
    }
  }
}

void Reduction::price_rows(const OperatorRows& rows, int side) {
  sums_.resize(at(3 * wires_) * at(3 * wires_));
  if (wires_ > 0) weigh_sums(rows.row(side, 0, 1), 3 * wires_, rows.words(), sums_.data());
}

void Reduction::add_children(const OperatorRows& rows, int side) {
  const int n = wires_;
  const std::size_t stride = at(3 * n);
  const double weight = side == 0 ? 1.0 : cost_.other_side;
  const auto meet = [&](int i, int j) {
    for (int w = 0; w < rows.words(); ++w) {
      if (((rows.row(side, i, 1)[w] | rows.row(side, i, 2)[w]) &
           (rows.row(side, j, 1)[w] | rows.row(side, j, 2)[w])) != 0) {
        return true;
      }
    }
    return false;
  };
  const auto price = [&](int kept, int one, int other) {
    return cost_.grouped ? value_[at(kept + one + other)]
                         : value_[at(kept)] + value_[at(one)] + value_[at(other)];
  };
  const auto price_of = [&](int i) {
    return price(rows.weight(side, i, 1), rows.weight(side, i, 2), rows.weight(side, i, 3));
  };
  for (int j = 1; j < n; ++j) {
    for (int i = 0; i < j; ++i) {
      if (!meet(i, j)) continue;
      const double before = price_of(i) + price_of(j);
      const auto sum = [&](int a, int b) {
        return static_cast<int>(sums_[at(3 * i + a - 1) * stride + at(3 * j + b - 1)]);
      };
      for (int a = 1; a < 4; ++a) {
        for (int b = 1; b < 4; ++b) {
          const double after =
              price(rows.weight(side, i, a), sum(others[a][0], b), sum(others[a][1], b)) +
              price(rows.weight(side, j, b), sum(a, others[b][0]), sum(a, others[b][1]));
          const float change = static_cast<float>(weight * (after - before)) +
                               columns_[at(3 * i + a - 1) * stride + at(3 * j + b - 1)] +
                               columns_[at(3 * j + b - 1) * stride + at(3 * i + a - 1)];
          children_.push_back({change, {side, {end_of(i, a), end_of(j, b)}}});
        }
      }
    }
  }
}

/// Gates before the operator come first; those behind it last to first, carried to before what is
/// left, and with it at the end.
GateList circuit_of(const Finished<Reduction>& found) {
  const OperatorRows& left = found.state.rows;
  GateList list(left.wires(), {});
  std::vector<End> before(list.origin.size());
  for (int i = 0; i < left.wires(); ++i) {
    for (int label = 1; label < 4; ++label) {
      for (int at = 0; at < left.wires(); ++at) {
        const int letter = left.letter(0, i, label, at);
        if (letter != 0) before[end_of(i, label)] = end_of(at, letter);
      }
      list.origin[before[end_of(i, label)]] = end_of(i, label);
    }
    list.origin[end_of(wire_of(before[end_of(i, 1)]), 0)] = end_of(i, 0);
  }
  for (const auto& [side, gate] : found.moves) {
    if (side == 1) list.gates.push_back(gate);
  }
  for (auto move = found.moves.rbegin(); move != found.moves.rend(); ++move) {
    if (move->side == 0) list.gates.push_back({before[move->gate.a], before[move->gate.b]});
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
