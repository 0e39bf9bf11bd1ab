#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What became of the ends of an operation after some gates: end `from` of the operation is now
/// found on end `on` of the wires, frame[on] = from. One entry for each of the four labels of a
/// wire: label_wire for the output as a whole, label_x, label_z and label_y for its Pauli labels,
/// which one-qubit gates exchange.
class WireFrame {
 public:
  WireFrame() = default;
  /// Everything in its place.
  explicit WireFrame(int wires) : from_(labels * static_cast<std::size_t>(wires)) {
    for (std::size_t end = 0; end < from_.size(); ++end) from_[end] = static_cast<End>(end);
  }
  /// Output q on wire wires[q].
  explicit WireFrame(const std::vector<int>& wires) : from_(labels * wires.size()) {
    for (std::size_t q = 0; q < wires.size(); ++q) put_output(static_cast<int>(q), wires[q]);
  }

  int wires() const { return static_cast<int>(from_.size() / labels); }
  std::size_t size() const { return from_.size(); }  ///< ends
  End operator[](std::size_t on) const { return from_[on]; }
  End& operator[](std::size_t on) { return from_[on]; }
  bool operator==(const WireFrame&) const = default;

  /// The output that is on a wire.
  int output_on(int wire) const { return wire_of(from_[end_of(wire, label_wire)]); }
  void put_output(int output, int wire) {
    for (int label = 0; label < static_cast<int>(labels); ++label) {
      from_[end_of(wire, label)] = end_of(output, label);
    }
  }
  /// Output q is on wire permutation()[q].
  std::vector<int> permutation() const {
    std::vector<int> wire_of_output(from_.size() / labels);
    for (int wire = 0; wire < wires(); ++wire) {
      wire_of_output[static_cast<std::size_t>(output_on(wire))] = wire;
    }
    return wire_of_output;
  }

  /// The end on which each end of the operation is found.
  WireFrame inverse() const {
    WireFrame result;
    result.from_.resize(from_.size());
    for (std::size_t on = 0; on < from_.size(); ++on) result[from_[on]] = static_cast<End>(on);
    return result;
  }
  /// What is on end `on` moves to end new_name(on).
  template <class F>
  WireFrame renamed(F&& new_name) const {
    WireFrame result;
    result.from_.resize(from_.size());
    for (std::size_t on = 0; on < from_.size(); ++on) {
      result[new_name(static_cast<End>(on))] = from_[on];
    }
    return result;
  }

 private:
  static constexpr std::size_t labels = 4;

  std::vector<End> from_;
};

}  // namespace zelt::braidwerk::internal
