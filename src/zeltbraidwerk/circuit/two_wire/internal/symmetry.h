#pragma once

#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/weyl_form.h"

namespace zelt::braidwerk::internal {

/// Rotations of the one-wire operators around an interaction, then gates of them, each in its
/// shortest form.
std::pair<int, int> outer_cost(const WeylForm& form);

/// The same operator by cheaper one-wire operators. Where coefficients are equal, 0 or pi/4, some
/// rotations commute with the interaction, and which of them stand before or after it is an
/// accident of the form: they go to the side where they save the most.
WeylForm shared_out(const WeylForm& form);

}  // namespace zelt::braidwerk::internal
