#include "zeltbraidwerk/clifford/search/internal/few_wires.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/class_sketch.h"
#include "zeltbraidwerk/clifford/search/internal/five_wire_layers.h"

namespace zelt::braidwerk::internal {
namespace {

/// Sketches of all moves take as long as so many classes.
constexpr std::uint64_t tries_of_sketches = 4;
constexpr std::size_t orders_of_try = 50;
constexpr std::uint64_t tries_between_looks = 300;
/// 50 MB.
constexpr std::size_t most_classes = std::size_t{1} << 20;

/// Enough for half of the operators that so many gates lead into the table.
std::uint64_t chances(std::size_t gates) {
  std::uint64_t of = 50'000;
  for (std::size_t k = 4; k < gates; ++k) of *= 5;
  return of;
}

template <int wires>
GateList list_of(std::vector<Gate> gates, const FewWireRows<wires>& left,
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

template <int wires>
FewWireSearch<wires>::FewWireSearch(const OperatorRows& rows, Outputs outputs, Rng& rng)
    : rng_(rng) {
  const Rows packed = Rows::of(rows);
  Places places;
  std::iota(places.begin(), places.end(), 0);
  do {
    starts_.push_back({packed.reordered(places), places});
  } while (outputs == Outputs::anywhere && std::ranges::next_permutation(places).found);
}

/// Asks about all gates, in an order that begins with a random one, until one is taken.
template <int wires>
template <class F>
bool FewWireSearch<wires>::any_move(F&& takes) {
  constexpr int stride = 7;  // all gates in turn, each on other wires than the last
  static_assert(Rows::moves % stride != 0);
  int move = rng_.below(Rows::moves);
  for (int k = 0; k < Rows::moves; ++k, move = (move + stride) % Rows::moves) {
    if (takes(static_cast<std::size_t>(move))) return true;
  }
  return false;
}

template <int wires>
std::optional<GateList> FewWireSearch<wires>::run(const Control& control, std::uint64_t tries,
                                                  int known) {
  control_ = control;
  most_tries_ = tries;
  over_ = false;
  next_look_ = 0;
  if (!find(known)) return std::nullopt;
  if constexpr (wires == 5) make_shallow();
  return list_of<wires>(std::move(path_), left_, places_);
}

template <int wires>
bool FewWireSearch<wires>::is_over() {
  if (over_ || tries_ < next_look_) return over_;
  next_look_ = tries_ + tries_between_looks;
  over_ = tries_ >= most_tries_ || control_.stop_requested();
  return over_;
}

/// Any circuit of the fewest gates. Keeps the starts that are known to lead to such circuits.
template <int wires>
bool FewWireSearch<wires>::find(int known) {
  if (gates_ == 0) {
    std::vector<int> distances;
    for (const Start& start : starts_) distances.push_back(distance(start.rows));
    least_ = std::ranges::min(distances);
    if (least_ < ClassTable<wires>::beyond) {
      std::erase_if(starts_, [&](const Start& start) { return distance(start.rows) > least_; });
      places_ = starts_[0].places;
      return go_down(starts_[0].rows, least_);
    }
    gates_ = 1;
    if (wires != 5 && starts_.size() > 1) {
      for (const Start& start : starts_) orders_.push_back(start.places);
      starts_.resize(1);
    }
  }
  for (; least_ < known; ++gates_, ++least_, next_start_ = 0, chances_ = 0) {
    too_far_.resize(gates_);
    if (find_by_chance()) return go_down(left_, ClassTable<wires>::most_gates);
    std::vector<Start> found;
    for (; next_start_ < starts_.size(); ++next_start_) {
      const Start& start = starts_[next_start_];
      Rows rows = start.rows;
      const auto before = path_.size();
      if (lead_into_table(rows, gates_)) {
        found.push_back(start);
        if (found.size() == 1) {
          if (orders_.empty()) places_ = start.places;
          left_ = rows;
        } else {
          path_.resize(before);
        }
        if (wires != 5) break;
      }
      if (over_ || control_.stop_requested()) {
        if (found.empty()) return false;
        break;
      }
    }
    if (!found.empty()) {
      starts_ = std::move(found);
      return go_down(left_, ClassTable<wires>::most_gates);
    }
  }
  return false;
}

/// Random gates. Of four or more there are so many that these find a way in a tenth of the time
/// that trying all takes, gates in order in half of it: ways begin with few of the first gates.
template <int wires>
bool FewWireSearch<wires>::find_by_chance() {
  if (gates_ < 4) return false;
  const std::uint64_t most = chances(gates_) * starts_.size();
  for (; chances_ < most && !is_over(); ++chances_) {
    const Start& start = starts_[chances_ % starts_.size()];
    left_ = start.rows;
    path_.clear();
    for (std::size_t k = 1; k < gates_; ++k) {
      path_.push_back(Rows::gates()[static_cast<std::size_t>(rng_.below(Rows::moves))]);
      left_ = left_.after(path_.back());
    }
    if (step_into_table(left_)) {
      if (orders_.empty()) places_ = start.places;
      return true;
    }
  }
  path_.clear();
  return false;
}

/// The first gates of an operator that takes very many stay as they are.
template <int wires>
void FewWireSearch<wires>::make_shallow()
  requires(wires == 5)
{
  const int kept = std::max(least_ - FiveWireLayers::most_gates, 0);
  const int left = least_ - kept;
  const std::vector<Gate> first(path_.begin(), path_.begin() + kept);
  FiveWireLayers search(rng_);
  for (int layers = (left + 1) / 2; layers < depth_of(path_, wires); ++layers) {
    for (const Start& start : starts_) {
      Rows rows = start.rows;
      for (const Gate& gate : first) rows = rows.after(gate);
      std::vector<Gate> gates = first;
      if (control_.stop_requested()) return;
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
template <int wires>
bool FewWireSearch<wires>::lead_into_table(Rows& rows, std::size_t gates) {
  if (gates == 1) return step_into_table(rows);
  return any_move([&](std::size_t move) {
    if (is_over()) return false;
    const Gate& gate = Rows::gates()[move];
    Rows next = rows.after(gate);
    const OperatorClass found = class_of_(next);
    ++tries_;
    Classes& in_vain = too_far_[gates - 1];
    if (in_vain.contains(found)) return false;
    path_.push_back(gate);
    if (lead_into_table(next, gates - 1)) {
      rows = next;
      return true;
    }
    path_.pop_back();
    if (!over_ && in_vain.size() < most_classes) in_vain.insert(found);
    return false;
  });
}

template <int wires>
bool FewWireSearch<wires>::step_into_table(Rows& rows) {
  if (!orders_.empty()) return step_into_table_in_any_order(rows);
  std::array<bool, Rows::moves> may_lead;
  ClassSketch<wires>(rows).each(
      [&](std::size_t move, std::uint64_t sketch) { may_lead[move] = table_.may_have(sketch); });
  tries_ += tries_of_sketches;
  return any_move([&](std::size_t move) {
    if (!may_lead[move]) return false;
    const Rows next = rows.after(Rows::gates()[move]);
    ++tries_;
    if (distance(next) == ClassTable<wires>::beyond) return false;
    path_.push_back(Rows::gates()[move]);
    rows = next;
    return true;
  });
}

template <int wires>
bool FewWireSearch<wires>::step_into_table_in_any_order(Rows& rows) {
  tries_ += tries_of_sketches;
  std::optional<Rows> found;
  ClassSketch<wires>(rows).each_counts([&](std::size_t move, const auto& counts) {
    if (found || !table_.may_have_any(counts.number_of_all())) return;
    tries_ += orders_.size() / orders_of_try;
    const Rows next = rows.after(Rows::gates()[move]);
    for (const Places& places : orders_) {
      if (!table_.may_have(counts.number(places))) continue;
      ++tries_;
      const Rows ordered = next.reordered(places);
      if (distance(ordered) == ClassTable<wires>::beyond) continue;
      path_.push_back(Rows::gates()[move]);
      places_ = places;
      found = ordered;
      break;
    }
  });
  if (found) rows = *found;
  return found.has_value();
}

/// From rows at a distance that the table has.
template <int wires>
bool FewWireSearch<wires>::go_down(Rows rows, int distance_left) {
  for (; distance_left > 0; --distance_left) {
    const bool nearer = any_move([&](std::size_t move) {
      const Rows next = rows.after(Rows::gates()[move]);
      if (distance(next) >= distance_left) return false;
      path_.push_back(Rows::gates()[move]);
      rows = next;
      return true;
    });
    if (!nearer) return false;
  }
  left_ = rows;
  return true;
}

template class FewWireSearch<3>;
template class FewWireSearch<4>;
template class FewWireSearch<5>;
template class FewWireSearch<6>;

}  // namespace zelt::braidwerk::internal
