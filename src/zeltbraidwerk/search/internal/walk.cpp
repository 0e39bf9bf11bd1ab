#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

int depth_of(const std::vector<Gate>& gates, int wires) {
  std::vector<int> level(static_cast<std::size_t>(wires));
  int depth = 0;
  for (const Gate& gate : gates) {
    int& a = level[static_cast<std::size_t>(wire_of(gate.a))];
    int& b = level[static_cast<std::size_t>(wire_of(gate.b))];
    a = b = std::max(a, b) + 1;
    depth = std::max(depth, a);
  }
  return depth;
}

}  // namespace zelt::braidwerk::internal
