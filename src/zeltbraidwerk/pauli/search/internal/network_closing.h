#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/search/internal/label_frame.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// A network of these events. Where the task asks for it, the operator of its gates, which the
/// frame tells, is undone: by a Clifford search of `steps` steps or one greedy run at least, on a
/// device also by the gates backward. The shortest is taken; qubits are on the wires that the task
/// allows.
Network closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
               const NetworkTask& task, const Control& control, std::uint64_t steps, Rng& rng);

}  // namespace zelt::braidwerk::internal
