#pragma once

#include <functional>

#include "zeltbraidwerk/foundations/random.h"

/// \file
/// Include in one source of a test program: its own random::uniform then takes the place of the
/// library's, and every draw of the library in this program goes to `support::uniform_script`.

namespace support {

inline std::function<int(int, int)> uniform_script = [](int a, int) { return a; };

}  // namespace support

namespace zelt::braidwerk::random {

__attribute__((visibility("default"))) int uniform(int a, int b) {
  return support::uniform_script(a, b);
}

}  // namespace zelt::braidwerk::random
