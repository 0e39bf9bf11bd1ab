#pragma once

#include "zeltbraidwerk/export.h"

/// \file
/// How much memory a call of the library may take.

namespace synthesis {

/// Bytes that one call may take. Calls that would take more throw TooLargeError before they begin.
///
/// It is a share, a half by default, of what the process may have: the least of the memory of the
/// machine, the limit of its control group, and its limit of address space. The environment
/// variable ZELTBRAIDWERK_LIMIT_MEMORY sets another share, as set_memory_limit does.
ZELTBRAIDWERK_EXPORT double memory_limit();

/// Sets the limit for all later calls of the process. A number up to 1 is a share of what the
/// process may have, a greater one is bytes; infinity ends all checks. Throws std::invalid_argument
/// unless it is greater than 0.
ZELTBRAIDWERK_EXPORT void set_memory_limit(double limit);

/// The number that was set.
ZELTBRAIDWERK_EXPORT double memory_limit_as_set();

}  // namespace synthesis
