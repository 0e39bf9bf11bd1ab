#include "zeltbraidwerk/linear/search/internal/map_classes.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <iterator>
#include <limits>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/window_shape.h"

namespace zelt::braidwerk::internal {
namespace {

/// By insertion: for so few, std::sort takes longer.
template <class Iterator, class Less = std::less<>>
void sort_few(Iterator first, Iterator last, Less less = {}) {
  for (Iterator next = first; next != last; ++next) {
    for (Iterator at = next; at != first && less(*at, *(at - 1)); --at) std::iter_swap(at, at - 1);
  }
}

FewRows transposed(const FewRows& m) {
  FewRows result;
  for (int r = 0; r < FewRows::most_wires; ++r) {
    for (int c = 0; c < FewRows::most_wires; ++c) {
      const int entry = m.rows[static_cast<std::size_t>(r)] >> c & 1;
      result.rows[static_cast<std::size_t>(c)] |= static_cast<std::uint8_t>(entry << r);
    }
  }
  return result;
}

FewRows inverse(FewRows m, int wires) {
  FewRows back;
  for (int r = 0; r < wires; ++r) {
    back.rows[static_cast<std::size_t>(r)] = static_cast<std::uint8_t>(1 << r);
  }
  for (int c = 0; c < wires; ++c) {
    const auto column = static_cast<std::size_t>(c);
    std::size_t pivot = column;
    while ((m.rows[pivot] >> c & 1) == 0) ++pivot;
    std::swap(m.rows[pivot], m.rows[column]);
    std::swap(back.rows[pivot], back.rows[column]);
    for (std::size_t r = 0; r < static_cast<std::size_t>(wires); ++r) {
      if (r == column || (m.rows[r] >> c & 1) == 0) continue;
      m.rows[r] ^= m.rows[column];
      back.rows[r] ^= back.rows[column];
    }
  }
  return back;
}

}  // namespace

FewRows FewRows::of(const BitMatrix& m) {
  FewRows packed;
  for (int r = 0; r < m.rows(); ++r) {
    packed.rows[static_cast<std::size_t>(r)] = static_cast<std::uint8_t>(m.row(r)[0]);
  }
  return packed;
}

/// How many lines of each weight a line crosses, three bits each. In place, a wire is a row and a
/// column.
MapClassFinder::Keys MapClassFinder::keys(const FewRows& m) const {
  std::array<int, FewRows::most_wires> row_weights{};
  std::array<int, FewRows::most_wires> column_weights{};
  const auto size = static_cast<std::size_t>(wires_);
  const auto entry = [&](std::size_t r, std::size_t c) { return m.rows[r] >> c & 1; };
  for (std::size_t r = 0; r < size; ++r) {
    for (std::size_t c = 0; c < size; ++c) {
      row_weights[r] += entry(r, c);
      column_weights[c] += entry(r, c);
    }
  }
  const auto counted = [](int weight) { return std::uint64_t{1} << (3 * (weight - 1)); };
  Keys keys{};
  for (std::size_t q = 0; q < size; ++q) {
    std::uint64_t columns = 0;
    std::uint64_t rows = 0;
    for (std::size_t other = 0; other < size; ++other) {
      if (entry(q, other) != 0) columns += counted(column_weights[other]);
      if (entry(other, q) != 0) rows += counted(row_weights[other]);
    }
    keys[q] = permuted_ ? columns : std::uint64_t(entry(q, q)) << 63 | columns << (3 * size) | rows;
  }
  return keys;
}

/// The matrix with rows in this order, as one number; and columns in the same order, or sorted.
std::uint64_t MapClassFinder::number(const FewRows& m, const Order& order) const {
  const auto size = static_cast<std::size_t>(wires_);
  std::array<std::uint8_t, FewRows::most_wires> columns{};
  for (std::size_t c = 0; c < size; ++c) {
    const int from = permuted_ ? static_cast<int>(c) : order[c];
    for (std::size_t r = 0; r < size; ++r) {
      columns[c] = static_cast<std::uint8_t>(columns[c] | (m.rows[order[r]] >> from & 1) << r);
    }
  }
  if (permuted_) sort_few(columns.begin(), columns.begin() + wires_);
  std::uint64_t number = 0;
  for (std::size_t c = 0; c < size; ++c) number = number << wires_ | columns[c];
  return number;
}

std::uint64_t MapClassFinder::operator()(const FewRows& m) const {
  struct Form {
    FewRows matrix;
    Keys keys;
    Keys sorted;
  };
  std::array<Form, 2> forms{{{m, {}, {}}, {transposed(inverse(m, wires_)), {}, {}}}};
  for (Form& form : forms) {
    form.keys = form.sorted = keys(form.matrix);
    sort_few(form.sorted.begin(), form.sorted.begin() + wires_);
  }
  const Keys& least = std::ranges::min_element(forms, {}, &Form::sorted)->sorted;
  std::uint64_t best = std::numeric_limits<std::uint64_t>::max();
  for (const Form& form : forms) {
    if (form.sorted != least) continue;
    Order order{};
    for (int q = 0; q < wires_; ++q) {
      order[static_cast<std::size_t>(q)] = static_cast<std::uint8_t>(q);
    }
    const auto end = order.begin() + wires_;
    const auto key = [&](std::uint8_t q) { return form.keys[q]; };
    sort_few(order.begin(), end,
             [&](auto a, auto b) { return std::pair(key(a), a) < std::pair(key(b), b); });
    // All orders of lines of equal keys, one group after the other.
    for (bool more = true; more;) {
      best = std::min(best, number(form.matrix, order));
      more = false;
      for (auto group = order.begin(); group != end && !more;) {
        const auto next = std::find_if(group, end, [&](auto q) { return key(q) != key(*group); });
        more = std::next_permutation(group, next);
        group = next;
      }
    }
  }
  return best;
}

FewRows MapClassFinder::member(std::uint64_t of) const {
  FewRows columns;
  for (int c = wires_; c-- > 0; of >>= wires_) {
    columns.rows[static_cast<std::size_t>(c)] =
        static_cast<std::uint8_t>(of & ((std::uint64_t{1} << wires_) - 1));
  }
  return transposed(columns);
}

// --- the table ----------------------------------------------------------------------------------

namespace {

constexpr std::uint32_t layout = 1;
constexpr int distance_bits = 4;

struct Extent {
  int most_gates;
  int slot_bits;  ///< about half of the slots are taken
};
Extent extent(int wires, bool permuted) {
  if (wires == 7 && !permuted) return {7, 18};
  return wires == 6 && permuted ? Extent{12, 16} : Extent{8, 19};
}

/// The slot of a class, or the free one that it would take. A slot is a class and one more than its
/// distance; 0 is free.
std::size_t slot_of(std::span<const std::uint64_t> table, std::uint64_t of) {
  const auto bits = std::countr_zero(table.size());
  auto at = static_cast<std::size_t>((of * 0x9e3779b97f4a7c15U) >> (word_bits - bits));
  while (table[at] != 0 && table[at] >> distance_bits != of) at = (at + 1) % table.size();
  return at;
}

/// Breadth first over a matrix of each class.
std::vector<std::uint64_t> built(int wires, const MapClassFinder& class_of, const Extent& extent) {
  std::vector<std::uint64_t> table(std::size_t{1} << extent.slot_bits);
  std::vector<std::uint64_t> level;
  const auto add = [&](const FewRows& m, int distance, std::vector<std::uint64_t>& to) {
    const std::uint64_t found = class_of(m);
    const std::size_t at = slot_of(table, found);
    if (table[at] != 0) return;
    table[at] = found << distance_bits | static_cast<unsigned>(distance + 1);
    to.push_back(found);
  };
  FewRows identity;
  for (int r = 0; r < wires; ++r) {
    identity.rows[static_cast<std::size_t>(r)] = static_cast<std::uint8_t>(1 << r);
  }
  add(identity, 0, level);
  for (int distance = 1; distance <= extent.most_gates; ++distance) {
    std::vector<std::uint64_t> next;
    for (const std::uint64_t of : level) {
      stop_point();
      const FewRows m = class_of.member(of);
      for (int a = 0; a < wires; ++a) {
        for (int b = 0; b < wires; ++b) {
          if (a != b) add(m.without(a, b), distance, next);
        }
      }
    }
    level = std::move(next);
  }
  return table;
}

}  // namespace

MapClasses::MapClasses(int wires, bool permuted)
    : class_of_(wires, permuted), most_gates_(extent(wires, permuted).most_gates) {
  const Extent own = extent(wires, permuted);
  slots_ = stored_table<std::uint64_t>(
      "map-classes-" + std::to_string(wires) + (permuted ? "-anywhere" : "-in-place"), layout,
      std::size_t{1} << own.slot_bits, [&] { return built(wires, class_of_, own); });
}

const MapClasses& MapClasses::of(int wires, bool permuted) {
  static TableCache<std::pair<int, bool>, MapClasses> tables;
  return tables.get({wires, permuted}, [&] { return MapClasses(wires, permuted); });
}

int MapClasses::distance(std::uint64_t of) const {
  const auto found =
      static_cast<int>(slots_[slot_of(slots_.all(), of)] & ((1U << distance_bits) - 1));
  return found == 0 ? most_gates_ + 1 : found - 1;
}

}  // namespace zelt::braidwerk::internal
