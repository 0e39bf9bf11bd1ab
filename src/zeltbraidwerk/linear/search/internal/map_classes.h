#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/table_store.h"

namespace zelt::braidwerk::internal {

/// A matrix of up to 7 x 7 over GF(2): bit c of rows[r] is entry (r, c).
struct FewRows {
  static constexpr int most_wires = 7;
  std::array<std::uint8_t, most_wires> rows{};

  static FewRows of(const BitMatrix& m);

  /// The map with a CNOT in front taken away, which is the same as one put there.
  FewRows without(int control, int target) const {
    FewRows less = *this;
    for (std::uint8_t& row : less.rows) {
      row = static_cast<std::uint8_t>(row ^ ((row >> target & 1) << control));
    }
    return less;
  }
};

/// Matrices that differ by names of wires, or where each is the inverse of the other's transpose,
/// take equally many CNOTs and form a class; where outputs may be on any wires (`permuted`), rows
/// and columns are named each for themselves. A gate in front leads from all of a class to the same
/// classes. This finds a number of the class, in a few microseconds: the least matrix of it, of
/// those whose lines are in the order of what no name changes, their weights and those of the lines
/// that they cross.
class MapClassFinder {
 public:
  MapClassFinder(int wires, bool permuted) : wires_(wires), permuted_(permuted) {}

  std::uint64_t operator()(const FewRows& m) const;
  /// A matrix of the class.
  FewRows member(std::uint64_t of) const;

 private:
  using Keys = std::array<std::uint64_t, FewRows::most_wires>;
  using Order = std::array<std::uint8_t, FewRows::most_wires>;

  Keys keys(const FewRows& m) const;
  std::uint64_t number(const FewRows& m, const Order& order) const;

  int wires_;
  bool permuted_;
};

/// The fewest CNOTs of all classes of matrices that take few: on six wires with outputs anywhere
/// all 22,521 classes, of up to 12 gates; in place 307,299 of up to 8; on seven wires with outputs
/// anywhere 189,562 of up to 8, in place those of up to 7. Up to 4 MB; built in half a second,
/// those of up to 8 gates in one, where no file has it.
class MapClasses {
 public:
  MapClasses(int wires, bool permuted);
  /// The one table of its kind, built when it is first asked for; safe to call from all threads.
  static const MapClasses& of(int wires, bool permuted);
  static bool has(int wires) { return wires == 6 || wires == 7; }
  /// To build the table where no file has it, and to search beyond it; a guess.
  static double seconds(int wires, bool permuted) { return permuted == (wires == 6) ? 1 : 3; }

  int most_gates() const { return most_gates_; }
  const MapClassFinder& class_of() const { return class_of_; }
  /// More than most_gates() for classes that the table does not have.
  int distance(std::uint64_t of) const;

 private:
  MapClassFinder class_of_;
  int most_gates_;
  StoredTable<std::uint64_t> slots_;
};

}  // namespace zelt::braidwerk::internal
