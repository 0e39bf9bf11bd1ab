#pragma once

#include <cstdint>
#include <vector>

#include "convert.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

/// \file
/// Circuits on their way to Python, as rows of five integers: the gate's name as an index into
/// `_gate_names()`, its qubits (the second is -1 where there is one), and its angle. An angle is
/// the rotation that it belongs to and its sign; or -1 and a number of quarter turns.
namespace zelt::braidwerk::python {

using Operations = nb::ndarray<nb::numpy, std::int32_t, nb::ndim<2>>;
using Letters = nb::ndarray<const std::uint8_t, nb::ndim<2>, nb::c_contig, nb::device::cpu>;

/// The name of gate `index`, or null after the last.
const char* gate_name(int index);

Operations to_operations(const std::vector<structures::Gate>& gates);
Operations to_operations(const std::vector<internal::CliffordGate>& gates);
/// The same of gates that come with the row of each rotation, -1 for other gates. The angle of a
/// rotation has its sign alone.
Operations to_operations(const std::vector<structures::Gate>& gates, const std::vector<int>& rows);

/// One row per string of codes, each from 0 to 3.
std::vector<std::vector<unsigned char>> to_strings(const Letters& letters);
internal::PauliFrame to_frame(const Letters& letters);
ByteArray2 to_numpy(const std::vector<std::vector<unsigned char>>& strings, int qubits);

}  // namespace zelt::braidwerk::python
