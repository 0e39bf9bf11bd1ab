#pragma once

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A short list for an operator with gates on the edges of the task's device alone: eliminations on
/// the device, in beams that get wider, and walks on windows of its edges.
GateList search_clifford_on_device(const OperatorRows& rows, const Task& task,
                                   const Effort& effort);

}  // namespace zelt::braidwerk::internal
