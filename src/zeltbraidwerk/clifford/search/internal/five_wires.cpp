#include "zeltbraidwerk/clifford/search/internal/five_wires.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/five_wire_layers.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int wires = FiveWireRows::wires;
/// Operators on five qubits that this is not enough for are not known.
constexpr int most_tries = 4'000'000;

GateList list_of(std::vector<Gate> gates, const FiveWireRows& left,
                 const std::array<int, wires>& places) {
  GateList list(wires, std::move(gates));
  for (std::size_t p = 0; p < places.size(); ++p) {
    const unsigned x = left.strings[2 * p];
    const unsigned z = left.strings[2 * p + 1];
    const int wire = std::countr_zero(x) / 2;
    const std::array<unsigned, 4> labels{0, x, z, x ^ z};
    for (int label = 0; label < 4; ++label) {
      const auto on = static_cast<int>(labels[static_cast<std::size_t>(label)] >> (2 * wire));
      list.frame[end_of(wire, on)] = end_of(places[p], label);
    }
  }
  return list;
}

}  // namespace

FiveWireSearch::FiveWireSearch(const OperatorRows& rows, Outputs outputs, Rng& rng, Meter& meter)
    : rng_(rng), meter_(meter) {
  const FiveWireRows packed = FiveWireRows::of(rows);
  Places places;
  std::iota(places.begin(), places.end(), 0);
  do {
    starts_.push_back({packed.reordered(places), places});
  } while (outputs == Outputs::anywhere && std::ranges::next_permutation(places).found);
}

/// Asks about all gates, in an order that begins with a random one, until one is taken.
template <class F>
bool FiveWireSearch::any_gate(F&& takes) {
  constexpr int stride = 7;  // all gates in turn, each on other wires than the last
  int move = rng_.below(five_wire_moves);
  for (int k = 0; k < five_wire_moves; ++k, move = (move + stride) % five_wire_moves) {
    if (takes(five_wire_gates()[static_cast<std::size_t>(move)])) return true;
  }
  return false;
}

std::optional<GateList> FiveWireSearch::run() {
  if (!find()) return std::nullopt;
  make_shallow();
  return list_of(std::move(path_), left_, places_);
}

/// Any circuit of the fewest gates. Keeps the starts that are known to lead to such circuits.
bool FiveWireSearch::find() {
  std::vector<int> distances;
  for (const Start& start : starts_) distances.push_back(distance(start.rows));
  least_ = std::ranges::min(distances);
  if (least_ < ClassTable::beyond) {
    std::erase_if(starts_, [&](const Start& start) { return distance(start.rows) > least_; });
    places_ = starts_[0].places;
    return go_down(starts_[0].rows, least_);
  }
  for (std::size_t gates = 1;; ++gates, ++least_) {
    too_far_.resize(gates);
    std::vector<Start> found;
    for (const Start& start : starts_) {
      FiveWireRows rows = start.rows;
      const auto before = path_.size();
      if (lead_into_table(rows, gates)) {
        found.push_back(start);
        if (found.size() == 1) {
          places_ = start.places;
          left_ = rows;
        } else {
          path_.resize(before);
        }
      }
      const bool has_to_end = meter_.ended() || tries_ > most_tries;
      if (has_to_end && found.empty()) return false;
      if (has_to_end) break;
    }
    if (!found.empty()) {
      starts_ = std::move(found);
      return go_down(left_, ClassTable::most_gates);
    }
  }
}

/// The first gates of an operator that takes very many stay as they are.
void FiveWireSearch::make_shallow() {
  const int kept = std::max(least_ - FiveWireLayers::most_gates, 0);
  const int left = least_ - kept;
  const std::vector<Gate> first(path_.begin(), path_.begin() + kept);
  FiveWireLayers search(rng_);
  for (int layers = (left + 1) / 2; layers < depth_of(path_, wires); ++layers) {
    for (const Start& start : starts_) {
      FiveWireRows rows = start.rows;
      for (const Gate& gate : first) rows = rows_after(gate, rows);
      std::vector<Gate> gates = first;
      if (meter_.ended()) return;
      if (!search.go_down(rows, left, layers, gates)) continue;
      if (depth_of(gates, wires) >= depth_of(path_, wires)) continue;
      path_ = std::move(gates);
      left_ = rows;
      places_ = start.places;
      break;
    }
  }
}

/// True when `gates` gates do; then `rows` are those after them, and the path has them.
bool FiveWireSearch::lead_into_table(FiveWireRows& rows, std::size_t gates) {
  return any_gate([&](const Gate& gate) {
    if (tries_ > most_tries || (++tries_ % 1024 == 0 && meter_.ended())) return false;
    FiveWireRows next = rows_after(gate, rows);
    const OperatorClass found = class_of_(next);
    path_.push_back(gate);
    if (gates == 1) {
      if (table_.distance(found) < ClassTable::beyond) {
        rows = next;
        return true;
      }
    } else if (!too_far_[gates - 1].contains(found)) {
      if (lead_into_table(next, gates - 1)) {
        rows = next;
        return true;
      }
      too_far_[gates - 1].insert(found);
    }
    path_.pop_back();
    return false;
  });
}

/// From rows at a distance that the table has.
bool FiveWireSearch::go_down(FiveWireRows rows, int distance_left) {
  for (; distance_left > 0; --distance_left) {
    const bool nearer = any_gate([&](const Gate& gate) {
      const FiveWireRows next = rows_after(gate, rows);
      if (distance(next) >= distance_left) return false;
      path_.push_back(gate);
      rows = next;
      return true;
    });
    if (!nearer) return false;
  }
  left_ = rows;
  return true;
}

}  // namespace zelt::braidwerk::internal
