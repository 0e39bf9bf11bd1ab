#include "zeltbraidwerk/graphs/internal/edge_paths.h"

#include <cstddef>
#include <optional>
#include <type_traits>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

struct Pair {
  int a, b;
  bool is_cnot;
};

std::optional<Pair> pair_of(const structures::Gate& gate) {
  if (gate.qbits.size() != 2) return std::nullopt;
  return Pair{gate.qbits[0], gate.qbits[1], gate.name == "CNOT"};
}
std::optional<Pair> pair_of(const CliffordGate& gate) {
  if (!gate.is_pair()) return std::nullopt;
  return Pair{gate.a, gate.b, gate.kind == CliffordGate::Kind::cnot};
}

template <class Gate>
Gate cnot(int control, int target) {
  if constexpr (std::is_same_v<Gate, CliffordGate>)
    return CliffordGate::cnot(control, target);
  else
    return Gate::CNOT(control, target);
}

int& first_of(structures::Gate& gate) {
  return gate.qbits[0];
}
int& first_of(CliffordGate& gate) {
  return gate.a;
}

/// By vertex: the next one on a shortest path to `end`, -1 where there is none.
std::vector<int> steps_towards(int end, const BitGraph& device) {
  std::vector<int> next(static_cast<std::size_t>(device.size()), -1);
  std::vector<int> reached{end};
  next[static_cast<std::size_t>(end)] = end;
  for (std::size_t k = 0; k < reached.size(); ++k) {
    const int v = reached[k];
    device.for_each_neighbour(v, [&](int w) {
      if (next[static_cast<std::size_t>(w)] >= 0) return;
      next[static_cast<std::size_t>(w)] = v;
      reached.push_back(w);
    });
  }
  return next;
}

/// Adds the wires of the path up to `last` to the one at `last`, but for what a second call up to
/// the wire before takes off again: all but the first. Both are a CNOT from end to end.
template <class Gate>
void append_sums(const std::vector<int>& path, std::size_t last, std::vector<Gate>& gates) {
  const auto add = [&](std::size_t k) { gates.push_back(cnot<Gate>(path[k], path[k + 1])); };
  for (std::size_t k = last; k-- > 1;) add(k);
  add(0);
  for (std::size_t k = 1; k < last; ++k) add(k);
}

template <class Gate>
void append_exchanged(const Gate& gate, const std::vector<int>& path, std::vector<Gate>& gates) {
  std::vector<Gate> there;
  const std::size_t last = path.size() - 2;
  for (std::size_t k = 0; k < last; ++k) {
    const int a = path[k];
    const int b = path[k + 1];
    there.insert(there.end(), {cnot<Gate>(a, b), cnot<Gate>(b, a), cnot<Gate>(a, b)});
  }
  gates.insert(gates.end(), there.begin(), there.end());
  gates.push_back(gate);
  first_of(gates.back()) = path[last];
  gates.insert(gates.end(), there.rbegin(), there.rend());
}

template <class Gate>
std::vector<Gate> routed(const std::vector<Gate>& gates, const BitGraph& device) {
  std::vector<std::vector<int>> towards(static_cast<std::size_t>(device.size()));
  std::vector<Gate> result;
  for (const Gate& gate : gates) {
    stop_point();
    const std::optional<Pair> pair = pair_of(gate);
    if (!pair || device.joined(pair->a, pair->b)) {
      result.push_back(gate);
      continue;
    }
    std::vector<int>& next = towards[static_cast<std::size_t>(pair->b)];
    if (next.empty()) next = steps_towards(pair->b, device);
    std::vector<int> path{pair->a};
    while (path.back() != pair->b) {
      path.push_back(next[static_cast<std::size_t>(path.back())]);
    }
    if (pair->is_cnot) {
      append_sums(path, path.size() - 1, result);
      append_sums(path, path.size() - 2, result);
    } else {
      append_exchanged(gate, path, result);
    }
  }
  return result;
}

}  // namespace

std::vector<structures::Gate> along_edges(const std::vector<structures::Gate>& gates,
                                          const BitGraph& device) {
  return routed(gates, device);
}

std::vector<CliffordGate> along_edges(const std::vector<CliffordGate>& gates,
                                      const BitGraph& device) {
  return routed(gates, device);
}

}  // namespace zelt::braidwerk::internal
