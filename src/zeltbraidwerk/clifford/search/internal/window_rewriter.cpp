#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {
namespace {

template <int wires>
bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
  return rewrite_rows<wires>(rows_of(window.gates, wires), static_cast<int>(window.gates.size()),
                             uphill, rng, rewrite);
}

}  // namespace

bool WindowRewriter::rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
  switch (window.size) {
    case 2:
      return rewrite_on<2>(window, uphill, rng, rewrite);
    case 3:
      return rewrite_on<3>(window, uphill, rng, rewrite);
    default:
      return rewrite_on<4>(window, uphill, rng, rewrite);
  }
}

}  // namespace zelt::braidwerk::internal
