#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <mutex>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "convert.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/search/internal/effort.h"

/// \file
/// What the searches of all families share. A search is a number of runs; a run draws from a stream
/// of its own, so its result depends on its number alone and not on who runs it when.
namespace zelt::braidwerk::python {

/// A deadline and a stop flag, shared by all runs of one search.
struct SearchControl {
  explicit SearchControl(std::optional<double> seconds) {
    if (seconds) {
      // Longer than a year is no deadline, and would not fit the clock.
      const std::chrono::duration<double> left(std::min(*seconds, 3.2e7));
      deadline = internal::Control::Clock::now() +
                 std::chrono::duration_cast<internal::Control::Clock::duration>(left);
    }
  }

  internal::Control control(int n) const {
    // Greedy searches rarely need more than n^2 additions; in a circle they would go on for ever.
    const long cap = 1000 + static_cast<long>(n) * n;
    return {deadline, &stop, static_cast<int>(std::min(cap, 1L << 30)), nullptr};
  }

  /// For a run of the search engine; without steps it goes on to the deadline, or until stopped.
  internal::Effort effort(std::optional<std::uint64_t> steps) {
    internal::Effort result;
    result.control = control(0);
    result.steps = steps.value_or(std::numeric_limits<std::uint64_t>::max());
    result.on_better = [this](internal::SearchPoint point) {
      point.seconds =
          std::chrono::duration<double>(internal::Control::Clock::now() - start).count();
      const std::lock_guard lock(mutex);
      points.push_back(point);
    };
    result.on_bound = [this](const internal::LowerBound& proven) {
      const std::lock_guard lock(mutex);
      lower.raise(proven);
    };
    return result;
  }

  /// What runs have told since the last call.
  std::vector<internal::SearchPoint> news() {
    const std::lock_guard lock(mutex);
    return std::exchange(points, {});
  }

  /// What runs have proven so far that no circuit is below.
  internal::LowerBound bound() {
    const std::lock_guard lock(mutex);
    return lower;
  }

  std::optional<internal::Control::Clock::time_point> deadline;
  std::atomic<bool> stop = false;
  internal::Control::Clock::time_point start = internal::Control::Clock::now();

 private:
  std::mutex mutex;
  std::vector<internal::SearchPoint> points;
  internal::LowerBound lower;
};

/// Fewer gates first, or fewer layers first; the other decides where they are equal.
struct Better {
  bool by_depth;

  bool operator()(const structures::CnotCircuit& a, const structures::CnotCircuit& b) const {
    if (by_depth)
      return std::tuple(a.depth(), a.gates.size()) < std::tuple(b.depth(), b.gates.size());
    if (a.gates.size() != b.gates.size()) return a.gates.size() < b.gates.size();
    return a.depth() < b.depth();
  }
};

/// 0 to n-1 in an order that was drawn.
inline std::vector<int> shuffled(int n, const internal::Draw& draw) {
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  for (int i = n - 1; i > 0; --i) {
    std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(draw(0, i))]);
  }
  return order;
}

inline bool in_place(const std::vector<int>& perm) {
  for (std::size_t r = 0; r < perm.size(); ++r) {
    if (perm[r] != static_cast<int>(r)) return false;
  }
  return true;
}

/// The shorter of both ways to put outputs in their places.
inline internal::FreeCircuit closed(internal::FreeCircuit found, Better better,
                                    const internal::Draw& draw) {
  if (in_place(found.perm)) return found;
  internal::FreeCircuit result(found.circuit.nbqbits);
  result.circuit = internal::close_within_gates(found, draw);
  structures::CnotCircuit by_swaps = internal::close_by_swaps(std::move(found));
  if (better(by_swaps, result.circuit)) result.circuit = std::move(by_swaps);
  return result;
}

/// Run 0 of a quick method goes to its end whatever the deadline, so that there is an answer.
inline internal::Control control_of_run(const internal::Control& control, int number) {
  internal::Control own = control;
  if (number == 0) own.deadline.reset();
  return own;
}

/// The best of the runs `first` to `last - 1`, the first one of equals, and its number. run(number)
/// gives a result or nothing; better(a, b) compares two results.
template <class Run, class Compare>
auto best_of_runs(int first, int last, const internal::Control& control, Run&& run,
                  Compare&& better) {
  using Result = typename decltype(run(first))::value_type;
  std::optional<std::pair<int, Result>> best;
  for (int number = first; number < last; ++number) {
    if (number > first && control.stop_requested()) break;
    auto found = run(number);
    if (found && (!best || better(*found, best->second))) best.emplace(number, std::move(*found));
  }
  return best;
}

}  // namespace zelt::braidwerk::python
