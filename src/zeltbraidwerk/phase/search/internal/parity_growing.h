#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/search/internal/growth.h"
#include "zeltbraidwerk/phase/search/internal/parity_rewriter.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Grows networks by beams and undoes their maps where that is asked for. Which costs do best
/// differs between sets of parities, so the best of some are found out.
class ParityGrowing {
 public:
  /// All must outlive this. The rewriter tells which list is short.
  ParityGrowing(const BitMatrix& parities, const Task& task, const ParityRewriter& rewriter,
                Rng& rng);

  /// A list by a narrow beam, or by the plain methods where that would take long. The meter must
  /// have no limit.
  GateList quick(Meter& meter);

  /// The shortest list of a beam of this width, for each of the costs; the best costs then go
  /// first. Nothing where the effort ended before.
  std::optional<GateList> grow_at_all_costs(int width, Meter& meter);
  /// By the first costs by which the beam comes to an end.
  std::optional<GateList> grow(int width, Meter& meter);

  /// By which networks are grown.
  int costs() const { return static_cast<int>(costs_.size()); }

  /// About what a beam of width 1 takes; a step of the walk takes one or less. Not measured, so
  /// that the same is done everywhere.
  double beam_microseconds() const;
  /// So that its states fit into memory.
  int widest_beam() const;

 private:
  std::optional<GateList> grow(int width, const GrowthCost& cost, Meter& meter);

  const BitMatrix& parities_;
  int n_;
  const Task& task_;
  const ParityRewriter& rewriter_;
  Rng& rng_;
  std::vector<GrowthCost> costs_;
};

}  // namespace zelt::braidwerk::internal
