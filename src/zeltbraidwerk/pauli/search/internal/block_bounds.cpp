#include "zeltbraidwerk/pauli/search/internal/block_bounds.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace zelt::braidwerk::internal {
namespace {

using Strings = std::uint64_t;  // by bits

/// Bit s of the result is bit s ^ by.
Strings exchanged(Strings strings, unsigned by) {
  constexpr std::array<Strings, 6> low{0x5555555555555555, 0x3333333333333333, 0x0f0f0f0f0f0f0f0f,
                                       0x00ff00ff00ff00ff, 0x0000ffff0000ffff, 0x00000000ffffffff};
  for (std::size_t k = 0; k < low.size(); ++k) {
    if ((by >> k & 1) == 0) continue;
    const int shift = 1 << k;
    strings = (strings & low[k]) << shift | (strings >> shift & low[k]);
  }
  return strings;
}

/// Of the strings after a gate, those before it.
class StringsBefore {
 public:
  explicit StringsBefore(const Gate& gate) {
    const std::array<End, 2> ends{gate.a, gate.b};
    for (std::size_t k = 0; k < 2; ++k) {
      label_[k] = static_cast<unsigned>(label_of(ends[k])) << (2 * wire_of(ends[k]));
    }
    for (unsigned string = 0; string < BlockBounds::strings; ++string) {
      const unsigned changed = static_cast<unsigned>(rows_through(gate, string)) ^ string;
      for (std::size_t k = 0; k < 2; ++k) {
        if ((changed & label_[1 - k]) != 0) anticommuting_[k] |= Strings{1} << string;
      }
    }
  }

  Strings operator()(Strings strings) const {
    for (std::size_t k = 0; k < 2; ++k) {
      strings ^= (strings ^ exchanged(strings, label_[1 - k])) & anticommuting_[k];
    }
    return strings;
  }

 private:
  std::array<unsigned, 2> label_{};  // of each end, at its wire
  std::array<Strings, 2> anticommuting_{};
};

/// Of the three operators that a wire's labels stand for the two least.
WindowRows with_least_rows(WindowRows rows) {
  WindowRows result = 0;
  for (int q = 0; q < BlockBounds::wires; ++q) {
    const auto x = static_cast<std::uint8_t>(rows >> (16 * q));
    const auto z = static_cast<std::uint8_t>(rows >> (16 * q + 8));
    const auto y = static_cast<std::uint8_t>(x ^ z);
    const WindowRows least = std::min({x, y, z});
    const WindowRows most = std::max({x, y, z});
    result |= (least | (least ^ most) << 8) << (16 * q);
  }
  return result;
}

}  // namespace

const BlockBounds& BlockBounds::shared() {
  static const BlockBounds bounds;
  return bounds;
}

/// From the operator of which nothing is left, breadth first; then, gate by gate, all strings at
/// once.
BlockBounds::BlockBounds()
    : keys_(std::size_t{1} << slot_bits),
      numbers_(std::size_t{1} << slot_bits),
      after_(operators + 1),
      gates_(operators + 1),
      bounds_(operators + 1) {
  std::vector<WindowRows> rows{with_least_rows(identity_rows_on(wires))};
  rows.reserve(operators);
  keys_[slot_of(rows[0])] = rows[0];
  for (std::size_t k = 0; k < rows.size(); ++k) {
    for (std::size_t move = 0; move < moves; ++move) {
      const WindowRows next = with_least_rows(rows_through(window_gates[move], rows[k]));
      const std::size_t slot = slot_of(next);
      if (keys_[slot] == 0) {
        keys_[slot] = next;
        numbers_[slot] = static_cast<Number>(rows.size());
        rows.push_back(next);
      }
      after_[k].move[move] = numbers_[slot];
    }
  }
  const std::vector<StringsBefore> before(window_gates.begin(), window_gates.begin() + moves);
  Strings single = 0;
  for (unsigned string = 0; string < strings; ++string) {
    if (letters_of_string(string) <= 1) single |= Strings{1} << string;
  }
  std::vector<Strings> within(operators);  // strings for which so many gates may do
  within[done] = single;
  for (bool more = true; more;) {
    more = false;
    const std::vector<Strings> within_less = within;
    for (std::size_t k = 0; k < operators; ++k) {
      for (Strings rest = ~within_less[k]; rest != 0; rest &= rest - 1) {
        ++gates_[k][static_cast<std::size_t>(std::countr_zero(rest))];
      }
      if (within_less[k] == ~Strings{0}) continue;
      more = true;
      for (std::size_t move = 0; move < moves; ++move) {
        const Strings after = within_less[after_[k].move[move]];
        if (after != 0) within[k] |= before[move](after);
      }
      if ((within[k] & 1) != 0) within[k] |= single;
    }
  }
  after_[free_end].move.fill(free_end);
  for (unsigned string = 0; string < strings; ++string) {
    gates_[free_end][string] =
        static_cast<std::uint8_t>(std::max(0, letters_of_string(string) - 1));
  }
}

BlockBounds::~BlockBounds() {
  for (const auto& bounds : bounds_) delete bounds.load(std::memory_order_relaxed);
}

BlockBounds::Number BlockBounds::number_of(WindowRows rows) const {
  return numbers_[slot_of(with_least_rows(rows))];
}

const BlockBounds::Bounds& BlockBounds::made(Number number) const {
  auto bounds = std::make_unique<Bounds>();
  std::array<std::uint64_t, strings> lowering{};
  std::array<std::uint64_t, strings> keeping{};
  const auto& gates = gates_[number];
  for (std::size_t move = 0; move < moves; ++move) {
    const auto& gates_after = gates_[after_[number].move[move]];
    for (std::size_t string = 0; string < strings; ++string) {
      const int more = gates_after[string_moves.after[move][string]] - gates[string];
      lowering[string] |= std::uint64_t{more < 0} << move;
      keeping[string] |= std::uint64_t{more <= 0} << move;
    }
  }
  for (std::size_t string = 0; string < strings; ++string) {
    (*bounds)[string] = Bound(gates[string], lowering[string], keeping[string]);
  }
  const Bounds* known = nullptr;
  if (!bounds_[number].compare_exchange_strong(known, bounds.get(), std::memory_order_acq_rel)) {
    return *known;
  }
  return *bounds.release();
}

}  // namespace zelt::braidwerk::internal
