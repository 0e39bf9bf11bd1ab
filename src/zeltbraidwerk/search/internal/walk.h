#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/end_names.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/window.h"
#include "zeltbraidwerk/search/internal/wire_frame.h"

namespace zelt::braidwerk::internal {

/// What becomes of a window: another block with the same effect but for a renaming of what leaves
/// it. ends[place][label] is the end, on places, on which that end is found after the block.
struct Rewrite {
  std::vector<Gate> block;  ///< on places
  bool renames = false;     ///< when not, `ends` is not looked at
  std::array<std::array<End, 4>, most_window_wires> ends;
};

/// Gates, and what became of the ends of the operation that they began with.
struct GateList {
  std::vector<Gate> gates;
  WireFrame frame;

  GateList() = default;
  GateList(int wires, std::vector<Gate> list) : gates(std::move(list)), frame(wires) {}
  int wires() const { return frame.wires(); }
  int count() const { return static_cast<int>(gates.size()); }
};

/// The probability of going uphill, falling geometrically from `first` to `last` over a round.
struct Cooling {
  float first = 0.3F;
  float last = 0.003F;
  float at(double part) const {
    return static_cast<float>(first * std::pow(static_cast<double>(last / first), part));
  }
};

/// Asks a rewriter of either kind: see Walk.
template <class Rewriter>
bool rewrite_window(Rewriter& rewriter, const GateList& list, const Window& window, float uphill,
                    Rng& rng, Rewrite& rewrite) {
  if constexpr (requires { rewriter.rewrite(list, window, uphill, rng, rewrite); }) {
    return rewriter.rewrite(list, window, uphill, rng, rewrite);
  } else {
    return rewriter.rewrite(window, uphill, rng, rewrite);
  }
}

/// A walk among the circuits of one operation: again and again a window is replaced by a random
/// one of the best circuits for it, mostly of equal length, now and then by one that is longer.
///
/// A Rewriter has
///   gathering            constant: how its windows are gathered
///   judges               constant: whether accept() is asked
///   window_size(rng)     how many wires the next window is to have
///   rewrite(window, uphill, rng, rewrite)
///                        fills `rewrite`, or returns false to leave the window as it is; `uphill`
///                        is the probability with which it may make a block longer
///   accept(gates)        the last word on a changed list
/// and may have
///   rewrite(list, window, uphill, rng, rewrite)
///                        the same, for one that has to see the whole list
///   length(list)         what is to become short, where that is not the number of gates alone
template <class Rewriter>
class Walk {
 public:
  Walk(GateList list, Rewriter& rewriter)
      : list_(std::move(list)),
        rewriter_(rewriter),
        finder_(list_.wires()),
        names_(list_.frame.size()) {}

  const GateList& list() const { return list_; }
  int count() const { return list_.count(); }
  int length(const GateList& list) const {
    if constexpr (requires { rewriter_.length(list); }) return rewriter_.length(list);
    return list.count();
  }

  /// True when the list has changed.
  bool step(float uphill, Rng& rng) {
    if (list_.gates.empty()) return false;
    finder_.find(list_.gates, rng.below(count()), rewriter_.window_size(rng), Rewriter::gathering,
                 rng, window_);
    rewrite_.renames = false;
    rewrite_.block.clear();
    if (!rewrite_window(rewriter_, list_, window_, uphill, rng, rewrite_)) return false;
    if constexpr (Rewriter::judges) old_gates_ = list_.gates;
    const int after = WindowFinder::replace(list_.gates, window_, rewrite_.block);
    if (rewrite_.renames) rename_gates(after);
    if constexpr (Rewriter::judges) {
      if (!rewriter_.accept(list_.gates)) {
        std::swap(list_.gates, old_gates_);
        return false;
      }
    }
    if (rewrite_.renames) rename_frame();
    return true;
  }

 private:
  template <class F>
  void each_end(F&& f) const {
    for (int place = 0; place < window_.size; ++place) {
      const int wire = window_.wires[static_cast<std::size_t>(place)];
      for (int label = 0; label < 4; ++label) {
        const End to =
            rewrite_.ends[static_cast<std::size_t>(place)][static_cast<std::size_t>(label)];
        f(static_cast<std::size_t>(end_of(wire, label)),
          end_of(window_.wires[static_cast<std::size_t>(wire_of(to))], label_of(to)));
      }
    }
  }

  void rename_gates(int from) {
    names_.rename(list_.gates, from, [this](auto&& f) { this->each_end(f); });
  }

  void rename_frame() {
    std::array<std::pair<End, End>, 4 * most_window_wires> moved;
    std::size_t count = 0;
    each_end([&](std::size_t end, End to) { moved[count++] = {to, list_.frame[end]}; });
    for (std::size_t k = 0; k < count; ++k) list_.frame[moved[k].first] = moved[k].second;
  }

  GateList list_;
  Rewriter& rewriter_;
  WindowFinder finder_;
  EndNames names_;
  Window window_;
  Rewrite rewrite_;
  std::vector<Gate> old_gates_;
};

/// Layers of the gates, each put into the first layer that is free on its wires.
int depth_of(const std::vector<Gate>& gates, int wires);

inline CircuitSize size_of(const GateList& list) {
  return {list.count(), depth_of(list.gates, list.wires())};
}

/// `steps` steps from `best`, or fewer when the effort ends; afterwards `best` is the shortest list
/// seen. Now and then look(list, shorter) is asked whether a list that is no longer than the best
/// is to take its place; `shorter` says that the best has just become shorter and is that list.
/// Where the effort ends between two looks it is asked about a shorter list alone: with more
/// effort, the next look would have been at another one.
template <class Rewriter, class Look>
void walk_round(GateList& best, Rewriter& rewriter, std::uint64_t steps, Cooling cooling, Rng& rng,
                Meter& meter, Look&& look) {
  Walk<Rewriter> walk(best, rewriter);
  int least = walk.length(best);
  constexpr std::uint64_t stretch = 64;
  bool go_on = !meter.ended();
  for (std::uint64_t done = 0; done < steps && go_on; done += stretch) {
    const float uphill = cooling.at(static_cast<double>(done) / static_cast<double>(steps));
    bool shorter = false;
    for (std::uint64_t k = 0; k < stretch && go_on; ++k) {
      if (walk.step(uphill, rng) && walk.length(walk.list()) < least) {
        best = walk.list();
        least = walk.length(best);
        shorter = true;
      }
      go_on = meter.step();
    }
    if (shorter) look(best, true);
    if (go_on && walk.length(walk.list()) == least && look(walk.list(), false)) best = walk.list();
  }
}

/// The same where of equally short lists the latest takes over, as it leads elsewhere. kept(list)
/// hears of each that takes the place of the best.
template <class Rewriter, class Kept>
void walk_among_equals(GateList& best, Rewriter& rewriter, std::uint64_t steps, Cooling cooling,
                       Rng& rng, Meter& meter, Kept&& kept) {
  walk_round(best, rewriter, steps, cooling, rng, meter, [&](const GateList& list, bool) {
    kept(list);
    return true;
  });
}

/// The same for lists of few gates and, among equally short ones, of few layers. kept(list, size)
/// hears of each that takes the place of the best.
template <class Rewriter, class Kept>
void walk_to_shallow(GateList& best, Rewriter& rewriter, std::uint64_t steps, Cooling cooling,
                     Rng& rng, Meter& meter, Kept&& kept) {
  int depth = size_of(best).depth;
  walk_round(best, rewriter, steps, cooling, rng, meter, [&](const GateList& list, bool shorter) {
    const CircuitSize size = size_of(list);
    if (!shorter && size.depth >= depth) return false;
    depth = size.depth;
    kept(list, size);
    return true;
  });
}

}  // namespace zelt::braidwerk::internal
