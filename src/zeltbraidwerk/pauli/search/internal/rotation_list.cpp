#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"

#include <bit>

#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

std::uint64_t RotationList::key_of_letter(int q, bool is_z) {
  return Rng::mixed(0x9e3779b97f4a7c15u * (2 * static_cast<std::uint64_t>(q) + (is_z ? 2 : 1)));
}

RotationList::RotationList(const PauliFrame& frame, std::vector<int> order)
    : qubits_(frame.qubits()), words_(words_for(frame.qubits())), numbers_(std::move(order)) {
  strings_.resize(offset(count()));
  keys_.resize(numbers_.size());
  for (int q = 0; q < qubits_; ++q) {
    for (const bool is_z : {false, true}) {
      const std::uint64_t key = key_of_letter(q, is_z);
      const Word* plane = is_z ? frame.z(q) : frame.x(q);
      const auto column = static_cast<std::size_t>(q / word_bits + (is_z ? words_ : 0));
      for (int r = 0; r < count(); ++r) {
        if (((plane[number(r) / word_bits] >> (number(r) % word_bits)) & 1) == 0) continue;
        strings_[offset(r) + column] |= Word{1} << (q % word_bits);
        keys_[static_cast<std::size_t>(r)] ^= key;
      }
    }
  }
  slots_.assign(std::bit_ceil(2 * numbers_.size() + 1), -1);
  mask_ = slots_.size() - 1;
  for (int r = 0; r < count(); ++r) {
    std::size_t slot = key(r) & mask_;
    while (slots_[slot] >= 0) slot = (slot + 1) & mask_;
    slots_[slot] = r;
  }
}

}  // namespace zelt::braidwerk::internal
