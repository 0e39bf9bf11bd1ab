#pragma once

#include <cstdint>

namespace synthesis {

/// The best circuit at a moment of a search.
struct SearchPoint {
  double seconds = 0;       ///< since the call began
  std::uint64_t steps = 0;  ///< of the run that found it; 0 for methods that do not count steps
  int count = 0;            ///< gates on two qubits
  int depth = 0;            ///< layers of these
};

}  // namespace synthesis
