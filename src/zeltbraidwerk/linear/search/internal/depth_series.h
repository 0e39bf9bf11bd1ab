#pragma once

#include <vector>

#include "zeltbraidwerk/linear/search/internal/depth_layers.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Runs of beams over layers on one matrix. The first is greedy; later ones begin anew or keep the
/// first layers of the best so far, each with an exponent and a width of its own: what is best for
/// one matrix is not for another, and the end of a run is its weak part.
class LayerSeries {
 public:
  explicit LayerSeries(const BitMatrix& m) : m_(m), n_(m.rows()) {}

  /// One more run; true when it found a circuit of no more layers than the best.
  bool run(Rng& rng, Meter& meter);

  /// Forgets the best, not that there was a first run.
  void begin_anew() { best_.clear(); }

  /// The circuit of the last such run, outputs anywhere.
  const GateList& circuit() const { return circuit_; }

 private:
  struct Run;
  Run next_run(Rng& rng) const;

  const BitMatrix& m_;
  int n_;
  bool first_ = true;
  std::vector<std::vector<SideAddition>> best_;  // by layer
  GateList circuit_;
};

}  // namespace zelt::braidwerk::internal
