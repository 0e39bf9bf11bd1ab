#pragma once

#include <functional>

namespace zelt::braidwerk::internal {

/// A source of draws: an int from the first bound to the second, both included. The public
/// functions pass random::uniform; who needs the same circuit again brings a seeded engine.
using Draw = std::function<int(int, int)>;

}  // namespace zelt::braidwerk::internal
