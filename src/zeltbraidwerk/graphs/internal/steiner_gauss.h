#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/graphs/internal/tree_routines.h"

namespace zelt::braidwerk::internal {

/// See synthesis::steiner_gauss_ham_path. The draws are those of the sketches, and are made only
/// where graph.sketch_mode is not 0.
std::vector<Cnot> steiner_gauss_ham_path(const structures::Table& table,
                                         const structures::Graph& graph,
                                         const std::vector<int>& path, const Draw& draw);

}  // namespace zelt::braidwerk::internal
