#include "zeltbraidwerk/search/internal/walk.h"

#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {

int depth_of(const std::vector<Gate>& gates, int wires) {
  LayerCount layers(wires);
  for (const Gate& gate : gates) layers.add(wire_of(gate.a), wire_of(gate.b));
  return layers.depth();
}

}  // namespace zelt::braidwerk::internal
