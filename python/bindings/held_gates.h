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

/// Of Gates of the package, which are known to be valid and are none that are made of others.
/// Ctrl-C ends it.
HeldGates read_gates(nanobind::handle operations);

}  // namespace zelt::braidwerk::python
