#include <random>

#include "zeltbraidwerk/foundations/random.h"

namespace zelt::braidwerk::random {

unsigned int get_random_seed() {
  return std::random_device("/dev/urandom")();
}

}  // namespace zelt::braidwerk::random
