#pragma once

#include <nanobind/nanobind.h>

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"

namespace zelt::braidwerk::python {

/// A circuit that stays in the compiled part: gates of Python are read without one object of the
/// core for each, and those of a result are written when they are first asked for.
struct HeldGates {
  std::vector<structures::Gate> gates;
};

/// The same in compact form, for searches that begin with it.
struct HeldSteps {
  internal::StepCircuit circuit;
};

/// The same of Clifford gates alone.
struct HeldCliffords {
  std::vector<internal::CliffordGate> gates;
};

}  // namespace zelt::braidwerk::python
