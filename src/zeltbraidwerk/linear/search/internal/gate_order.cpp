#include "zeltbraidwerk/linear/search/internal/gate_order.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

namespace zelt::braidwerk::internal {

GateOrder::Set GateOrder::with(const std::vector<int>& gates,
                               const std::vector<Set>& beyond) const {
  Set all(words_);
  for (const int gate : gates) {
    unite(all, beyond[static_cast<std::size_t>(gate)]);
    include(all, gate);
  }
  return all;
}

int GateOrder::put(const Gate& gate, const Place& place) {
  const auto number = static_cast<int>(gates_.size());
  if (gates_.size() == words_ * word_bits) {
    words_ = 2 * words_ + 1;
    for (Set& set : earlier_) set.resize(words_);
    for (Set& set : later_) set.resize(words_);
  }
  gates_.push_back(gate);
  earlier_.push_back(with(place.after, earlier_));
  later_.push_back(with(place.before, later_));
  Set up_to_it = earlier_.back();
  Set from_it_on = later_.back();
  include(up_to_it, number);
  include(from_it_on, number);
  for (int other = 0; other < number; ++other) {
    const auto k = static_cast<std::size_t>(other);
    if (has(up_to_it, other)) unite(later_[k], from_it_on);
    if (has(from_it_on, other)) unite(earlier_[k], up_to_it);
  }
  return number;
}

bool GateOrder::have_room(const std::vector<Place>& places) const {
  std::vector<Set> earlier;
  std::vector<Set> later;
  for (const Place& place : places) {
    earlier.push_back(with(place.after, earlier_));
    later.push_back(with(place.before, later_));
  }
  const auto meet = [](const Set& a, const Set& b) {
    for (std::size_t w = 0; w < a.size(); ++w) {
      if ((a[w] & b[w]) != 0) return true;
    }
    return false;
  };
  // Of each new one: the new ones that are before it.
  std::vector<Word> preceding(places.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    for (std::size_t j = 0; j < places.size(); ++j) {
      if (meet(later[i], earlier[j])) preceding[j] |= Word{1} << i;
    }
  }
  // Those go first that none of the rest is before.
  Word gone = 0;
  for (std::size_t put = 0; put < places.size(); ++put) {
    std::size_t next = 0;
    while (next < places.size() && (((gone >> next) & 1) != 0 || (preceding[next] & ~gone) != 0)) {
      ++next;
    }
    if (next == places.size()) return false;
    gone |= Word{1} << next;
  }
  return true;
}

std::vector<Gate> GateOrder::line() const {
  std::vector<std::pair<int, std::size_t>> order;
  for (std::size_t k = 0; k < gates_.size(); ++k) {
    const int before = std::transform_reduce(earlier_[k].begin(), earlier_[k].end(), 0, std::plus{},
                                             [](Word w) { return std::popcount(w); });
    order.emplace_back(before, k);
  }
  std::ranges::sort(order);
  std::vector<Gate> line;
  for (const auto& [before, k] : order) line.push_back(gates_[k]);
  return line;
}

}  // namespace zelt::braidwerk::internal
