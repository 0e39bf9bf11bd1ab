#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"

namespace zelt::braidwerk::internal {

/// The fewest gates on three wires after which nothing is left of a Clifford operator, every qubit
/// on its own wire, where on the way a given Pauli string becomes a single letter. A block of gates
/// and rotations takes no fewer than any of its strings does. Operators are told apart up to
/// one-qubit gates on their outputs, and have numbers.
class BlockBounds {
 public:
  static constexpr int wires = 3;
  static constexpr int moves = moves_on(wires);
  static constexpr int strings = 64;
  static constexpr int operators = 6720;
  using Number = std::uint16_t;
  static constexpr Number done = 0;              ///< of an operator of which nothing is left
  static constexpr Number free_end = operators;  ///< of an end where nothing is to be undone

  /// Of a string, and what a gate makes of that. The identity stands for the operator alone.
  class Bound {
   public:
    Bound() = default;
    constexpr Bound(int gates, std::uint64_t lowering, std::uint64_t keeping)
        : bits_(static_cast<std::uint64_t>(gates) << (2 * moves) | keeping << moves | lowering) {}
    constexpr int gates() const { return static_cast<int>(bits_ >> (2 * moves)); }
    constexpr std::uint32_t lowering() const { return moves_at(0); }     ///< to a gate less
    constexpr std::uint32_t keeping() const { return moves_at(moves); }  ///< to no more gates
   private:
    constexpr std::uint32_t moves_at(int shift) const {
      return static_cast<std::uint32_t>(bits_ >> shift) & ((1U << moves) - 1);
    }
    std::uint64_t bits_ = 0;
  };
  using Bounds = std::array<Bound, strings>;

  /// Built when it is asked for first.
  static const BlockBounds& shared();
  ~BlockBounds();
  BlockBounds(const BlockBounds&) = delete;
  BlockBounds& operator=(const BlockBounds&) = delete;

  Number number_of(WindowRows rows) const;
  Number after(Number number, int move) const {
    return after_[number].move[static_cast<std::size_t>(move)];
  }
  /// By string. Those of each operator are made when they are asked for first.
  const Bounds& of(Number number) const {
    const Bounds* bounds = bounds_[number].load(std::memory_order_acquire);
    return bounds != nullptr ? *bounds : made(number);
  }

 private:
  static constexpr int slot_bits = 14;
  struct alignas(64) After {
    std::array<Number, moves> move{};
  };

  BlockBounds();
  const Bounds& made(Number number) const;
  std::size_t slot_of(WindowRows rows) const {
    auto at = static_cast<std::size_t>((rows * 0x9e3779b97f4a7c15U) >> (64 - slot_bits));
    while (keys_[at] != rows && keys_[at] != 0) at = (at + 1) & (keys_.size() - 1);
    return at;
  }

  std::vector<WindowRows> keys_;
  std::vector<Number> numbers_;
  std::vector<After> after_;
  std::vector<std::array<std::uint8_t, strings>> gates_;
  mutable std::vector<std::atomic<const Bounds*>> bounds_;
};

/// Pauli operators through a gate, each in its byte: what anticommutes with the label of one end
/// gets that of the other.
constexpr WindowRows rows_through(const Gate& gate, WindowRows rows) {
  constexpr WindowRows lowest = 0x0101010101010101;
  const auto anticommuting = [&](End end) {
    WindowRows odd = 0;
    if ((label_of(end) & label_z) != 0) odd ^= rows >> (2 * wire_of(end));
    if ((label_of(end) & label_x) != 0) odd ^= rows >> (2 * wire_of(end) + 1);
    return odd & lowest;
  };
  const auto label = [](End end) {
    return static_cast<unsigned>(label_of(end)) << (2 * wire_of(end));
  };
  return rows ^ anticommuting(gate.a) * label(gate.b) ^ anticommuting(gate.b) * label(gate.a);
}

constexpr int letters_of_string(unsigned string) {
  int letters = 0;
  for (; string != 0; string >>= 2) letters += (string & 3) != 0 ? 1 : 0;
  return letters;
}

/// What moves make of the strings on three wires.
struct StringMoves {
  std::array<std::array<std::uint8_t, BlockBounds::strings>, BlockBounds::moves> after{};
  std::array<std::uint32_t, BlockBounds::strings> shortening{};  ///< moves to fewer letters
};
inline constexpr StringMoves string_moves = [] {
  StringMoves result;
  for (std::size_t move = 0; move < BlockBounds::moves; ++move) {
    for (unsigned string = 0; string < BlockBounds::strings; ++string) {
      const auto after = static_cast<std::uint8_t>(rows_through(window_gates[move], string));
      result.after[move][string] = after;
      if (letters_of_string(after) < letters_of_string(string)) {
        result.shortening[string] |= std::uint32_t{1} << move;
      }
    }
  }
  return result;
}();

}  // namespace zelt::braidwerk::internal
