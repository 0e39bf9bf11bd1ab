#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/class_table.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The fewest gates for a Clifford operator on five qubits, outputs in place or anywhere, proven,
/// and of such circuits one of few layers.
///
/// Of the operators in ClassTable a gate leads to one that takes a gate less, down to none. For the
/// others gates before the operator are tried, one, then two, and so on, until they lead into the
/// table: nearly all operators are two gates away at most, which takes less than a millisecond in
/// the mean. With free outputs each order of the outputs is an operator to begin from.
class FiveWireSearch {
 public:
  /// The meter tells when to stop.
  FiveWireSearch(const OperatorRows& rows, Outputs outputs, Rng& rng, Meter& meter);

  /// Nothing where it was stopped, or the work was too much.
  std::optional<GateList> run();
  /// No circuit has fewer gates.
  int least() const { return least_; }

 private:
  using Places = std::array<int, FiveWireRows::wires>;
  struct Start {
    FiveWireRows rows;
    Places places;  ///< the output on each wire
  };

  int distance(const FiveWireRows& rows) { return table_.distance(class_of_(rows)); }
  bool find();
  bool go_down(FiveWireRows rows, int distance);
  void make_shallow();
  bool lead_into_table(FiveWireRows& rows, std::size_t gates);
  template <class F>
  bool any_gate(F&& takes);

  const ClassTable& table_ = ClassTable::shared();
  Rng& rng_;
  Meter& meter_;
  ClassFinder class_of_;
  std::vector<Start> starts_;
  int least_ = 0;
  int tries_ = 0;
  // What was found, gates in time order.
  std::vector<Gate> path_;
  FiveWireRows left_;
  Places places_{};
  /// Classes that no k gates lead from into the table.
  std::vector<std::unordered_set<OperatorClass, OperatorClass::Hash>> too_far_;
};

}  // namespace zelt::braidwerk::internal
