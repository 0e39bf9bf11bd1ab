#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/search/internal/parity_table.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Windows of a parity network replaced by random shortest circuits that still show what is shown
/// nowhere else.
class ParityRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_values;
  static constexpr bool judges = false;

  /// One column per parity, no two equal. With `counts_swaps`, for outputs anywhere, each swap that
  /// would put an output in its place counts as a gate. With a graph, gates are on its edges, and
  /// outputs leave their wires in windows at the end of the circuit alone.
  ParityRewriter(const BitMatrix& parities, Outputs outputs, bool counts_swaps,
                 const BitGraph* graph);

  /// To be called with the list that a walk begins with.
  void begin(const GateList& list);

  bool counts_swaps() const { return counts_swaps_; }
  int window_size(Rng&) const { return wires; }
  int length(const GateList& list) const;
  bool rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
               Rewrite& rewrite);

 private:
  static constexpr int wires = 4;

  /// What stands on a wire: the sum of the prints of its inputs, exact up to 64 wires, and the
  /// parity that this is, or -1.
  struct Value {
    std::uint64_t print = 0;
    std::int32_t parity = -1;
  };

  Value value_of(std::uint64_t print) const;
  Value& slot_of(std::uint64_t print);
  void place_wires(const Window& window);
  void read_block(const Window& window);
  void read_inputs(const GateList& list, const Window& window);
  bool choose(const GateList& list, const Window& window, float uphill, Rng& rng, Rewrite& rewrite);
  bool gains(const GateList& list, const Window& window, int longer, SmallMatrix left) const;
  void put_values(const GateList& list, const Window& window, const std::vector<Gate>& block);

  int n_;
  Outputs outputs_;
  bool counts_swaps_;
  const BitGraph* graph_;
  std::vector<std::uint64_t> print_;  // of an input
  std::vector<Value> known_;          // the parities by print, with gaps
  std::vector<std::int32_t> shown_;   // by parity: on how many gates and inputs it stands
  std::vector<Value> values_;         // what each gate makes

  // Of the window. Its places are renamed so that its edges are those of a table.
  WindowGraph edges_ = complete_graph(wires);
  std::array<std::uint8_t, 5> place_{0, 1, 2, 3, 4};
  SmallMatrix map_ = 0;
  SumSet needed_ = 0;           // shown by no gate outside the block
  unsigned known_sums_ = 0;     // those whose value stands in sums_
  std::array<Value, 16> sums_;  // of the wires that enter the window
  std::vector<Value> made_;
};

}  // namespace zelt::braidwerk::internal
