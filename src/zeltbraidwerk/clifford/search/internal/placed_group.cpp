#include "zeltbraidwerk/clifford/search/internal/placed_group.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

/// Strings of which none is a product of others.
class Independent {
 public:
  /// Whether it is no product of those taken so far; it is taken then.
  bool take(WireString string) {
    while (string.support() != 0) {
      const bool by_x = string.x != 0;
      WireString& entry = (by_x ? by_x_ : by_z_)[at(std::countr_zero(by_x ? string.x : string.z))];
      if (entry.support() == 0) {
        entry = string;
        return true;
      }
      string = string * entry;
    }
    return false;
  }

 private:
  std::array<WireString, 64> by_x_{};
  std::array<WireString, 64> by_z_{};
};

}  // namespace

WireString WireString::after(const Gate& gate) const {
  Word px = 0;
  Word pz = 0;
  for (const End end : {gate.a, gate.b}) {
    px |= Word(end & 1) << wire_of(end);
    pz |= Word(end >> 1 & 1) << wire_of(end);
  }
  if (std::popcount((x & pz) ^ (z & px)) % 2 == 0) return *this;
  return {x ^ px, z ^ pz};
}

PlacedGroup::PlacedGroup(const std::vector<WireString>& generators, int spare,
                         SupportWeights& weights)
    : generators_(static_cast<int>(generators.size())), capacity_((1 + spare) * generators_) {
  for (const WireString& string : generators) {
    elements_.push_back({string, weights(string.support())});
  }
  settle();
}

/// A generator is lighter than all elements that it is exchanged for: the greedy algorithm.
void PlacedGroup::settle() {
  std::stable_sort(elements_.begin(), elements_.end(),
                   [](const Element& a, const Element& b) { return a.weight < b.weight; });
  const auto same = [](const Element& a, const Element& b) { return a.string == b.string; };
  Independent basis;
  std::size_t found = 0;
  static thread_local std::vector<Element> others;
  others.clear();
  for (std::size_t k = 0; k < elements_.size(); ++k) {
    const Element element = elements_[k];
    if (static_cast<int>(found) < generators_ && basis.take(element.string)) {
      elements_[found++] = element;
    } else {
      others.push_back(element);
    }
  }
  elements_.resize(found);
  for (const Element& other : others) {
    if (static_cast<int>(elements_.size()) == capacity_) break;
    if (std::ranges::any_of(elements_, [&](const Element& e) { return same(e, other); })) continue;
    elements_.push_back(other);
  }
}

double PlacedGroup::worth_of(int weight) {
  constexpr auto worths = [] {
    std::array<double, 2 * SupportWeights::most_wires + 1> worth{};
    double now = 1;
    for (double& entry : worth) entry = std::exchange(now, now / 1.5);
    return worth;
  }();
  return worths[at(weight)];
}

std::uint64_t PlacedGroup::hash() const {
  std::uint64_t sum = 0;
  for (int k = 0; k < generators_; ++k) {
    sum += Rng::mixed(element(k).support() + 0x9e3779b97f4a7c15U);
  }
  return sum;
}

void PlacedGroup::carry(const Gate& gate) {
  for (Element& element : elements_) element.string = element.string.after(gate);
}

/// All that have a letter on its wire have the same one: multiplied by the generator, none.
void PlacedGroup::finish(int generator, SupportWeights& weights) {
  const WireString single = element(generator);
  --generators_;
  std::erase_if(elements_, [&](Element& element) {
    if ((element.string.support() & single.support()) != 0)
      element.string = element.string * single;
    if (element.string.support() == 0) return true;
    element.weight = weights(element.string.support());
    return false;
  });
  settle();
}

void PlacedGroup::lighten(int rounds, Rng& rng, SupportWeights& weights) {
  if (generators_ == 0) return;
  std::vector<WireString> rows;
  std::vector<int> order;
  Word open = 0;
  for (int k = 0; k < generators_; ++k) {
    rows.push_back(element(k));
    open |= element(k).support();
  }
  for (; open != 0; open &= open - 1) order.push_back(std::countr_zero(open));
  for (int round = 0; round < rounds; ++round) {
    stop_point();
    for (std::size_t k = order.size(); k > 1; --k) {
      std::swap(order[k - 1], order[at(rng.below(static_cast<int>(k)))]);
    }
    // Row r is the only one with some letter on wire order[r], where there is such a letter.
    std::size_t done = 0;
    for (const int wire : order) {
      std::size_t pivot = done;
      while (pivot < rows.size() && rows[pivot].label(wire) == 0) ++pivot;
      if (pivot == rows.size()) continue;
      std::swap(rows[done], rows[pivot]);
      const bool by_x = (rows[done].x >> wire & 1) != 0;
      for (std::size_t r = 0; r < rows.size(); ++r) {
        if (r != done && ((by_x ? rows[r].x : rows[r].z) >> wire & 1) != 0) {
          rows[r] = rows[r] * rows[done];
        }
      }
      ++done;
    }
    const int heaviest = elements_.back().weight;
    const auto offer = [&](const WireString& string) {
      if (std::popcount(string.support()) >= heaviest) return;
      elements_.push_back({string, weights(string.support())});
    };
    for (std::size_t r = 0; r < rows.size(); ++r) {
      offer(rows[r]);
      for (std::size_t s = 0; s < r; ++s) offer(rows[r] * rows[s]);
    }
    settle();
  }
}

PlacedGroup PlacedGroup::renamed(const std::vector<int>& names, SupportWeights& weights) const {
  PlacedGroup result = *this;
  for (Element& element : result.elements_) {
    WireString moved;
    for (Word rest = element.string.support(); rest != 0; rest &= rest - 1) {
      const int wire = std::countr_zero(rest);
      moved.x |= (element.string.x >> wire & 1) << names[at(wire)];
      moved.z |= (element.string.z >> wire & 1) << names[at(wire)];
    }
    element = {moved, weights(moved.support())};
  }
  result.settle();
  return result;
}

}  // namespace zelt::braidwerk::internal
