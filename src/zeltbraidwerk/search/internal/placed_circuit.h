#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// A circuit as searches hand it back.
template <class Gate>
struct Placed {
  std::vector<Gate> gates;
  std::vector<int> wires;  ///< output q is on wire wires[q]
  CircuitSize size;
};

using PlacedCircuit = Placed<structures::Gate>;
using CliffordCircuit = Placed<CliffordGate>;

}  // namespace zelt::braidwerk::internal
