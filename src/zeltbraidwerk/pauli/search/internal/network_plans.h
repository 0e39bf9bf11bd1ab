#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_settings.h"

namespace zelt::braidwerk::internal {

/// Plans to begin with, and others around those that did best.
class NetworkPlans {
 public:
  NetworkPlans(const NetworkTask& task, int qubits)
      : in_order_(task.in_order),
        closes_(task.closes()),
        on_device_(task.device != nullptr),
        has_target_(task.target != nullptr),
        qubits_(qubits) {}

  std::span<const NetworkPlan> first() const;
  /// What a run came to. Few are remembered.
  void report(const NetworkPlan& plan, int cost);
  /// One of the best, changed a little; now and then another one.
  NetworkPlan draw(Rng& rng) const;
  /// One changed a little.
  NetworkPlan varied(NetworkPlan plan, Rng& rng) const;

 private:
  struct Tried {
    NetworkPlan plan;
    int cost;
  };

  NetworkPlan drawn_anew(Rng& rng) const;

  bool in_order_;
  bool closes_;
  bool on_device_;
  bool has_target_;
  int qubits_;
  std::vector<Tried> best_;  // ascending
};

}  // namespace zelt::braidwerk::internal
