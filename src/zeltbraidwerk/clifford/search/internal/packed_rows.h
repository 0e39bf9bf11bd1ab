#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/linear/search/internal/wire_set.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// OperatorRows for many gates of one side at a time: the rows of the other side follow once, after
/// all of them. Plane 0 has the X parts of rows X, 1 their Z parts, 2 and 3 are those of rows Z.
template <int W>
class PackedRows {
 public:
  using Set = WireSet<W>;

  PackedRows() = default;
  explicit PackedRows(const OperatorRows& rows)
      : n_(rows.wires()), lines_(8 * static_cast<std::size_t>(n_)) {
    for (int side = 0; side < 2; ++side) {
      for (int plane = 0; plane < 4; ++plane) {
        for (int v = 0; v < n_; ++v) {
          const Word* row = rows.row(side, v, plane / 2 + 1) + plane % 2 * rows.words();
          std::copy_n(row, rows.words(), line(side, plane, v).words.begin());
        }
      }
    }
  }

  /// A line of plane 0; those of the next planes are `apart` words on, each from the one before.
  const Word* lines(int side, int v) const { return line(side, 0, v).words.data(); }
  std::size_t apart() const { return static_cast<std::size_t>(n_) * W; }

  /// The X parts of a row, or its Z parts.
  Set part(int side, int v, int label, int part) const {
    Set sum;
    if ((label & label_x) != 0) sum ^= line(side, part, v);
    if ((label & label_z) != 0) sum ^= line(side, 2 + part, v);
    return sum;
  }
  int letter(int side, int v, int label, int at) const {
    return (part(side, v, label, 0).contains(at) ? label_x : 0) |
           (part(side, v, label, 1).contains(at) ? label_z : 0);
  }

  /// A gate with label a on wire i and b on j, for the rows of this side alone.
  void multiply(int side, int i, int a, int j, int b) {
    for (int part = 0; part < 2; ++part) {
      Set sum = this->part(side, i, a, part);
      sum ^= this->part(side, j, b, part);
      for (const auto& [v, label] : {std::pair{i, a}, {j, b}}) {
        if (label != label_x) line(side, part, v) ^= sum;
        if (label != label_z) line(side, 2 + part, v) ^= sum;
      }
    }
  }
  /// Brings the other side to where the rows of this one are.
  void carry_over(int side) {
    constexpr int dual[] = {3, 1, 2, 0};  // what anticommutes with X has a Z part
    for (int plane = 0; plane < 4; ++plane) {
      transpose(&line(side, plane, 0), &line(1 - side, dual[plane], 0), n_);
    }
  }

  /// Blind to one-qubit gates after the operator.
  std::uint64_t hash() const {
    std::uint64_t hash = 0;
    for (int v = 0; v < n_; ++v) {
      std::uint64_t of_wire = 0;
      for (int label = 1; label < 4; ++label) {
        std::uint64_t of_row = 0;
        for (int part = 0; part < 2; ++part) {
          for (const Word word : this->part(0, v, label, part).words) {
            of_row = Rng::mixed(of_row + word + 0x9e3779b97f4a7c15U);
          }
        }
        of_wire += of_row;
      }
      hash = Rng::mixed(hash + of_wire);
    }
    return hash;
  }

 private:
  Set& line(int side, int plane, int v) {
    return lines_[static_cast<std::size_t>((4 * side + plane) * n_ + v)];
  }
  const Set& line(int side, int plane, int v) const {
    return lines_[static_cast<std::size_t>((4 * side + plane) * n_ + v)];
  }

  int n_ = 0;
  std::vector<Set> lines_;
};

}  // namespace zelt::braidwerk::internal
