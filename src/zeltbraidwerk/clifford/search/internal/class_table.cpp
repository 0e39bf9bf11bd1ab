#include "zeltbraidwerk/clifford/search/internal/class_table.h"

#include <atomic>
#include <string>

#include "zeltbraidwerk/clifford/search/internal/class_sketch.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/unforkable.h"

namespace zelt::braidwerk::internal {
namespace {

// A slot is two numbers: the low bits of a class, and its high bits with one more than the distance
// in the lowest byte. 0: free.
constexpr std::uint32_t layout = 2;

template <int wires>
std::string name() {
  return "clifford-classes-" + std::to_string(wires);
}

template <int wires>
std::atomic<bool> is_made = false;

}  // namespace

/// The slot of a class, or the free one that it would take.
template <int wires>
std::size_t ClassTable<wires>::slot_of(std::span<const std::uint64_t> table,
                                       const OperatorClass& of) {
  auto at = static_cast<std::size_t>((OperatorClass::Hash{}(of) >> 32) * slots >> 32);
  while (table[2 * at + 1] != 0 && (table[2 * at] != of.low || table[2 * at + 1] >> 8 != of.high)) {
    at = at + 1 == slots ? 0 : at + 1;
  }
  return at;
}

/// Breadth first over one operator of each class.
template <int wires>
std::vector<std::uint64_t> ClassTable<wires>::built() {
  using Rows = FewWireRows<wires>;
  const Unforkable building;
  std::vector<std::uint64_t> table(size);
  ClassFinder<wires> class_of;
  std::vector<Rows> level;
  const auto add = [&](const Rows& rows, int distance, std::vector<Rows>& to) {
    const OperatorClass found = class_of(rows);
    const std::size_t at = slot_of(table, found);
    if (table[2 * at + 1] != 0) return;
    table[2 * at] = found.low;
    table[2 * at + 1] = found.high << 8 | static_cast<unsigned>(distance + 1);
    const ClassSketch<wires> sketch(rows);
    for (const Bits& bits :
         {sketch_bits(sketch.own(), 2 * slots, sketch_log),
          sketch_bits(sketch.own_of_all(), size - (std::size_t{1} << all_log), all_log)}) {
      table[bits.word] |= bits.mask;
    }
    to.push_back(rows);
  };
  add(Rows::identity(), 0, level);
  for (int distance = 1; distance <= most_gates; ++distance) {
    std::vector<Rows> next;
    for (const Rows& rows : level) {
      stop_point();
      for (const Gate& gate : Rows::gates()) add(rows.after(gate), distance, next);
    }
    level = std::move(next);
  }
  return table;
}

template <int wires>
ClassTable<wires>::ClassTable() {
  if constexpr (wires < 5) {
    slots_ = StoredTable(built());
  } else {
    slots_ = stored_table<std::uint64_t>(name<wires>(), layout, size, built);
  }
  is_made<wires> = true;
}

template <int wires>
const ClassTable<wires>& ClassTable<wires>::shared() {
  static const ClassTable table;
  return table;
}

template <int wires>
bool ClassTable<wires>::is_at_hand() {
  return is_made<wires> || stored_bytes({name<wires>(), layout, 8 * size}) != nullptr;
}

template <int wires>
int ClassTable<wires>::distance(const OperatorClass& of) const {
  const std::size_t at = slot_of(slots_.all(), of);
  const auto found = static_cast<int>(slots_[2 * at + 1] & 255);
  return found == 0 ? beyond : found - 1;
}

template class ClassTable<3>;
template class ClassTable<4>;
template class ClassTable<5>;
template class ClassTable<6>;

}  // namespace zelt::braidwerk::internal
