#include <random>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/random.h"

// Alone in its unit, so that no caller inlines it and a program can put a scripted source in its
// place.

namespace zelt::braidwerk::random {

int uniform(int a, int b) {
  static std::mt19937 generator(get_random_seed());
  return internal::bounded_draw(generator, a, b);
}

}  // namespace zelt::braidwerk::random
