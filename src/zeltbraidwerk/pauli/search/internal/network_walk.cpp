#include "zeltbraidwerk/pauli/search/internal/network_walk.h"

#include <numeric>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkTuning& tuning = network_tuning;

}  // namespace

Cooling drawn_cooling(Rng& rng) {
  const NetworkTargetTuning& odds = network_target_tuning;
  Cooling cooling = tuning.cooling;
  cooling.first = odds.least_uphill + (odds.most_uphill - odds.least_uphill) * rng.unit();
  return cooling;
}

NetworkWalk::NetworkWalk(const std::vector<NetworkEvent>& events, int qubits, bool in_order,
                         bool end_is_free, const BitGraph* graph, int patience)
    : graph_(graph),
      qubits_(qubits),
      end_is_free_(end_is_free),
      patience_(patience),
      count_(gates_of(events)),
      finder_(qubits),
      block_(in_order),
      names_(4 * static_cast<std::size_t>(qubits)),
      after_(4 * static_cast<std::size_t>(qubits)) {
  std::iota(after_.begin(), after_.end(), End{0});
  for (const NetworkEvent& event : events) {
    gates_.push_back(event.gate);
    rows_.push_back(event.row);
  }
}

bool NetworkWalk::step(float uphill, Rng& rng, int most_layers) {
  if (gates_.empty()) return false;
  const int at = rng.below(static_cast<int>(gates_.size()));
  if (rows_[static_cast<std::size_t>(at)] >= 0) return false;
  finder_.find(gates_, at, NetworkBlock::wires, Gathering::by_labels, rng, window_);
  if (window_.size != NetworkBlock::wires) return false;
  inside_.clear();
  for (std::size_t k = 0; k < window_.gates.size(); ++k) {
    inside_.push_back({window_.gates[k], rows_[static_cast<std::size_t>(window_.positions[k])]});
  }
  NetworkBlock::WireOrder order{};  // the same wires are the same block, in whichever order
  for (std::size_t b = 1; b < NetworkBlock::wires; ++b) {
    for (std::size_t a = 0; a < b; ++a) ++order[window_.wires[a] < window_.wires[b] ? b : a];
  }
  if (!block_.read(inside_, end_is_free_ && window_.to_end == 7, order) ||
      block_.gates() > tuning.walk_gates) {
    return false;
  }
  const int old = block_.gates();
  const int nodes = rng.below(tuning.walk_rare) == 0 ? tuning.walk_more_patience : patience_;
  const unsigned pairs = pairs_that_meet();
  const bool shorter = block_.least() < old && block_.rewrite(old - 1, pairs, nodes, rng);
  const int longest = old + (rng.chance(uphill) ? 1 : 0);
  if (!shorter && !block_.rewrite(longest, pairs, nodes, rng)) return false;
  new_gates_.clear();
  new_rows_.clear();
  for (const NetworkEvent& event : block_.events()) {
    const auto placed = [&](End end) {
      return end_of(window_.wires[static_cast<std::size_t>(wire_of(end))], label_of(end));
    };
    new_gates_.push_back({placed(event.gate.a), placed(event.gate.b)});
    new_rows_.push_back(event.row);
  }
  const bool limited = most_layers < std::numeric_limits<int>::max();
  if (limited) {
    old_gates_ = gates_;
    old_rows_ = rows_;
  }
  put_block(rows_, window_, new_rows_);
  rename_gates(put_block(gates_, window_, new_gates_));
  if (limited) {
    const int depth = layers();
    if (depth > most_layers) {
      gates_.swap(old_gates_);
      rows_.swap(old_rows_);
      return false;
    }
    depth_ = depth;
  }
  rename_ends();
  count_ += gates_of(block_.events()) - old;
  return true;
}

unsigned NetworkWalk::pairs_that_meet() const {
  unsigned pairs = 0;
  for (int b = 1; b < NetworkBlock::wires; ++b) {
    for (int a = 0; a < b; ++a) {
      const bool meet =
          graph_ == nullptr || graph_->joined(window_.wires[static_cast<std::size_t>(a)],
                                              window_.wires[static_cast<std::size_t>(b)]);
      if (meet) pairs |= 1U << (b * (b - 1) / 2 + a);
    }
  }
  return pairs;
}

/// Renames the labels of the window's wires from there on.
void NetworkWalk::rename_gates(int from) {
  const auto each_new_name = [&](auto&& f) {
    for (int place = 0; place < window_.size; ++place) {
      const int wire = window_.wires[static_cast<std::size_t>(place)];
      for (int label = 1; label <= 3; ++label) {
        f(end_of(wire, label), end_of(wire, label_of(block_.ends()[end_of(place, label)])));
      }
    }
  };
  names_.rename(gates_, from, each_new_name);
}

void NetworkWalk::rename_ends() {
  for (int place = 0; place < window_.size; ++place) {
    const int wire = window_.wires[static_cast<std::size_t>(place)];
    for (int label = 1; label <= 3; ++label) {
      End& end = after_[end_of(wire, label)];
      end = end_of(wire, label_of(block_.ends()[end_of(place, label_of(end))]));
    }
  }
}

int NetworkWalk::layers() const {
  LayerCount layers(qubits_);
  for (std::size_t k = 0; k < gates_.size(); ++k) {
    if (rows_[k] < 0) layers.add(wire_of(gates_[k].a), wire_of(gates_[k].b));
  }
  return layers.depth();
}

std::vector<NetworkEvent> NetworkWalk::events() const {
  std::vector<NetworkEvent> events;
  for (std::size_t k = 0; k < gates_.size(); ++k) events.push_back({gates_[k], rows_[k]});
  return events;
}

}  // namespace zelt::braidwerk::internal
