#include "zeltbraidwerk/clifford/search/internal/class_table.h"

#include <span>
#include <vector>

namespace zelt::braidwerk::internal {
namespace {

// A slot is two numbers: the low bits of a class, and its high bits with one more than the distance
// in the lowest byte. 0: free.
constexpr std::size_t slots = std::size_t{1} << 19;
constexpr std::uint32_t layout = 1;

/// The slot of a class, or the free one that it would take.
std::size_t slot_of(std::span<const std::uint64_t> table, const OperatorClass& of) {
  const std::uint64_t hash = (of.low ^ of.low >> 31 ^ of.high) * 0x9e3779b97f4a7c15U;
  auto at = static_cast<std::size_t>(hash >> 45);
  while (table[2 * at + 1] != 0 && (table[2 * at] != of.low || table[2 * at + 1] >> 8 != of.high)) {
    at = (at + 1) % slots;
  }
  return at;
}

/// Breadth first over one operator of each class.
std::vector<std::uint64_t> built() {
  std::vector<std::uint64_t> table(2 * slots);
  ClassFinder class_of;
  std::vector<FiveWireRows> level;
  const auto add = [&](const FiveWireRows& rows, int distance, std::vector<FiveWireRows>& to) {
    const OperatorClass found = class_of(rows);
    const std::size_t at = slot_of(table, found);
    if (table[2 * at + 1] != 0) return;
    table[2 * at] = found.low;
    table[2 * at + 1] = std::uint64_t{found.high} << 8 | static_cast<unsigned>(distance + 1);
    to.push_back(rows);
  };
  add(FiveWireRows::identity(), 0, level);
  for (int distance = 1; distance <= ClassTable::most_gates; ++distance) {
    std::vector<FiveWireRows> next;
    for (const FiveWireRows& rows : level) {
      for (const Gate& gate : five_wire_gates()) add(rows_after(gate, rows), distance, next);
    }
    level = std::move(next);
  }
  return table;
}

}  // namespace

ClassTable::ClassTable()
    : slots_(stored_table<std::uint64_t>("clifford-classes-5", layout, 2 * slots, built)) {}

const ClassTable& ClassTable::shared() {
  static const ClassTable table;
  return table;
}

int ClassTable::distance(const OperatorClass& of) const {
  const std::size_t at = slot_of(slots_.all(), of);
  const auto found = static_cast<int>(slots_[2 * at + 1] & 255);
  return found == 0 ? beyond : found - 1;
}

}  // namespace zelt::braidwerk::internal
