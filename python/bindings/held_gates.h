#pragma once

#include <nanobind/nanobind.h>

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/foundations/gate.h"

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

}  // namespace zelt::braidwerk::python
