#include "zeltbraidwerk/pauli/search/internal/network_block.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/clifford/search/internal/operator_table.h"

namespace zelt::braidwerk::internal {
namespace {

using Table = OperatorTable<NetworkBlock::wires>;
constexpr std::uint64_t in_each = 0x0101010101010101;  // of eight bytes
constexpr int moves = moves_on(NetworkBlock::wires);

constexpr std::uint8_t letter(End end) {
  return static_cast<std::uint8_t>(label_of(end) << (2 * wire_of(end)));
}
constexpr std::uint8_t byte(std::uint64_t bytes, int k) {
  return static_cast<std::uint8_t>(bytes >> (8 * k));
}
/// Of eight strings, each in its byte.
constexpr std::uint64_t weights(std::uint64_t strings) {
  const std::uint64_t letters = strings | strings >> 1;
  std::uint64_t sum = 0;
  for (int q = 0; q < NetworkBlock::wires; ++q) sum += letters >> (2 * q) & in_each;
  return sum;
}
constexpr bool clash(std::uint8_t a, std::uint8_t b) {
  const unsigned swapped = (b & 0x55U) << 1 | (b & 0xaaU) >> 1;
  return (std::popcount(a & swapped) & 1) != 0;
}

/// Eight strings through a gate.
constexpr std::uint64_t through(const Gate& gate, std::uint64_t strings) {
  const auto pulled = [&](End end) {
    std::uint64_t odd = 0;
    if ((label_of(end) & label_z) != 0) odd ^= strings >> (2 * wire_of(end));
    if ((label_of(end) & label_x) != 0) odd ^= strings >> (2 * wire_of(end) + 1);
    return odd & in_each;
  };
  return strings ^ pulled(gate.a) * letter(gate.b) ^ pulled(gate.b) * letter(gate.a);
}

}  // namespace

int NetworkBlock::distance(std::uint64_t operators) {
  return Table::shared().find(operators).distance;
}

bool NetworkBlock::read(const std::vector<NetworkEvent>& events, bool end_is_free) {
  end_is_free_ = end_is_free;
  gates_ = rotations_ = 0;
  start_ = {};
  WindowRows labels = identity_rows_on(wires);
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
      if (clash(byte(start_.strings[o / 8], other % 8), string)) before_[k] |= 1U << other;
    }
    start_.strings[k / 8] |= std::uint64_t{string} << (8 * (k % 8));
    start_.left |= 1U << k;
    rows_[k] = event.row;
    ++rotations_;
  }
  start_.operators = labels;
  return true;
}

/// One less than the most letters that a string has.
int NetworkBlock::farthest(const State& state) {
  std::uint64_t two = 0;
  std::uint64_t three = 0;
  for (const std::uint64_t strings : state.strings) {
    const std::uint64_t w = weights(strings);
    two |= w >> 1 & in_each;
    three |= w & w >> 1 & in_each;
  }
  return three != 0 ? 2 : two != 0 ? 1 : 0;
}

int NetworkBlock::least() const {
  return std::max(farthest(start_), end_is_free_ ? 0 : distance(start_.operators));
}

/// Those with a single letter before which nothing must come; of those served nothing is left.
void NetworkBlock::serve(State& state) {
  for (bool again = true; again;) {
    again = false;
    for (std::size_t word = 0; word < state.strings.size(); ++word) {
      const std::uint64_t w = weights(state.strings[word]);
      for (std::uint64_t rest = w & ~(w >> 1) & in_each; rest != 0; rest &= rest - 1) {
        const int shift = std::countr_zero(rest);
        const std::size_t at = 8 * word + static_cast<std::size_t>(shift / 8);
        if ((before_[at] & state.left) != 0) continue;
        const auto string = static_cast<unsigned>(state.strings[word] >> shift & 0xff);
        const int wire = std::countr_zero(string) / 2;
        const End end = end_of(wire, static_cast<int>(string >> (2 * wire)));
        found_.push_back({{end, end}, rows_[at]});
        state.left &= ~(1U << at);
        state.strings[word] &= ~(std::uint64_t{0xff} << shift);
        again = in_order_;
      }
    }
  }
}

/// Whether a string has fewer letters than it had, or less is left to undo.
bool NetworkBlock::is_nearer(const State& before, const State& after) const {
  for (std::size_t word = 0; word < before.strings.size(); ++word) {
    const std::uint64_t fell =
        (weights(before.strings[word]) | 4 * in_each) - weights(after.strings[word]);
    if ((fell >> 2 & (fell | fell >> 1) & in_each) != 0) return true;
  }
  return !end_is_free_ && distance(after.operators) < distance(before.operators);
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
  for (int k = 0; k < moves; ++k) {
    const int move = (first_move_ + k * stride_) % moves;
    if ((pairs_ >> (move / 9) & 1) == 0) continue;
    const Gate& gate = window_gates[static_cast<std::size_t>(move)];
    State next = state;
    next.operators = through(gate, state.operators);
    for (auto& strings : next.strings) strings = through(gate, strings);
    if (farthest(next) > budget - 1) continue;
    if (!end_is_free_ && distance(next.operators) > budget - 1) continue;
    if (!is_nearer(state, next)) continue;
    const std::size_t before = found_.size();
    found_.push_back({gate, -1});
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
