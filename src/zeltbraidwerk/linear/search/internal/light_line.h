#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/line_tree.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/linear/search/internal/wire_set.h"

namespace zelt::braidwerk::internal {

/// Lines of one kind that are added to each other along edges before one of them is cleared: the
/// lines of the wires of a tree end in that of its root.
struct LineSum {
  std::uint8_t count = 0;
  std::array<std::uint8_t, std::size_t{device_tuning.most_additions}>
      to{};  // those nearest to the root first
  std::array<std::uint8_t, std::size_t{device_tuning.most_additions}> from{};
};

/// Finds such a sum that is cleared in fewer gates than the line alone, those of the sum included.
/// Sums of few random lines are much lighter than each of them, as is used in decoding.
template <int W>
class LightLine {
 public:
  struct Found {
    LineSum sum;
    int gates = 0;  ///< in all
  };

  /// For line v; `near` are the neighbours of each wire, `left` the wires that still count.
  Found find(const WireSet<W>* lines, int v, const std::vector<WireSet<W>>& near,
             const WireSet<W>& left, std::uint64_t seed) {
    const auto at = [](auto& list, int wire) -> auto& {
      return list[static_cast<std::size_t>(wire)];
    };
    Part alone;
    alone.bits = lines[v] & left;
    alone.wires.insert(v);
    alone.beside = at(near, v) & left;
    Found found{{}, tree_.gates(alone.bits, v, near, left, seed)};
    level_.assign(1, alone);
    for (int added = 1; added <= device_tuning.most_additions; ++added) {
      if (found.gates <= added + 1) break;
      next_.clear();
      for (const Part& part : level_) {
        part.beside.for_each([&](int u) {
          WireSet<W> wires = part.wires;
          wires.insert(u);
          for (const Part& other : next_) {
            if (other.wires == wires) return;
          }
          WireSet<W> bits = lines[u] & left;
          bits ^= part.bits;
          const int most = most_gates(added, found.gates);
          const int gates = added + tree_.gates(bits, v, near, left, seed, most - added);
          if (gates > most) return;
          Part& larger = room();
          larger = {bits, wires, part.beside, part.sum, gates};
          larger.beside |= at(near, u) & left;
          larger.beside = without(larger.beside, wires);
          int parent = v;
          (at(near, u) & part.wires).for_each([&](int wire) { parent = wire; });
          at(larger.sum.to, larger.sum.count) = static_cast<std::uint8_t>(parent);
          at(larger.sum.from, larger.sum.count) = static_cast<std::uint8_t>(u);
          ++larger.sum.count;
          if (gates < found.gates) found = {larger.sum, gates};
          for (std::size_t k = next_.size() - 1; k > 0 && next_[k].gates < next_[k - 1].gates;
               --k) {
            std::swap(next_[k], next_[k - 1]);
          }
        });
      }
      std::swap(level_, next_);
    }
    return found;
  }

 private:
  struct Part {
    WireSet<W> bits;    // of the sum
    WireSet<W> wires;   // whose lines it is of
    WireSet<W> beside;  // wires that may be next
    LineSum sum;
    int gates = 0;
  };

  bool full() const { return next_.size() == device_tuning.sums_kept; }
  /// A sum of more is of no use: it is the last and not the best, or others go on.
  int most_gates(int added, int best) const {
    if (added == device_tuning.most_additions) return best - 1;
    return full() ? next_.back().gates - 1 : LineTree<W>::no_limit;
  }
  Part& room() { return full() ? next_.back() : next_.emplace_back(); }

  LineTree<W> tree_;
  std::vector<Part> level_;  // by gates
  std::vector<Part> next_;
};

}  // namespace zelt::braidwerk::internal
