#pragma once

#include <optional>

#include "zeltbraidwerk/clifford/search/internal/one_sided.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/schedule.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The sides of an operator from which a beam takes gates off.
enum class Side { after, before, both };

/// Beams that bring an operator down to one-qubit gates and a permutation of its outputs. Dense
/// operators on many qubits are brought down from one side, others also from both.
class CliffordBeams {
 public:
  explicit CliffordBeams(const PauliFrame& images);

  const OperatorRows& operator_rows() const { return start_.rows; }
  Side side_for(int round) const;
  /// The width that a round with that number of steps can afford; 0 for none. From both sides a
  /// beam takes no more time than four walks of the round do, and from one side more the more
  /// qubits there are, as walks bring less there.
  int width_for(Side side, std::uint64_t steps) const;
  /// Nothing where the beam gave up or its effort ended.
  std::optional<GateList> run(Side side, int width, Rng& rng, Meter& meter);

 private:
  int wires_;
  OperatorReduction problem_;
  OneSidedReduction one_sided_;
  OperatorReduction::State start_;
  bool sparse_;
};

}  // namespace zelt::braidwerk::internal
