#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_class.h"
#include "zeltbraidwerk/search/internal/table_store.h"

namespace zelt::braidwerk::internal {

/// The fewest gates for the Clifford operators on five or six qubits that take few, with outputs in
/// place: 248,149 and 870,381 classes of up to seven gates. Most operators on five take eight or
/// nine, on six eleven or twelve, so that one to five gates lead into the table. 6 and 23 MB, built
/// in half a second and in four seconds where no file has it.
template <int wires>
class ClassTable {
 public:
  static constexpr int most_gates = wires >= 5 ? 7 : wires - 1;
  static constexpr int beyond = most_gates + 1;

  ClassTable();
  /// Built when it is asked for first; a StopScope can end that.
  static const ClassTable& shared();
  /// Whether that takes milliseconds.
  static bool is_at_hand();

  /// `beyond` for classes that take more gates than the table has.
  int distance(const OperatorClass& of) const;
  /// False only where no class of the table has this number by ClassSketch.
  bool may_have(std::uint64_t sketch) const {
    return has(sketch_bits(sketch, 2 * slots, sketch_log));
  }
  /// The same for the number of all orders.
  bool may_have_any(std::uint64_t sketch) const {
    return has(sketch_bits(sketch, size - (std::size_t{1} << all_log), all_log));
  }

 private:
  static constexpr std::size_t slots = wires == 6 ? 1'300'000 : wires == 5 ? 380'000 : 5000;
  /// About as many words as sketches, of which each sets two bits of one.
  static constexpr int sketch_log = wires == 6 ? 18 : wires == 5 ? 16 : 8;
  static constexpr int all_log = wires == 6 ? 14 : wires == 5 ? 13 : 8;
  static constexpr std::size_t size =
      2 * slots + (std::size_t{1} << sketch_log) + (std::size_t{1} << all_log);
  struct Bits {
    std::size_t word;
    std::uint64_t mask;
  };
  static Bits sketch_bits(std::uint64_t sketch, std::size_t first, int log) {
    const std::uint64_t hash = (sketch ^ sketch >> 32) * 0x9e3779b97f4a7c15U;
    const std::uint64_t mask = std::uint64_t{1} << (hash >> 20 & 63) | std::uint64_t{1}
                                                                           << (hash >> 26 & 63);
    return {first + static_cast<std::size_t>(hash >> (64 - log)), mask};
  }
  bool has(const Bits& bits) const { return (slots_[bits.word] & bits.mask) == bits.mask; }
  static std::size_t slot_of(std::span<const std::uint64_t> table, const OperatorClass& of);
  static std::vector<std::uint64_t> built();

  StoredTable<std::uint64_t> slots_;  ///< and the bits of sketches after them
};

extern template class ClassTable<3>;
extern template class ClassTable<4>;
extern template class ClassTable<5>;
extern template class ClassTable<6>;

}  // namespace zelt::braidwerk::internal
