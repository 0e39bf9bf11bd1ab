#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

namespace zelt::braidwerk::internal {

/// The strings of rotations in the order in which a search looks at them, one row per string, X
/// words before Z words. A string is found by its key, which is linear: the key of a product is the
/// XOR of the keys.
class RotationList {
 public:
  /// Row k is row order[k] of the frame.
  RotationList(const PauliFrame& frame, std::vector<int> order);

  int qubits() const { return qubits_; }
  int count() const { return static_cast<int>(numbers_.size()); }
  int words() const { return words_; }  ///< of the X bits of a string; as many of the Z bits
  int number(int row) const { return numbers_[static_cast<std::size_t>(row)]; }
  const Word* string(int row) const { return strings_.data() + offset(row); }
  std::uint64_t key(int row) const { return keys_[static_cast<std::size_t>(row)]; }

  static std::uint64_t key_of_letter(int q, bool is_z);

  bool clash(const Word* a, const Word* b) const;  ///< whether two strings anticommute

  /// Calls f for every row with the key, in no order.
  template <class F>
  void each_with(std::uint64_t key, F&& f) const {
    for (std::size_t slot = key & mask_; slots_[slot] >= 0; slot = (slot + 1) & mask_) {
      if (keys_[static_cast<std::size_t>(slots_[slot])] == key) f(slots_[slot]);
    }
  }

 private:
  std::size_t offset(int row) const {
    return static_cast<std::size_t>(row) * 2 * static_cast<std::size_t>(words_);
  }

  int qubits_;
  int words_;
  std::vector<int> numbers_;
  std::vector<Word> strings_;
  std::vector<std::uint64_t> keys_;
  std::vector<std::int32_t> slots_;  // open addressing
  std::uint64_t mask_;
};

inline bool RotationList::clash(const Word* a, const Word* b) const {
  Word odd = 0;
  for (int w = 0; w < words_; ++w) odd ^= (a[w] & b[words_ + w]) ^ (a[words_ + w] & b[w]);
  return (std::popcount(odd) & 1) != 0;
}

}  // namespace zelt::braidwerk::internal
