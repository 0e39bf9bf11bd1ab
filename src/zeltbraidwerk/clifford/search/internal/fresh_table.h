#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"
#include "zeltbraidwerk/export.h"

namespace zelt::braidwerk::internal {

/// The operator in front of its last gate.
constexpr WindowRows before(WindowRows rows, const Gate& gate) {
  const auto row = [&](End end) {
    const WindowRows wire = rows >> (16 * wire_of(end));
    return ((label_of(end) & 1) != 0 ? wire : 0) ^ ((label_of(end) & 2) != 0 ? wire >> 8 : 0);
  };
  const WindowRows product = (row(gate.a) ^ row(gate.b)) & 0xff;
  for (const End end : {gate.a, gate.b}) {
    const int shift = 16 * wire_of(end);
    if ((label_of(end) & 2) != 0) rows ^= product << shift;
    if ((label_of(end) & 1) != 0) rows ^= product << (shift + 8);
  }
  return rows;
}

/// The fewest gates for what Clifford operators on 2 to 4 wires do where the first wires come in as
/// zeros, up to one-qubit gates on the outputs and their order. Z on such a wire changes nothing,
/// so the rows are looked at but for it; gates are taken off at the end, which keeps the wires
/// fresh. On four wires these are some ten thousand classes for one fresh wire, fewer for more of
/// them but for four, for which every order of the zeros has its place.
class ZELTBRAIDWERK_KERNEL_EXPORT FreshTable {
 public:
  FreshTable(int wires, int fresh);

  /// Built when it is asked for first.
  static const FreshTable& shared(int wires, int fresh);

  /// The rows without what is nothing on zeros.
  WindowRows reduced(WindowRows rows) const { return rows & kept_; }
  int distance(WindowRows rows) const;

  int wires() const { return wires_; }
  int fresh() const { return fresh_; }
  int size() const { return size_; }

 private:
  using Key = std::uint64_t;
  struct Slot {
    Key key = 0;  ///< 0: free
    std::int8_t distance = 0;
  };

  Key key_of(WindowRows rows) const;
  std::size_t slot_of(Key key) const;
  bool enter(WindowRows rows, int distance);
  void grow();

  int wires_;
  int fresh_;
  WindowRows kept_;
  int size_ = 0;
  std::vector<Slot> slots_;
};

}  // namespace zelt::braidwerk::internal
