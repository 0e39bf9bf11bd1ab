#include "zeltbraidwerk/pauli/search/internal/rotation_groups.h"

#include <algorithm>
#include <map>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/edge_coloring.h"

namespace zelt::braidwerk::internal {
namespace {

/// The qubits with letters, as words.
std::vector<Word> support_of(const RotationList& list, int row) {
  const Word* string = list.string(row);
  std::vector<Word> support(string, string + list.words());
  for (int w = 0; w < list.words(); ++w) {
    support[static_cast<std::size_t>(w)] |= string[list.words() + w];
  }
  return support;
}

bool clash(const RotationList& list, const RotationGroup& one, const RotationGroup& other) {
  return std::ranges::any_of(one, [&](int a) {
    return std::ranges::any_of(other,
                               [&](int b) { return list.clash(list.string(a), list.string(b)); });
  });
}

/// Each group joins the last earlier one on its qubits where all groups between commute with it.
std::vector<RotationGroup> joined(const RotationList& list, std::vector<RotationGroup> groups,
                                  bool in_order) {
  std::map<std::vector<Word>, std::size_t> latest;
  std::vector<RotationGroup> kept;
  for (RotationGroup& group : groups) {
    stop_point();
    const auto [entry, is_new] = latest.try_emplace(support_of(list, group[0]), kept.size());
    if (!is_new) {
      const auto from = kept.begin() + static_cast<std::ptrdiff_t>(entry->second);
      const bool meets = !in_order || std::none_of(from + 1, kept.end(), [&](const auto& between) {
        return clash(list, between, group);
      });
      if (meets) {
        from->insert(from->end(), group.begin(), group.end());
        continue;
      }
      entry->second = kept.size();
    }
    kept.push_back(std::move(group));
  }
  return kept;
}

void turn_round(std::vector<RotationGroup>& groups) {
  std::ranges::reverse(groups);
  for (RotationGroup& group : groups) std::ranges::reverse(group);
}

/// By group: how many others must come one after the other before it.
std::vector<int> layers_of(const RotationList& list, const std::vector<RotationGroup>& groups) {
  std::vector<int> layers(groups.size());
  for (std::size_t k = 0; k < groups.size(); ++k) {
    stop_point();
    for (std::size_t earlier = 0; earlier < k; ++earlier) {
      if (layers[earlier] < layers[k] || !clash(list, groups[earlier], groups[k])) continue;
      layers[k] = layers[earlier] + 1;
    }
  }
  return layers;
}

/// Of groups that commute: matchings first, all others where they fit first.
class Colouring {
 public:
  explicit Colouring(const RotationList& list) : list_(list), graph_(list.qubits()) {}

  void add(RotationGroup group) {
    const std::vector<int> qubits = qubits_of(list_, group[0]);
    if (qubits.size() != 2) {
      others_.push_back(std::move(group));
      return;
    }
    graph_.join(qubits[0], qubits[1]);
    pairs_[std::pair(qubits[0], qubits[1])].push_back(std::move(group));
  }

  /// Appends the groups and forgets them.
  void flush(std::vector<RotationGroup>& ordered) {
    for (const auto& matching : few_matchings_of(graph_)) {
      for (const auto& pair : matching)
        std::ranges::move(pairs_[pair], std::back_inserter(ordered));
    }
    std::vector<std::pair<std::vector<bool>, std::vector<RotationGroup>>> colours;
    for (RotationGroup& group : others_) {
      const std::vector<int> qubits = qubits_of(list_, group[0]);
      const auto at = [](const std::vector<bool>& used, int q) {
        return static_cast<bool>(used[static_cast<std::size_t>(q)]);
      };
      auto fits = std::ranges::find_if(colours, [&](const auto& colour) {
        return std::ranges::none_of(qubits, [&](int q) { return at(colour.first, q); });
      });
      if (fits == colours.end()) {
        colours.emplace_back(std::vector<bool>(static_cast<std::size_t>(list_.qubits())),
                             std::vector<RotationGroup>());
        fits = colours.end() - 1;
      }
      for (const int q : qubits) fits->first[static_cast<std::size_t>(q)] = true;
      fits->second.push_back(std::move(group));
    }
    for (auto& colour : colours) std::ranges::move(colour.second, std::back_inserter(ordered));
    graph_ = BitGraph(list_.qubits());
    pairs_.clear();
    others_.clear();
  }

 private:
  const RotationList& list_;
  BitGraph graph_;
  std::map<std::pair<int, int>, std::vector<RotationGroup>> pairs_;
  std::vector<RotationGroup> others_;
};

}  // namespace

std::vector<int> qubits_of(const RotationList& list, int row) {
  const std::vector<Word> support = support_of(list, row);
  std::vector<int> qubits;
  for (int q = 0; q < list.qubits(); ++q) {
    if ((support[static_cast<std::size_t>(q / word_bits)] >> (q % word_bits) & 1) != 0) {
      qubits.push_back(q);
    }
  }
  return qubits;
}

std::vector<RotationGroup> groups_of(const RotationList& list, bool in_order) {
  std::vector<RotationGroup> groups;
  for (int row = 0; row < list.count(); ++row) groups.push_back({row});
  for (std::size_t before = 0; before != groups.size();) {
    before = groups.size();
    groups = joined(list, std::move(groups), in_order);
    if (!in_order) break;
    turn_round(groups);
    groups = joined(list, std::move(groups), in_order);
    turn_round(groups);
  }
  return groups;
}

std::vector<RotationGroup> by_layers(const RotationList& list, std::vector<RotationGroup> groups,
                                     bool in_order) {
  const std::vector<int> layers =
      in_order ? layers_of(list, groups) : std::vector<int>(groups.size());
  std::map<int, std::vector<std::size_t>> members;
  for (std::size_t k = 0; k < groups.size(); ++k) members[layers[k]].push_back(k);
  std::vector<RotationGroup> ordered;
  Colouring colouring(list);
  for (const auto& layer : members) {
    for (const std::size_t k : layer.second) colouring.add(std::move(groups[k]));
    colouring.flush(ordered);
  }
  return ordered;
}

}  // namespace zelt::braidwerk::internal
