#include "zeltbraidwerk/graphs/internal/edge_paths.h"

#include <cstddef>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::Gate;

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
void append_sums(const std::vector<int>& path, std::size_t last, std::vector<Gate>& gates) {
  const auto add = [&](std::size_t k) { gates.push_back(Gate::CNOT(path[k], path[k + 1])); };
  for (std::size_t k = last; k-- > 1;) add(k);
  add(0);
  for (std::size_t k = 1; k < last; ++k) add(k);
}

void append_exchanged(const Gate& gate, const std::vector<int>& path, std::vector<Gate>& gates) {
  std::vector<Gate> there;
  const std::size_t last = path.size() - 2;
  for (std::size_t k = 0; k < last; ++k) {
    const int a = path[k];
    const int b = path[k + 1];
    there.insert(there.end(), {Gate::CNOT(a, b), Gate::CNOT(b, a), Gate::CNOT(a, b)});
  }
  gates.insert(gates.end(), there.begin(), there.end());
  gates.push_back(gate);
  gates.back().qbits[0] = path[last];
  gates.insert(gates.end(), there.rbegin(), there.rend());
}

}  // namespace

std::vector<Gate> along_edges(const std::vector<Gate>& gates, const BitGraph& device) {
  std::vector<std::vector<int>> towards(static_cast<std::size_t>(device.size()));
  std::vector<Gate> result;
  for (const Gate& gate : gates) {
    stop_point();
    if (gate.qbits.size() != 2 || device.joined(gate.qbits[0], gate.qbits[1])) {
      result.push_back(gate);
      continue;
    }
    std::vector<int>& next = towards[static_cast<std::size_t>(gate.qbits[1])];
    if (next.empty()) next = steps_towards(gate.qbits[1], device);
    std::vector<int> path{gate.qbits[0]};
    while (path.back() != gate.qbits[1]) {
      path.push_back(next[static_cast<std::size_t>(path.back())]);
    }
    if (gate.name == "CNOT") {
      append_sums(path, path.size() - 1, result);
      append_sums(path, path.size() - 2, result);
    } else {
      append_exchanged(gate, path, result);
    }
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
