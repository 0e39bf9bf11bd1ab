#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What the Pauli labels of the wires stand for after some gates: the string before the gates
/// that has become label L on wire q. Signs are left out, and so is what gates do on one wire.
///
/// Gate {a, b} multiplies a letter on wire a that anticommutes with its label there by its label
/// on b, and the other way round: a CNOT between changes of basis, and its own inverse.
class LabelFrame {
 public:
  LabelFrame() = default;
  explicit LabelFrame(int qubits);

  int qubits() const { return static_cast<int>(keys_.size() / 2); }
  void play(const Gate& gate);

  std::uint64_t key(End end) const {
    const std::size_t at = 2 * static_cast<std::size_t>(wire_of(end));
    return ((label_of(end) & label_x) != 0 ? keys_[at] : 0) ^
           ((label_of(end) & label_z) != 0 ? keys_[at + 1] : 0);
  }
  const Word* of_x(int q) const { return string(2 * q); }
  const Word* of_z(int q) const { return string(2 * q + 1); }
  bool stands_for(End end, const Word* string) const;

  /// The same for frames that differ by labels renamed on wires, or by the wires' order.
  std::uint64_t hash() const;
  /// Of the frame after one more gate.
  std::uint64_t hash_after(const Gate& gate) const;

  /// What X and then Z on the wires stand for, all with a plus.
  PauliFrame preimages() const;

 private:
  std::size_t width() const { return 2 * static_cast<std::size_t>(words_); }
  Word* string(int k) { return strings_.data() + static_cast<std::size_t>(k) * width(); }
  const Word* string(int k) const {
    return strings_.data() + static_cast<std::size_t>(k) * width();
  }
  void multiply(End changed, End by);

  int words_ = 0;
  std::vector<Word> strings_;        // those of X and Z on wire after wire, X words before Z words
  std::vector<std::uint64_t> keys_;  // theirs
};

}  // namespace zelt::braidwerk::internal
