#pragma once

#include "zeltbraidwerk/export.h"

namespace zelt::braidwerk::random {

/// One unsigned 32-bit value from the random device "/dev/urandom", opened anew for each call.
ZELTBRAIDWERK_EXPORT unsigned int get_random_seed();

/// A uniform int from a to b, both included; a must not exceed b.
///
/// The one shared source of the library: a 32-bit Mersenne Twister, seeded once a process from
/// get_random_seed and not seedable from outside, so results that rest on it differ from run to
/// run. Bounded draws keep as many low bits as b - a needs and reject what lies above. a equal to b
/// draws nothing. Draws take no lock: calls from several threads must be serialised.
ZELTBRAIDWERK_EXPORT int uniform(int a, int b);

}  // namespace zelt::braidwerk::random
