#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A short CNOT circuit of an invertible matrix, by search: a greedy reduction by additions of rows
/// and of columns, which is made in any case; then wider ones, each followed by a walk among the
/// circuits of the map through windows of up to five wires that are replaced by random shortest
/// circuits. Each round is half as long again as the one before, until the effort is spent.
///
/// A map that falls into blocks is searched block by block, equal blocks once. With exact outputs
/// the permutation of the shortest circuit is taken up by gates on its way, and the walk goes on
/// among the circuits of the very map. Wire w of the result has output frame.output_on(w).
///
/// On six and seven wires the first round is followed by a search from both ends for the fewest
/// gates (fewest_gates.h), unless a deadline is near.
///
/// Windows have up to `window` wires, 2 to 5. The tables for 5 take a tenth of a second to build,
/// once in a process, those for 4 nothing.
///
/// Memory: two tables of 32 MB for the process; beams take up to 300 states of 2 n^2 bits, or twice
/// that, up to 40 qubits.
GateList search_cnot(const BitMatrix& m, const Task& task, const Effort& effort,
                     int window = most_window_wires);

}  // namespace zelt::braidwerk::internal
