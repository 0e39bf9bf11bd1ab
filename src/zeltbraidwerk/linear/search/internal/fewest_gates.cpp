#include "zeltbraidwerk/linear/search/internal/fewest_gates.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/map_classes.h"

namespace zelt::braidwerk::internal {
namespace {

/// Some seconds. Maps that this is not enough for are rare, but in place on seven wires: there it
/// is what three gates take.
int most_tries(int wires, bool permuted) {
  return wires == 7 && !permuted ? 50'000 : 600'000;
}

class BothEnds {
 public:
  BothEnds(const BitMatrix& m, bool permuted, Meter& meter)
      : wires_(m.rows()),
        most_tries_(most_tries(wires_, permuted)),
        map_(FewRows::of(m)),
        table_(MapClasses::of(wires_, permuted)),
        meter_(meter) {}

  FewestGates run() {
    FewestGates found{distance(map_), std::nullopt};
    if (found.least > table_.most_gates()) {
      if (!reach_table(found.least)) return found;
      for (int met = meeting_; met > 0; met = paths_[index(met)].parent) {
        gates_.push_back(paths_[index(met)].move);
      }
      std::ranges::reverse(gates_);
      map_ = paths_[index(meeting_)].map;
    }
    go_down();
    found.circuit = list();
    return found;
  }

 private:
  struct Path {
    FewRows map;  ///< without the gates of the path in front
    int parent;
    Gate move;
  };
  static std::size_t index(int k) { return static_cast<std::size_t>(k); }

  int distance(const FewRows& m) const { return table_.distance(table_.class_of()(m)); }

  template <class F>
  void each_move(F&& f) const {
    for (int control = 0; control < wires_; ++control) {
      for (int target = 0; target < wires_; ++target) {
        if (control != target) f(control, target);
      }
    }
  }

  /// True once a path has come into the table. `least` goes up with every length in vain.
  bool reach_table(int& least) {
    std::unordered_set<std::uint64_t> seen{table_.class_of()(map_)};
    paths_.push_back({map_, -1, {}});
    int tries = 0;
    for (int first = 0; meeting_ == 0; ++least) {
      const auto end = static_cast<int>(paths_.size());
      if (first == end) return false;
      for (; first < end && meeting_ == 0; ++first) {
        if (meter_.ended() || tries > most_tries_) return false;
        each_move([&](int control, int target) {
          if (meeting_ > 0) return;
          ++tries;
          const FewRows next = paths_[index(first)].map.without(control, target);
          const std::uint64_t of = table_.class_of()(next);
          if (!seen.insert(of).second) return;
          paths_.push_back({next, first, cnot(control, target)});
          if (table_.distance(of) <= table_.most_gates()) {
            meeting_ = static_cast<int>(paths_.size()) - 1;
          }
        });
      }
      if (meeting_ > 0) break;
    }
    return true;
  }

  void go_down() {
    for (int left = distance(map_); left > 0; --left) {
      FewRows nearer = map_;
      Gate move{};
      each_move([&](int control, int target) {
        const FewRows next = map_.without(control, target);
        if (distance(next) >= left) return;
        nearer = next;
        move = cnot(control, target);
      });
      map_ = nearer;
      gates_.push_back(move);
    }
  }

  /// What is left of the map is where the outputs are.
  GateList list() {
    GateList list(wires_, std::move(gates_));
    for (int r = 0; r < wires_; ++r) {
      list.frame.put_output(r, std::countr_zero(map_.rows[index(r)]));
    }
    return list;
  }

  int wires_;
  int most_tries_;
  FewRows map_;
  const MapClasses& table_;
  Meter& meter_;
  std::vector<Path> paths_;
  int meeting_ = 0;  // the path that came into the table
  std::vector<Gate> gates_;
};

}  // namespace

bool finds_fewest_gates(int wires, bool permuted, const Meter& meter) {
  if (!MapClasses::has(wires)) return false;
  const auto& deadline = meter.control().deadline;
  if (!deadline) return true;
  const std::chrono::duration<double> left = *deadline - Control::Clock::now();
  return left.count() > MapClasses::seconds(wires, permuted);
}

FewestGates fewest_gates(const BitMatrix& m, bool permuted, Meter& meter) {
  return BothEnds(m, permuted, meter).run();
}

}  // namespace zelt::braidwerk::internal
