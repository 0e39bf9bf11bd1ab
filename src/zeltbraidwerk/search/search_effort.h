#pragma once

#include <cstdint>
#include <limits>

namespace synthesis {

/// How far a search goes. What it does depends on seed and stream, never on how far it may go: the
/// same seed, stream and steps give the same circuit, and more effort is never worse. It ends
/// before where no circuit can be better, by simple proofs for small and sparse problems.
struct SearchEffort {
  std::uint64_t steps = 200'000;  ///< a microsecond or two each
  double seconds = std::numeric_limits<double>::infinity();
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;  ///< of the seed, one a run: for several threads
};

}  // namespace synthesis
