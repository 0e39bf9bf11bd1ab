#pragma once

#include <optional>
#include <stdexcept>

#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/synthesis_options.h"

/// \file
/// Circuits that a caller knows, as searches begin with them.
namespace zelt::braidwerk::internal {

/// Throws std::invalid_argument unless all gates are CNOTs or gates on one of n wires, and the
/// permutation is one of n wires.
void check_known(const synthesis::KnownCircuit& known, int n);

/// The CNOTs of a circuit that was checked, in their order, and where it says that outputs are.
GateList cnots_of(const synthesis::KnownCircuit& known);

[[noreturn]] void refuse_start();

/// What a search is given as its start: nothing where there is none. `make` makes a list of a known
/// circuit, `fits` tells whether it does what is asked for; throws std::invalid_argument otherwise.
template <class Make, class Fits>
std::optional<GateList> known_start(const synthesis::SynthesisOptions& options, int n, Make&& make,
                                    Fits&& fits) {
  if (!options.start) return std::nullopt;
  check_known(*options.start, n);
  try {
    std::optional<GateList> list = make(*options.start);
    if (fits(*list)) return list;
  } catch (const std::logic_error&) {  // of a gate outside the Clifford group
  }
  refuse_start();
}

}  // namespace zelt::braidwerk::internal
