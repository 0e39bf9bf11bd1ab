#pragma once

#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"

/// \file
/// Syndrome decoding by bounded beam search: given a list of available parities and a wanted one, a
/// short list of available parities whose XOR is the wanted one.
///
/// The parities are the rows of H. Place b of the wanted parity, the syndrome s, stands in column
/// idx[b] of H; other columns are not read. From each state of the search the `width` children of
/// lowest weight go on, of equal weight those whose residual comes first, place by place with 0
/// before 1, then those of the smaller row. `depth` is the number of steps looked ahead before one
/// is committed. Nothing is drawn at random. The `length` of the syndrome is not read.
///
/// T. Goubault de Brugiere, M. Baboulin, B. Valiron, S. Martiel, C. Allouche, "Quantum CNOT
/// circuits synthesis for NISQ architectures using the syndrome decoding problem", Reversible
/// Computation 2020.

namespace synthesis {

/// A state of the search: (weight, residual, path). `residual` is s with the rows of `path` added,
/// `weight` its number of ones.
using DecodingEntry = std::tuple<int, BoolRow, std::vector<int>>;

/// Rows of H whose XOR is s at the places in `idx`, in the order of adding; a row may stand in the
/// list twice. After each commitment the states beyond it are kept and expanded by one level.
///
/// `depth` and `width` below 1 count as 1. Throws runtime_error where the search would have no end,
/// as for a syndrome that is no sum of rows of H. Each step costs O(width^depth * rows * length /
/// 64), and room for width^depth states.
ZELTBRAIDWERK_EXPORT std::vector<int> SyndromeDecodingSolver_heuristic(BoolMatrix const& H,
                                                                       BoolRow s, int length,
                                                                       int depth, int width,
                                                                       std::vector<int>& idx);

/// The same with the search started afresh after each commitment. The two need not find the same
/// list.
ZELTBRAIDWERK_EXPORT std::vector<int> SyndromeDecodingSolver_heuristic_bis(BoolMatrix const& H,
                                                                           BoolRow s, int length,
                                                                           int depth, int width,
                                                                           std::vector<int>& idx);

/// Fills the front of `current` with the states `depth` steps from s. Returns (false, their
/// number), or (true, 0) when a residual became zero on the way: its path is then appended to
/// `result`. `next` and `scratch` are room to work in; what they hold afterwards has no meaning.
ZELTBRAIDWERK_EXPORT std::pair<bool, int> create_queues(
    BoolMatrix const& H, BoolRow const& s, int length, int depth, int width, std::vector<int>& idx,
    std::vector<DecodingEntry>& current, std::vector<DecodingEntry>& next,
    std::vector<DecodingEntry>& scratch, std::vector<int>& result);

/// Replaces the first `count` states of `current` by the next level, with the same results. `depth`
/// is not read, of s only the length.
ZELTBRAIDWERK_EXPORT std::pair<bool, int> update_queues(
    BoolMatrix const& H, BoolRow const& s, int length, int depth, int width, std::vector<int>& idx,
    std::vector<DecodingEntry>& current, std::vector<DecodingEntry>& next,
    std::vector<DecodingEntry>& scratch, std::vector<int>& result, int count);

/// Orders pairs by the number of ones in their first field: true if a has fewer.
ZELTBRAIDWERK_EXPORT bool Compare(std::tuple<BoolRow, std::vector<int>> a,
                                  std::tuple<BoolRow, std::vector<int>> b);

}  // namespace synthesis
