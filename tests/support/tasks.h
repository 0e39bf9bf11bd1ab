#pragma once

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace support {

using zelt::braidwerk::internal::Objective;
using zelt::braidwerk::internal::Outputs;

constexpr Objective objective(bool by_depth) {
  return by_depth ? Objective::depth : Objective::count;
}
constexpr Outputs outputs(bool in_place) {
  return in_place ? Outputs::in_place : Outputs::anywhere;
}

inline zelt::braidwerk::internal::Effort steps(std::uint64_t count) {
  zelt::braidwerk::internal::Effort effort;
  effort.steps = count;
  return effort;
}

}  // namespace support
