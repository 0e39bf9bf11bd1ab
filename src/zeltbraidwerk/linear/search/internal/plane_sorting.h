#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/search/internal/plane_splits.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/schedule.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// A gate between a place and the next one, by its labels there.
struct PlaneGate {
  int place;
  int a;
  int b;
};

/// Few layers of gates between neighbours in a row that bring an operator, or a linear map, down to
/// the identity, but for one-qubit gates.
///
/// Row 2 p + k - 1 is what stands for label k on place p, column 2 q + k - 1 its part in label k of
/// input q. Of a map these are the rows of the inverse's transpose, for label 1, and its own.
///
/// Each place has a plane: what is spanned by its two rows. Gates on two neighbours split the span
/// of both planes anew, by Clifford gates in one of 20 ways, of which one takes three gates and
/// nine take two, and by CNOTs in one of six. In the end every place has its own input.
///
/// The inputs give each row a level, the highest there is in it: two levels for each input, the
/// last input's lowest. Up to sums with rows of later places the two levels of a plane are as low
/// as can be, and all planes together have every level once. A split deals out the four levels of
/// two planes, and all is done when the levels are sorted. Not every split deals as it should,
/// since the rows of a plane anticommute: some go down together, others one by one. But where
/// levels are not sorted, some pair has a split with fewer inversions, or with as many and the
/// lowest of its levels in the later plane: a run that is greedy ends, too.
///
/// Layers are put together of such splits, in a beam. About 3.5 n layers for random operators on n
/// qubits, and 2.5 n by wide beams; 5 n and 3.5 n for maps. Nothing when the effort ended. A
/// state takes time n^3 / 16, its children included.
///
/// By count, states of few gates are kept.
std::optional<std::vector<PlaneGate>> sort_planes(const BitMatrix& rows, PlaneGates gates,
                                                  Objective objective, int width, Rng& rng,
                                                  Meter& meter);

/// The width of a beam in a round of a search. Small in the first one, which tells whether sorting
/// is worth its time, but where it always is: for few layers by Clifford gates.
int sorting_width(int wires, PlaneGates gates, Objective objective, const Round& round);

/// Whether a sorted circuit is so much larger than another one that no more are worth their time.
inline bool sorting_lags(const CircuitSize& sorted, const CircuitSize& best, Objective objective) {
  return objective == Objective::depth ? 8 * sorted.depth > 9 * best.depth
                                       : sorted.count > best.count;
}

/// A path for run `number` on a device, given one: from its other end in every other pair of runs,
/// and from the fifth on another path.
std::vector<int> sorting_path(const BitGraph& device, std::vector<int> path, int number, Rng& rng);

}  // namespace zelt::braidwerk::internal
