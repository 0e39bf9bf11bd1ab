#pragma once

#include <nanobind/nanobind.h>

#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

namespace zelt::braidwerk::python {

/// A circuit that stays in the compiled part: gates of Python are read without one object of the
/// core for each, and those of a result are written when they are first asked for.
struct HeldGates {
  std::vector<structures::Gate> gates;
};

}  // namespace zelt::braidwerk::python
