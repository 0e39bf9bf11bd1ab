#include "zeltbraidwerk/pauli/search/internal/network_walk.h"

#include <array>
#include <numeric>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkTuning& tuning = network_tuning;

NetworkBlock::Exchange drawn_exchange(Rng& rng) {
  const int a = rng.below(NetworkBlock::wires);
  return {a, (a + 1 + rng.below(NetworkBlock::wires - 1)) % NetworkBlock::wires};
}

template <class F>
void for_each_end(F&& f) {
  for (int place = 0; place < NetworkBlock::wires; ++place) {
    for (int label = 1; label <= 3; ++label) f(end_of(place, label));
  }
}

}  // namespace

Cooling drawn_cooling(Rng& rng) {
  const NetworkTargetTuning& odds = network_target_tuning;
  Cooling cooling = tuning.cooling;
  cooling.first = odds.least_uphill + (odds.most_uphill - odds.least_uphill) * rng.unit();
  return cooling;
}

NetworkWalk::NetworkWalk(const std::vector<NetworkEvent>& events, int qubits, bool in_order,
                         bool end_is_free, const BitGraph* graph, int patience, bool exchanges)
    : graph_(graph),
      qubits_(qubits),
      end_is_free_(end_is_free),
      patience_(patience),
      exchanges_(exchanges && !end_is_free && graph == nullptr),
      count_(gates_of(events)),
      finder_(qubits),
      block_(in_order),
      names_(4 * static_cast<std::size_t>(qubits)),
      began_(4 * static_cast<std::size_t>(qubits)) {
  std::iota(began_.begin(), began_.end(), End{0});
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
  const bool exchanges = exchanges_ && rng.chance(exchange_tuning.share);
  const auto exchange = exchanges ? drawn_exchange(rng) : NetworkBlock::Exchange{};
  const int swaps = exchanges ? more_swaps(exchange) : 0;
  if (!block_.read(inside_, end_is_free_ && window_.to_end == 7, order, exchange) ||
      block_.gates() > tuning.walk_gates) {
    return false;
  }
  const int old = block_.gates();
  const int nodes = rng.below(tuning.walk_rare) == 0 ? tuning.walk_more_patience : patience_;
  const unsigned pairs = pairs_that_meet();
  const int as_good = old - swaps * exchange_tuning.weight_of_swap;
  const bool shorter = block_.least() < as_good && block_.rewrite(as_good - 1, pairs, nodes, rng);
  const int longest = as_good + (rng.chance(uphill) ? 1 : 0);
  if (!shorter && !block_.rewrite(longest, pairs, nodes, rng)) return false;
  new_gates_.clear();
  new_rows_.clear();
  for (const NetworkEvent& event : block_.events()) {
    new_gates_.push_back({placed(event.gate.a), placed(event.gate.b)});
    new_rows_.push_back(event.row);
  }
  const bool limited = most_layers < std::numeric_limits<int>::max();
  if (limited) {
    old_gates_ = gates_;
    old_rows_ = rows_;
  }
  put_block(rows_, window_, new_rows_);
  const int after = put_block(gates_, window_, new_gates_);
  if (block_.renames()) rename_gates(after);
  if (limited) {
    const int depth = layers();
    if (depth > most_layers) {
      gates_.swap(old_gates_);
      rows_.swap(old_rows_);
      return false;
    }
    depth_ = depth;
  }
  if (block_.renames()) rename_ends();
  swaps_ += swaps;
  count_ += gates_of(block_.events()) - old;
  return true;
}

/// Swaps to be undone after an exchange: one less where both wires are on one cycle.
int NetworkWalk::more_swaps(const NetworkBlock::Exchange& exchange) const {
  const int a = window_.wires[static_cast<std::size_t>(exchange.a)];
  const int b = window_.wires[static_cast<std::size_t>(exchange.b)];
  for (int wire = role(a); wire != a; wire = role(wire)) {
    if (wire == b) return -1;
  }
  return 1;
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
    for_each_end([&](End end) { f(placed(end), placed(block_.ends()[end])); });
  };
  names_.rename(gates_, from, each_new_name);
}

void NetworkWalk::rename_ends() {
  std::array<End, 4 * NetworkBlock::wires> began{};
  for_each_end([&](End end) { began[end] = began_[placed(end)]; });
  for_each_end([&](End end) { began_[placed(block_.ends()[end])] = began[end]; });
}

std::vector<End> NetworkWalk::names() const {
  std::vector<End> names(began_.size());
  for (std::size_t end = 0; end < began_.size(); ++end) names[began_[end]] = static_cast<End>(end);
  return names;
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
