#include "zeltbraidwerk/pauli/search/internal/network_block.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/clifford/search/internal/operator_table.h"

namespace zelt::braidwerk::internal {
namespace {

using Table = OperatorTable<NetworkBlock::wires>;
constexpr int moves = moves_on(NetworkBlock::wires);

constexpr std::uint8_t byte(std::uint64_t bytes, int k) {
  return static_cast<std::uint8_t>(bytes >> (8 * k));
}
constexpr std::uint16_t bit_of(int rotation) {
  return static_cast<std::uint16_t>(1U << rotation);
}
constexpr bool clash(std::uint8_t a, std::uint8_t b) {
  const unsigned swapped = (b & 0x55U) << 1 | (b & 0xaaU) >> 1;
  return (std::popcount(a & swapped) & 1) != 0;
}

const OperatorTable<NetworkBlock::wires>& table() {
  static const auto& shared = OperatorTable<NetworkBlock::wires>::shared();
  return shared;
}

struct Move {
  int a;
  int b;
  int label_a;
  int label_b;

  /// Eight operators through the gate, each in its byte.
  std::uint64_t through(std::uint64_t operators) const {
    const auto anticommuting = [&](int wire, int label) {
      std::uint64_t odd = 0;
      if ((label & label_z) != 0) odd ^= operators >> (2 * wire);
      if ((label & label_x) != 0) odd ^= operators >> (2 * wire + 1);
      return odd & 0x0101010101010101;
    };
    return operators ^ (anticommuting(a, label_a) * static_cast<unsigned>(label_b)) << (2 * b) ^
           (anticommuting(b, label_b) * static_cast<unsigned>(label_a)) << (2 * a);
  }
};
constexpr auto block_moves = [] {
  std::array<Move, moves> result{};
  for (std::size_t k = 0; k < moves; ++k) {
    const Gate& gate = window_gates[k];
    result[k] = {wire_of(gate.a), wire_of(gate.b), label_of(gate.a), label_of(gate.b)};
  }
  return result;
}();

}  // namespace

/// What gates make of the strings of a state, rotations by bits.
class NetworkBlock::GatesOn {
 public:
  explicit GatesOn(const State& state) {
    for (std::size_t q = 0; q < wires; ++q) {
      const unsigned x = state.letters[q].x;
      const unsigned z = state.letters[q].z;
      is_[q] = {x | z, x & ~z, z & ~x, x & z};
      anticommutes_[q] = {0, z, x, x ^ z};
    }
  }

  /// Those that have fewer letters after the gate.
  unsigned fallen(const Move& move) const {
    return (is(move.a, move.label_a) & anticommutes(move.b, move.label_b)) |
           (is(move.b, move.label_b) & anticommutes(move.a, move.label_a));
  }
  /// One less than the most letters that one has after the gate, with those that have `fallen`.
  int farthest(const Move& move, unsigned fallen) const {
    const unsigned on_a = is(move.a, 0);
    const unsigned on_b = is(move.b, 0);
    const unsigned on_other = is(3 - move.a - move.b, 0);
    const unsigned both = (on_a & on_b & ~fallen) | (~on_a & anticommutes(move.b, move.label_b)) |
                          (~on_b & anticommutes(move.a, move.label_a));
    if ((both & on_other) != 0) return 2;
    return (both | (on_other & (on_a | on_b))) != 0 ? 1 : 0;
  }
  State after(const Move& move, const State& state) const {
    State next = state;
    next.operators = move.through(state.operators);
    const auto multiply = [&](int wire, int label, unsigned rows) {
      Letters& letters = letters_of(next, wire);
      if ((label & label_x) != 0) letters.x = static_cast<Rows>(letters.x ^ rows);
      if ((label & label_z) != 0) letters.z = static_cast<Rows>(letters.z ^ rows);
    };
    multiply(move.b, move.label_b, anticommutes(move.a, move.label_a));
    multiply(move.a, move.label_a, anticommutes(move.b, move.label_b));
    return next;
  }

 private:
  unsigned is(int wire, int label) const {
    return is_[static_cast<std::size_t>(wire)][static_cast<std::size_t>(label)];
  }
  unsigned anticommutes(int wire, int label) const {
    return anticommutes_[static_cast<std::size_t>(wire)][static_cast<std::size_t>(label)];
  }

  std::array<std::array<unsigned, 4>, wires> is_;  // by label; 0: any
  std::array<std::array<unsigned, 4>, wires> anticommutes_;
};

bool NetworkBlock::read(const std::vector<NetworkEvent>& events, bool end_is_free) {
  end_is_free_ = end_is_free;
  gates_ = rotations_ = 0;
  start_ = {};
  WindowRows labels = identity_rows_on(wires);
  std::array<std::uint8_t, most_rotations> strings;
  const auto stands_for = [&](End end) {
    unsigned string = 0;
    if ((label_of(end) & label_x) != 0) string ^= byte(labels, 2 * wire_of(end));
    if ((label_of(end) & label_z) != 0) string ^= byte(labels, 2 * wire_of(end) + 1);
    return static_cast<std::uint8_t>(string);
  };
  for (const NetworkEvent& event : events) {
    if (event.row < 0) {
      const std::uint8_t of_a = stands_for(event.gate.a);
      const std::uint8_t of_b = stands_for(event.gate.b);
      const auto multiply = [&](End changed, std::uint8_t by) {
        for (const int bit : {label_x, label_z}) {
          if (label_of(changed) == bit) continue;
          labels ^= std::uint64_t{by} << (8 * (2 * wire_of(changed) + (bit == label_z ? 1 : 0)));
        }
      };
      multiply(event.gate.a, of_b);
      multiply(event.gate.b, of_a);
      ++gates_;
      continue;
    }
    if (rotations_ == most_rotations) return false;
    const std::uint8_t string = stands_for(event.gate.a);
    const auto k = static_cast<std::size_t>(rotations_);
    before_[k] = 0;
    for (int other = 0; other < rotations_ && in_order_; ++other) {
      const auto o = static_cast<std::size_t>(other);
      if (clash(strings[o], string)) before_[k] |= bit_of(other);
    }
    strings[k] = string;
    for (int q = 0; q < wires; ++q) {
      const int label = string >> (2 * q) & 3;
      if ((label & label_x) != 0) letters_of(start_, q).x |= bit_of(rotations_);
      if ((label & label_z) != 0) letters_of(start_, q).z |= bit_of(rotations_);
    }
    start_.left |= bit_of(rotations_);
    rows_[k] = event.row;
    ++rotations_;
  }
  start_.operators = labels;
  return true;
}

/// One less than the most letters that a string has.
int NetworkBlock::farthest(const State& state) {
  const auto on = [&](std::size_t q) { return state.letters[q].x | state.letters[q].z; };
  const int a = on(0);
  const int b = on(1);
  const int c = on(2);
  return (a & b & c) != 0 ? 2 : ((a & b) | (c & (a | b))) != 0 ? 1 : 0;
}

int NetworkBlock::least() const {
  return std::max(farthest(start_), end_is_free_ ? 0 : table().find(start_.operators).distance);
}

/// Those with a single letter before which nothing must come; of those served nothing is left.
void NetworkBlock::serve(State& state) {
  for (bool again = true; again;) {
    again = false;
    const auto on = [&](std::size_t q) { return state.letters[q].x | state.letters[q].z; };
    const int several = (on(0) & on(1)) | (on(2) & (on(0) | on(1)));
    for (auto rest = static_cast<unsigned>((on(0) | on(1) | on(2)) & ~several); rest != 0;
         rest &= rest - 1) {
      const int k = std::countr_zero(rest);
      if ((before_[static_cast<std::size_t>(k)] & state.left) != 0) continue;
      const auto gone = static_cast<Rows>(~bit_of(k));
      for (int q = 0; q < wires; ++q) {
        Letters& letters = letters_of(state, q);
        const int label = (letters.x >> k & 1) * label_x + (letters.z >> k & 1) * label_z;
        if (label == 0) continue;
        const End end = end_of(q, label);
        found_.push_back({{end, end}, rows_[static_cast<std::size_t>(k)]});
        letters.x &= gone;
        letters.z &= gone;
      }
      state.left &= gone;
      again = in_order_;
    }
  }
}

/// Every qubit is on its own wire again.
bool NetworkBlock::is_done(const State& state) const {
  if (state.left != 0) return false;
  for (int k = 0; k < 2 * wires && !end_is_free_; ++k) {
    if ((byte(state.operators, k) & ~(3U << (2 * (k / 2)))) != 0) return false;
  }
  return true;
}

bool NetworkBlock::descend(const State& state, int budget) {
  if (is_done(state)) {
    for (int q = 0; q < wires; ++q) {
      for (int label = 1; label <= 3; ++label) {
        unsigned string = 0;
        if ((label & label_x) != 0) string ^= byte(state.operators, 2 * q);
        if ((label & label_z) != 0) string ^= byte(state.operators, 2 * q + 1);
        ends_[end_of(q, label)] =
            end_is_free_ ? end_of(q, label) : end_of(q, static_cast<int>(string >> (2 * q)));
      }
    }
    return true;
  }
  if (budget == 0 || --patience_ < 0) return false;
  const GatesOn gates(state);
  // What is left to undo takes a gate less after the moves `down`, and at most a gate more
  // otherwise.
  const auto [distance, down] = end_is_free_ ? Table::Entry{-1, 0} : table().find(state.operators);
  for (int k = 0; k < moves; ++k) {
    const int number = (first_move_ + k * stride_) % moves;
    if ((pairs_ >> (number / 9) & 1) == 0) continue;
    const bool undoes = (down >> number & 1) != 0;
    if (!undoes && distance >= budget) continue;
    const Move& move = block_moves[static_cast<std::size_t>(number)];
    const unsigned fallen = gates.fallen(move);
    if (fallen == 0 && !undoes) continue;
    if (gates.farthest(move, fallen) > budget - 1) continue;
    State next = gates.after(move, state);
    if (!undoes && distance == budget - 1 && table().find(next.operators).distance > distance) {
      continue;
    }
    const std::size_t before = found_.size();
    found_.push_back({window_gates[static_cast<std::size_t>(number)], -1});
    serve(next);
    if (descend(next, budget - 1)) return true;
    found_.resize(before);
    if (patience_ < 0) return false;
  }
  return false;
}

bool NetworkBlock::rewrite(int most_gates, unsigned pairs, int patience, Rng& rng) {
  constexpr int strides[] = {1, 2, 4, 5, 7, 8, 10, 11, 13};  // prime to the number of moves
  static_assert(moves == 27);
  patience_ = patience;
  pairs_ = pairs;
  first_move_ = rng.below(moves);
  stride_ = strides[rng.below(static_cast<int>(std::size(strides)))];
  found_.clear();
  State state = start_;
  serve(state);
  return descend(state, most_gates);
}

}  // namespace zelt::braidwerk::internal
