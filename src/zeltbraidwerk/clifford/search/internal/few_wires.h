#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_set>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/class_table.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The fewest gates for a Clifford operator on five or six qubits, outputs in place or anywhere,
/// proven, and on five of such circuits one of few layers.
///
/// Of the operators in ClassTable a gate leads to one that takes a gate less, down to none. For the
/// others gates before the operator are tried, one, then two, and so on, until they lead into the
/// table, each class that they lead to once. ClassSketch tells of most last gates that they do not.
/// On five qubits nearly all operators are two gates away at most, which takes less than a
/// millisecond in the mean. On six, three gates in vain take 0.15 s and four 5 s; where four or
/// five do, random ones find that out in less than a second. With free outputs each order of the
/// outputs is an operator to begin from, on five qubits; on six the last gate is tried with all
/// orders, and one sketch tells of most gates that none leads into the table: two gates in vain
/// take 0.02 s, three 0.2 to 2 s.
template <int wires>
class FewWireSearch {
 public:
  FewWireSearch(const OperatorRows& rows, Outputs outputs, Rng& rng);

  /// Nothing where it was stopped, or where so many tries since the first call, of 0.7 microseconds
  /// each, are not enough: another call goes on from there. Circuits of `known` gates or more are
  /// not looked for. Not to be called again once it has found a circuit.
  std::optional<GateList> run(const Control& control, std::uint64_t tries,
                              int known = std::numeric_limits<int>::max());
  /// No circuit has fewer gates. It rises with the tries.
  int least() const { return least_; }

 private:
  using Rows = FewWireRows<wires>;
  using Places = std::array<int, wires>;
  using Classes = std::unordered_set<OperatorClass, OperatorClass::Hash>;
  struct Start {
    Rows rows;
    Places places;  ///< the output on each wire
  };

  int distance(const Rows& rows) { return table_.distance(class_of_(rows)); }
  bool find(int known);
  bool find_by_chance();
  bool go_down(Rows rows, int distance);
  void make_shallow()
    requires(wires == 5);
  bool lead_into_table(Rows& rows, std::size_t gates);
  bool step_into_table(Rows& rows);
  bool step_into_table_in_any_order(Rows& rows);
  bool is_over();
  template <class F>
  bool any_move(F&& takes);

  const ClassTable<wires>& table_ = ClassTable<wires>::shared();
  Rng& rng_;
  Control control_;
  ClassFinder<wires> class_of_;
  std::vector<Start> starts_;
  std::vector<Places> orders_;  ///< of the outputs, all of which the last gate is tried with
  int least_ = 0;
  std::size_t gates_ = 0;  ///< that are to lead into the table
  std::size_t next_start_ = 0;
  std::uint64_t chances_ = 0;  ///< taken with so many gates
  std::uint64_t tries_ = 0;
  std::uint64_t most_tries_ = 0;
  std::uint64_t next_look_ = 0;  ///< at the clock, when tries are so many
  bool over_ = false;
  // What was found, gates in time order.
  std::vector<Gate> path_;
  Rows left_;
  Places places_{};
  /// Classes that no k gates lead from into the table.
  std::vector<Classes> too_far_;
};

extern template class FewWireSearch<3>;
extern template class FewWireSearch<4>;
extern template class FewWireSearch<5>;
extern template class FewWireSearch<6>;

}  // namespace zelt::braidwerk::internal
