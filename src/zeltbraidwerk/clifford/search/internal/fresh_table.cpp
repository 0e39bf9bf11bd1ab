#include "zeltbraidwerk/clifford/search/internal/fresh_table.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <mutex>
#include <optional>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

/// All orders of the zeros and sums of them: what changes nothing about `fresh` wires coming in.
std::vector<WindowRows> starts(int wires, int fresh) {
  std::vector<WindowRows> found;
  const unsigned vectors = 1U << fresh;
  std::array<unsigned, 4> images{};
  const auto extend = [&](auto& self, int q, unsigned spanned) -> void {
    if (q == fresh) {
      WindowRows rows = identity_rows_on(wires);
      for (int i = 0; i < fresh; ++i) {
        WindowRows x = 0;
        for (int j = 0; j < fresh; ++j) {
          if ((images[static_cast<std::size_t>(i)] >> j & 1) != 0) x |= WindowRows{1} << (2 * j);
        }
        rows &= ~(WindowRows{0xffff} << (16 * i));
        rows |= x << (16 * i);
      }
      found.push_back(rows);
      return;
    }
    for (unsigned v = 1; v < vectors; ++v) {
      if ((spanned >> v & 1) != 0) continue;
      images[static_cast<std::size_t>(q)] = v;
      unsigned more = spanned;
      for (unsigned u = 0; u < vectors; ++u) {
        if ((spanned >> u & 1) != 0) more |= 1U << (u ^ v);
      }
      self(self, q + 1, more);
    }
  };
  extend(extend, 0, 1);
  return found;
}

}  // namespace

FreshTable::FreshTable(int wires, int fresh)
    : wires_(wires), fresh_(fresh), kept_(~WindowRows{0}), slots_(1U << 10) {
  WindowRows trivial = 0;
  for (int q = 0; q < fresh; ++q) trivial |= WindowRows{2} << (2 * q);
  kept_ = ~(trivial * 0x0101010101010101);
  std::vector<WindowRows> level;
  for (const WindowRows rows : starts(wires, fresh)) {
    if (enter(rows, 0)) level.push_back(rows);
  }
  std::vector<WindowRows> next;
  for (int distance = 1; !level.empty(); ++distance) {
    next.clear();
    for (const WindowRows rows : level) {
      for (int move = 0; move < moves_on(wires); ++move) {
        const WindowRows one = before(rows, window_gates[static_cast<std::size_t>(move)]);
        if (enter(one, distance)) next.push_back(one);
      }
    }
    std::swap(level, next);
  }
}

const FreshTable& FreshTable::shared(int wires, int fresh) {
  static std::array<std::once_flag, 16> built;
  static std::array<std::optional<FreshTable>, 16> tables;
  const auto place = static_cast<std::size_t>((wires - 1) * 4 + fresh - 1);
  std::call_once(built[place], [&] { tables[place].emplace(wires, fresh); });
  return *tables[place];
}

/// The two least of the three operators that a wire's labels stand for, which may be one and the
/// same and none; wires in order of these.
FreshTable::Key FreshTable::key_of(WindowRows rows) const {
  std::array<std::uint16_t, 4> wire{};
  for (std::size_t i = 0; i < wire.size(); ++i) {
    const auto x = static_cast<std::uint8_t>(rows >> (16 * i));
    const auto z = static_cast<std::uint8_t>(rows >> (16 * i + 8));
    const auto y = static_cast<std::uint8_t>(x ^ z);
    const auto [low, high] = std::minmax(x, z);
    const auto [least, other] = std::minmax(low, y);
    wire[i] = static_cast<std::uint16_t>(least << 8 | std::min(other, high));
  }
  const auto sort = [&](std::size_t a, std::size_t b) {
    const std::uint16_t low = std::min(wire[a], wire[b]);
    wire[b] = std::max(wire[a], wire[b]);
    wire[a] = low;
  };
  sort(0, 1), sort(2, 3), sort(0, 2), sort(1, 3), sort(1, 2);
  Key key = 0;
  for (std::size_t i = 0; i < 4; ++i) key |= Key{wire[i]} << (16 * i);
  return key;
}

std::size_t FreshTable::slot_of(Key key) const {
  const std::size_t last = slots_.size() - 1;
  auto at = static_cast<std::size_t>((key * 0x9e3779b97f4a7c15U) >> 32) & last;
  while (slots_[at].key != key && slots_[at].key != 0) at = (at + 1) & last;
  return at;
}

bool FreshTable::enter(WindowRows rows, int distance) {
  const Key key = key_of(rows);
  Slot& slot = slots_[slot_of(key)];
  if (slot.key == key) return false;
  slot = {key, static_cast<std::int8_t>(distance)};
  if (2 * static_cast<std::size_t>(++size_) > slots_.size()) grow();
  return true;
}

void FreshTable::grow() {
  std::vector<Slot> old(2 * slots_.size());
  std::swap(old, slots_);
  for (const Slot& slot : old) {
    if (slot.key != 0) slots_[slot_of(slot.key)] = slot;
  }
}

int FreshTable::distance(WindowRows rows) const {
  const Slot& slot = slots_[slot_of(key_of(rows))];
  assert(slot.key != 0);
  return slot.distance;
}

}  // namespace zelt::braidwerk::internal
