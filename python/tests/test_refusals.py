"""What is refused, by which error, and with which text: one case per line."""

# ruff: noqa: E501

import math

import numpy as np
import pytest
from support import LONG_PROGRAM, graph_of

import zeltbraidwerk as zb
from zeltbraidwerk import core, errors

CASES = r"""
# circuits
CnotCircuit(2, [(0, 2)]) -> QubitError: gates: got qubit 2, wanted 0 to 1
CnotCircuit(2, [(1, 1)]) -> QubitError: gates: got qubit 1 twice in a pair
CnotCircuit(2, [(0, 1, 1)]) -> ShapeError: got shape \(1, 3\)
CnotCircuit(-1) -> OptionError: n: got -1, wanted 0 to
CnotCircuit(1) + CnotCircuit(2) -> ShapeError: 1 and 2 qubits
Gate('V', 0) -> GateError: name: got 'V', wanted one of CNOT
Gate('CNOT', 0) -> GateError: qubits: got 1 for CNOT, wanted 2
Gate('XX', [0]) -> GateError: wanted two or more
Gate('RZ', 0) -> GateError: params: got 0 for RZ, wanted 1
Gate('CNOT', (1, 1)) -> QubitError: wanted distinct qubits
Gate('H', 0.5) -> DtypeError: qubits: got 0.5, wanted an integer
Gate('RZ', 0, math.nan) -> AngleError: got nan, wanted a finite angle
Gate('XX', (0, 1), (1.0, 2)).inverse() -> GateError: no inverse
Circuit(1, [Gate.cnot(0, 1)]) -> QubitError: got qubit 1, wanted 0 to 0
Circuit(1, [Gate.h(0)]).to_cnot_circuit() -> NotLinearError: gate H

# instructions
Measure(0.5, 0) -> DtypeError: qubit: got 0.5, wanted an integer
Measure(0, -1) -> OptionError: bit: got -1, wanted 0 to
Barrier(()) -> QubitError: qubits: got none
Conditional('X', 0) -> DtypeError: operation: got 'X', wanted a Gate
Conditional(X, (1, 1)) -> BitError: bits: got \(1, 1\)
Conditional(X, (0, 1), 4) -> OptionError: value: got 4, wanted 0 to 3
Circuit(1, [Measure(0, 1)], [('c', 1)]) -> BitError: got bit 1, wanted one
Circuit(1, [], [('c', 1), ('c', 2)]) -> BitError: classical: got the names
Circuit(1, [], {'a': 1}) + Circuit(1, [], {'b': 1}) -> BitError: got circuits with a\[1\] and b\[1\], wanted the same
Circuit(1, [Conditional(X, 1)], {'c': 2}).to_qasm() -> BitError: a condition on bits 1, wanted all bits of a register
Circuit.of(optimize(Circuit(1), steps=0)) -> DtypeError: got Optimization, wanted its .circuit, a Circuit
Circuit(2).placed([0], 3) -> ShapeError: qubits: got 1, wanted 2
Circuit(1).draw('wide') -> DtypeError: width: got 'wide'

# clifford
CliffordTableau(2).conjugate('X') -> PauliError: pauli: got 'X' of 1 letters, wanted 2
CliffordTableau(2).conjugate('+-XX') -> PauliError: after one sign
CliffordTableau(2).conjugate('XA') -> PauliError: wanted letters I, X, Y, Z
CliffordTableau(2).apply(Gate.rz(0, 0.3)) -> NotCliffordError: got RZ \[0 \]0.3
CliffordTableau(2).apply(Gate.rz(0, 'a')) -> NotCliffordError: wanted a numeric angle
CliffordTableau(2).apply(Gate.h(2)) -> QubitError: got qubit 2, wanted 0 to 1
CliffordTableau(2).apply(Circuit(3)) -> ShapeError: got 3 qubits, wanted 2
CliffordTableau(2) @ CliffordTableau(1) -> ShapeError: 2 and 1 qubits

# operators
clifford.synthesize((['X'], ['Z', 'Z'])) -> ShapeError: got 1 images of X and 2 of Z
clifford.synthesize((['XI'], ['ZI'])) -> ShapeError: got 1 images of 2 letters, wanted 1
clifford.synthesize((['XI', 'XI'], ['ZI', 'IZ'])) -> NotCliffordError: X on qubit 1 and Z on qubit 0
clifford.synthesize((['X'], ['X'])) -> NotCliffordError: commute
clifford.synthesize((['X'], ['iZ'])) -> PauliError: operator
clifford.synthesize(Circuit(1, [Gate.rz(0, 0.1)])) -> NotCliffordError: wanted a Clifford gate

# states
clifford.synthesize_state(['XX']) -> ShapeError: state: got 1 stabilizers of 2 letters, wanted 2
clifford.synthesize_state(['X', 'X']) -> ShapeError: got 2 stabilizers of 1 letters, wanted 1
clifford.synthesize_state(['XXI', 'IXX', 'XIX']) -> PauliError: got XIX, which is a product
clifford.synthesize_state(['XA', 'ZZ']) -> PauliError: letters I, X, Y, Z
clifford.synthesize_state(['XX', 'ZZ'], device=Device.line(1)) -> DeviceTooSmallError: wanted at least 2
graph_state.synthesize(1 - np.eye(4, dtype=int), device=LINE_AND_DOT) -> DisconnectedDeviceError: component has 3 qubits, wanted 4
clifford.synthesize('foo') -> QasmFileError: got 'foo', wanted OpenQASM 2 or the path
clifford.synthesize('X') -> DtypeError: operator: got str, wanted a tableau or circuit
clifford.synthesize_state('XX') -> DtypeError: state: got 'XX', wanted Pauli strings
clifford.synthesize_state(Circuit(1, [Gate.rz(0, 0.3)])) -> NotCliffordError: wanted a Clifford gate

# codes
clifford.synthesize_encoder([]) -> ShapeError: stabilizers: got none
clifford.synthesize_encoder('XX') -> DtypeError: stabilizers: got 'XX', wanted Pauli strings in a list, a check matrix
clifford.synthesize_encoder(['XXI', 'XX']) -> PauliError: stabilizers: got 'XX' of 2 letters, wanted 3
clifford.synthesize_encoder(['XXI', 'IZZ']) -> PauliError: stabilizers: got XXI and IZZ, which do not commute
clifford.synthesize_encoder(['XX', '-XX']) -> PauliError: stabilizers: got XX, which is a product
clifford.synthesize_encoder(['X', 'X']) -> PauliError: stabilizers: got X, which is a product
clifford.synthesize_encoder([[1, 1, 0]]) -> ShapeError: got a check matrix of shape \(1, 3\), wanted 2n columns
clifford.synthesize_encoder([[1, 3]]) -> EntryError: stabilizers: got the entry 3, wanted 0 and 1 alone
clifford.synthesize_encoder(([[1, 1]], [[1, 1, 0]])) -> ShapeError: H_X of 2 columns and H_Z of 3
clifford.synthesize_encoder(([[1, 1, 0]], [[0, 1, 1]])) -> PauliError: stabilizers: got XXI and IZZ
clifford.synthesize_encoder(['ZZI'], ['X', 'Z', 'Y']) -> DtypeError: logicals: got .*, wanted a pair of lists
clifford.synthesize_encoder(['ZZI'], (['XXI'], ['ZII'])) -> ShapeError: logicals: got 1 for X and 1 for Z, wanted 2
clifford.synthesize_encoder(['ZZ'], (['XI'], ['ZI'])) -> PauliError: logicals: got XI, which does not commute with the stabilizer ZZ
clifford.synthesize_encoder(['ZZ'], (['XX'], ['ZZ'])) -> PauliError: got XX for X on logical qubit 0 and ZZ for Z on logical qubit 0, which commute
clifford.synthesize_encoder(['ZZI'], (['XXI', 'IIX'], ['IIZ', 'ZII'])) -> PauliError: got XXI for X on logical qubit 0 and IIZ for Z on logical qubit 0, which commute
clifford.synthesize_encoder(['ZZ'], (['XXX'], ['ZII'])) -> PauliError: logicals: got 'XXX' of 3 letters, wanted 2
clifford.synthesize_encoder(['ZZ'], ([[1, 1, 1]], [[1, 0, 0]])) -> ShapeError: logicals: got a matrix of 3 columns, wanted 2, or 4

# linear
linear.synthesize([[1.0, 0.0], [0.0, 1.0]]) -> DtypeError: matrix: got entries of type float64
linear.synthesize([[2, 1], [1, 1]]) -> EntryError: matrix: got the entry 2
linear.synthesize([[1, 0, 0], [0, 1, 0]]) -> ShapeError: matrix: got shape \(2, 3\)
linear.synthesize([[1, 0], [0]]) -> ShapeError: rows of unequal length
linear.synthesize([1, 0]) -> ShapeError: got shape \(2,\), wanted a square matrix
linear.synthesize([[1, 1], [1, 1]]) -> SingularMatrixError: got a singular 2 by 2 matrix
linear.synthesize(EYE, method='best') -> UnknownMethodError: method: got 'best', wanted one of auto
linear.synthesize(EYE, objective='gates') -> OptionError: objective: got 'gates', wanted one of
linear.synthesize(EYE, permutation='any') -> OptionError: permutation: got 'any'
linear.synthesize(EYE, method='pmh', section=0) -> OptionError: section: got 0, wanted 1 to 30
linear.synthesize(EYE, restarts=0) -> OptionError: restarts: got 0, wanted 1 to
linear.synthesize(EYE, steps=-1) -> OptionError: steps: got -1, wanted 0 to
linear.synthesize(EYE, method='search', reach=1) -> OptionError: on a device
linear.synthesize(EYE, method='search', device='aspen', reach=1.0) -> DtypeError: reach: got 1.0
linear.synthesize(EYE, seed=-1) -> OptionError: seed: got -1
linear.synthesize(EYE, method='greedy', width=10 ** 4, lookahead=8) -> TooLargeError: width, lookahead: got 10000 and 8 on 3 qubits, which would take .* GB of memory
linear.synthesize(EYE, method='syndrome', width=300, lookahead=4) -> TooLargeError: GB of

# devices
Device(2, [(0, 2)]) -> QubitError: edges: got qubit 2, wanted 0 to 1
Device(2, [(1, 1)]) -> QubitError: edges: got qubit 1 twice in a pair
Device.of([(0, -1)]) -> QubitError: device: got qubit -1, wanted 0 or more
Device.of("LINE:4") -> DeviceError: did you mean .line.
Device.of("grid:4") -> DeviceError: all-to-all:8$
Device.of("heavyhex:3x9") -> DeviceError: did you mean .heavy-hex.
linear.synthesize(EYE, method="PMH") -> UnknownMethodError: did you mean .pmh.
graph_state.synthesize([(0, 1), (1, 2)]) -> EntryError: entry 2, .* of edges make a graph of networkx
Device(-1, []) -> OptionError: n: got -1
Device(2, [(0, 1)], labels=['a']) -> ShapeError: labels: got 1, wanted 2
Device(2, [(0, 1)], labels=['a', 'a']) -> DeviceError: labels: got 'a' twice
Device(2, [(0, 1)], labels=[[], {}]) -> DtypeError: labels: got .* keys of a dict
Device(2, [(0, 1)], edge_errors={(0, 1): 1.5}) -> DeviceError: edge_errors: got the error rate 1.5 for \(0, 1\), wanted a rate from 0 to 1
Device(2, [(0, 1)], edge_errors={(0, 1): math.nan}) -> DeviceError: edge_errors: got the error rate nan
Device(2, [(0, 1)], edge_errors={(0, 1): 'low'}) -> DtypeError: edge_errors: got 'low', wanted a rate
Device(2, [(0, 1)], edge_errors=[0.1]) -> DtypeError: edge_errors: got \[0.1\], wanted a mapping
Device(3, [(0, 1)], edge_errors={(0, 2): 0.1}) -> DeviceError: edge_errors: got \(0, 2\), wanted an edge of the device
Device(2, [(0, 1)], edge_errors={(0, 1): 0.1, (1, 0): 0.2}) -> DeviceError: got 0.1 and 0.2 for the edge \(0, 1\)
Device(2, [(0, 1)], qubit_errors={2: 0.1}) -> QubitError: qubit_errors: got qubit 2, wanted 0 to 1
Device(2, [(0, 1)], qubit_errors=[0.1]) -> ShapeError: qubit_errors: got 1, wanted 2
Device(2, [(0, 1)], qubit_errors=[-0.1, 0]) -> DeviceError: qubit_errors: got the error rate -0.1 for 0
Device(2, [(0, 1)]).qubit('a') -> DeviceError: label: got 'a', wanted one of the labels of Device\(2 qubits
Device.grid(0, 3) -> OptionError: rows: got 0
Device.named('moon') -> DeviceError: got 'moon', wanted one of qx5
Device.of(7) -> DeviceError: device: got 7, wanted a Device
Device.from_edges([('a', 'b')]) -> DtypeError: edges: got entries of type <U1
STAR.hamiltonian_path(0) -> OptionError: seconds: got 0.0
STAR.part([0, 4]) -> QubitError: qubits: got qubit 4
linear.synthesize(np.eye(4, dtype=bool), device=Device.line(3)) -> DeviceTooSmallError: wanted at least 4 qubits
linear.synthesize(np.eye(4, dtype=bool), device=LINE_AND_DOT) -> DisconnectedDeviceError: component has 3 qubits, wanted 4
linear.synthesize(np.eye(4, dtype=bool), device=STAR, method='steiner') -> NoHamiltonianPathError: but there is none
linear.synthesize(np.eye(4, dtype=bool), device=STAR, method='pmh') -> UnknownMethodError: wanted one of auto, row_c
linear.synthesize(np.eye(4, dtype=bool), method='steiner') -> UnknownMethodError: got 'steiner', wanted one of auto

# phase
phase.synthesize({'10': 1, '011': 1}) -> ParityError: '011' of 3 bits, wanted 2
phase.synthesize({'12': 1}) -> ParityError: got the parity '12', wanted a tuple
phase.synthesize({-1: 1}) -> OptionError: polynomial: got -1
phase.synthesize({8: 1}, n=3) -> ParityError: got qubit 3, wanted 0 to 2
phase.synthesize(['110', '011']) -> DtypeError: wanted a mapping from parities to angles, or
phase.synthesize(('110', '011')) -> ParityError: got .'110', '011'., wanted a mapping
phase.synthesize((['10', '11'], {0.5, 0.25})) -> DtypeError: polynomial: got {0.*}, wanted
phase.synthesize({frozenset([0, 1]): 1}) -> ParityError: got the parity frozenset
phase.synthesize((['11'], np.ma.array([1], mask=True))) -> DtypeError: polynomial: got masked
phase.synthesize((['1', '0'], [1])) -> ParityError: got 2 parities and 1 angles
phase.synthesize({'1': '0.5'}) -> AngleError: polynomial: got '0.5', wanted a number, not text
phase.synthesize({'1': 1}, tail='undo') -> OptionError: tail: got 'undo'
phase.synthesize({'1': 1}, tail='return', permutation='free') -> OptionError: permutation: got 'free' with tail='return'
phase.synthesize({'1': 1}, device='qx5', method='greedy') -> UnknownMethodError: wanted one of auto, gray, search on a device
phase.synthesize({1: 1}, n=20000, method='search') -> TooLargeError: at most 16383
pauli.synthesize([('X' * 16385, 0.5)]) -> TooLargeError: rotations: got 16385 qubits, wanted at most 16384

# graph_state
graph_state.synthesize([[0, 1], [0, 0]]) -> ShapeError: symmetric
graph_state.synthesize([[0, 2], [2, 0]]) -> EntryError: entry 2
graph_state.synthesize([[0, 1]]) -> ShapeError: square
graph_state.synthesize([[0]], method='naive', device='qx5') -> UnknownMethodError: wanted one of auto, search on a device
graph_state.synthesize([[0]], method='decoding', tries=-1) -> OptionError: tries: got -1

# pauli
pauli.synthesize({'XA': 1.0}) -> PauliError: rotations: got 'XA'
pauli.synthesize([('-iXX', 0.1)]) -> PauliError: got '-iXX', wanted letters I, X, Y, Z
pauli.synthesize([('XX', True)]) -> DtypeError: rotations: got True, wanted a number
pauli.synthesize([('XX', 10 ** 400)]) -> AngleError: rotations: got inf
pauli.synthesize([('XX', 1e+308), ('XX', 1e+308)]) -> AngleError: rotations: got inf
pauli.synthesize([('XX', np.ma.masked)]) -> DtypeError: rotations: got masked
pauli.synthesize([('XX', 'a*b')]) -> AngleError: rotations: got the product of 'a' and 'b'
pauli.synthesize([([0.0, 1.0], 0.1)]) -> PauliError: rotations: got the code 0.0
pauli.synthesize([([True, 1], 0.1)]) -> PauliError: rotations: got the code True
pauli.synthesize([(np.array(3), 0.1)]) -> DtypeError: wanted codes 0 to 3
pauli.synthesize((np.ma.array([[1, 2]]), [0.1])) -> DtypeError: rotations: got masked_array
pauli.synthesize((['XX', 'YY'], 'ab')) -> DtypeError: got 'ab', wanted a list of angles
pauli.synthesize((['XX'], {0.5: 1})) -> DtypeError: wanted a list of angles
pauli.synthesize((['XX'], np.ma.array([0.5]))) -> DtypeError: wanted a list of angles
pauli.synthesize([('XX', 1, 2)]) -> ShapeError: wanted a string and its angle
pauli.synthesize(('XX', 0.5)) -> ShapeError: rotations: got 'XX', wanted a string
pauli.synthesize({('XX', 0.5)}) -> DtypeError: rotations: got {
pauli.synthesize('XX') -> DtypeError: rotations: got 'XX'
pauli.synthesize([], repeated='merge') -> OptionError: repeated: got 'merge', wanted 'refuse'
pauli.synthesize([], method='ladder', restarts=2) -> OptionError: restarts: not an option of method 'ladder'
pauli.synthesize({}, method=['auto']) -> UnknownMethodError: got \['auto'
pauli.synthesize([('XX', 1)], n=3) -> PauliError: got 'XX' of 2 letters, wanted 3
pauli.partition({'XX'}) -> DtypeError: strings: got {
pauli.partition(['XX', 'XXX']) -> PauliError: strings: got 'XXX' of 3 letters, wanted 2
pauli.partition(np.ma.array([[1, 2]])) -> DtypeError: strings: got masked_array
two().readout('XX') -> DtypeError: observables: got 'XX', wanted Pauli
two().absorb({'XX': 'a'}) -> DtypeError: observables: got the coefficient
two().absorb({'XX': True}) -> DtypeError: observables: got the coefficient
two().absorb({'XX': math.nan}) -> AngleError: observables: got the coefficient
two().readout(['XX']).values([[0, 2]]) -> EntryError: bits: got the entry 2
two().readout(['XX']).values([0, 1]) -> ShapeError: bits: got shape \(2,\)
two().readout(['XX']).values([[0, 1, 0]]) -> ShapeError: bits: got shape \(1, 3\), wanted \(shots, 2\)
two().readout(['XX']).values(np.ma.array([[0, 1]])) -> DtypeError: bits: got a masked array
pauli.synthesize({'XX': 1, 'X': 1}) -> PauliError: got 'X' of 1 letters, wanted 2
pauli.synthesize([((0, 4), 1.0)]) -> PauliError: got the code 4
pauli.synthesize((['XX'], [1, 2])) -> ShapeError: 1 strings, 2 angles
pauli.synthesize({}, order='any') -> OptionError: order: got 'any'
pauli.synthesize({}, tail='return', permutation='free') -> OptionError: no tail is closed
pauli.synthesize({'XX': 1}, device='line:2', permutation='free') -> OptionError: permutation: got 'free', wanted 'exact' on a device
pauli.synthesize({'XXX': 1}, device=Device.line(2)) -> DeviceTooSmallError: wanted at least 3
pauli.synthesize({'XX': 1}, method='greedy', device=Device.line(2)) -> UnknownMethodError: on a device
pauli.codiagonalize(['XI', 'ZI']) -> PauliError: got XI and ZI
pauli.codiagonalize('XX') -> DtypeError: wanted Pauli strings
pauli.synthesize({'X': 1}).readout(['X', 'Z']) -> PauliError: commute
pauli.synthesize({'X': 1}).absorb('XX') -> PauliError: wanted 1
two().readout({'XX'}) -> DtypeError: observables: got {

# routing
routing.route(T3, Device.line(2)) -> DeviceTooSmallError: at least 3
routing.route(T3, Device(4, [(0, 1), (2, 3)])) -> DisconnectedDeviceError: component has 2 qubits, wanted 3
routing.route(T3, Device.line(3), lookahead=-1) -> OptionError: lookahead: got -1
routing.route(T3, 'nowhere') -> DeviceError: wanted one of
routing.route(LONG, Device.grid(3, 3), lookahead=10 ** 6) -> TooLargeError: lookahead: got 1000000, which makes about
routing.route_ions(LONG, lookahead=40) -> TooLargeError: plans of
routing.route(T3, Device.line(3), tail='open') -> OptionError: tail: got
routing.normalize('qreg q[1]; foo q[0];') -> QasmError: foo is not known
routing.normalize(Circuit(2, [Gate('XX', (0, 1), (PI / 2, 2))])) -> GateError: wanted Clifford gates
routing.normalize(Circuit(1, [Gate('S*', 0)])) -> GateError: circuit: got
routing.route_ions(T3, shelving=0.1) -> DtypeError: pair_error
routing.route_ions(T3, shelving=(0, 10 ** 400)) -> OptionError: rate inf
routing.route_ions(T3, shelving=(0, 0, 0)) -> ShapeError: got 3 numbers
routing.normalize(T3, merge='no') -> DtypeError: merge: got 'no'
routing.route(T3, Device.line(3), steps=-1) -> OptionError: steps: got -1
routing.route(T3, Device.line(3), tail='return', steps=5) -> OptionError: steps: got 5, wanted None where no tail is closed
routing.route_ions(T3).readout(['Z']) -> PauliError: got 'Z' of 1 letters
routing.route_ions(T3, shelving=(0.1, 2)) -> OptionError: got the rate 2
routing.route(LONG, Device.grid(3, 3), lookahead=9, budget=0.01) -> UnfinishedError: larger budget

# optimize
optimize(5) -> DtypeError: circuit: got int, wanted a Circuit
optimize(T3, objective='size') -> OptionError: objective: got 'size', wanted one of 'count', 'depth', 't'
optimize(T3, exact=1) -> DtypeError: exact: got 1
optimize(T3, permutation='any') -> OptionError: permutation: got 'any'
optimize(T3, device=Device.line(2)) -> DeviceTooSmallError: at least 3
optimize(T3, device=LINE_AND_DOT.part([1, 2, 3])) -> DisconnectedDeviceError: device: got
optimize(T3, device=Device(5, [(0, 1), (1, 2), (3, 4)]), placement=(0, 1, 3)) -> DisconnectedDeviceError: placement: got \(0, 1, 3\), wanted qubits of one connected
optimize(T3, placement=(0, 1, 2)) -> OptionError: placement: not an option without a device
optimize(T3, router='sabre') -> OptionError: router: got 'sabre', wanted one of 'own', 'qiskit'
optimize(Circuit(1, [Gate('S*', 0)])) -> OptionError: gates: got S\* \[0 \] .gate 0., wanted Clifford gates and rotations
optimize(Circuit(2, [Gate('XX', (0, 1), (0.3, 2))])) -> OptionError: gates: got XX .* wanted an XX gate

# validation
graph_state.synthesize([(0, 1), (1, 2), (2, 0)]) -> ShapeError: of edges
graph_state.synthesize([(1, 0), (0, 1)]) -> GraphError: written twice
Device.of(np.ones((3, 3), int)) -> GraphError: device: got an adjacency matrix .* wanted a symmetric one
Device.from_networkx([(0, 1)]) -> DtypeError: wanted a graph of networkx
Device.from_qiskit(5) -> DeviceError: source: got 5, wanted a coupling map
Device.line(2).draw(CnotCircuit(3)) -> DeviceTooSmallError: at most 2
Device.line(2).fits([(0, 1)]) -> DtypeError: circuit: got
Gate('H', 10 ** 30) -> QubitError: qubits: got 1000.*, wanted 0 to
Gate(['H'], 0) -> GateError: name: got \['H'\], wanted one of

linear.synthesize(masked(EYE)) -> DtypeError: ^matrix: got .*masked
linear.synthesize([masked(row) for row in EYE]) -> DtypeError: ^matrix: got .*masked
graph_state.synthesize(masked([[0, 1], [1, 0]])) -> DtypeError: ^graph: got .*masked
phase.synthesize((masked([[1, 1]]), [0.5])) -> DtypeError: ^polynomial: got .*masked
CnotCircuit(2, masked([[0, 1]])) -> DtypeError: ^gates: got .*masked
Device(2, masked([[0, 1]])) -> DtypeError: ^edges: got .*masked
Gate('CNOT', masked([0, 1])) -> DtypeError: ^qubits: got .*masked
Gate('RZ', 0, masked([0.5])) -> DtypeError: ^params: got .*masked
Gate('CNOT', (0, np.True_)) -> DtypeError: ^qubits: got
CnotCircuit(2, [(0, True)]) -> DtypeError: ^gates: got
CnotCircuit(2, np.array([[False, True]])) -> DtypeError: ^gates: got
Device(2, [(0, True)]) -> DtypeError: ^edges: got
Device.line(True) -> DtypeError: ^n: got
Device.line(3).part([True, 0]) -> DtypeError: ^qubits: got
Gate('CNOT', {0, 1}) -> DtypeError: ^qubits: got
Device.line(3).part({0, 1}) -> DtypeError: ^qubits: got

# gallery
gallery.low_autocorrelation('3') -> Error: n: got '3', wanted an integer
gallery.maxcut_regular(5, 3) -> Error: degree: got 3
gallery.ising_chain(3, field='x') -> Error: field: got 'x', wanted a finite number
gallery.uccsd(4, 1) -> Error: electrons: got 1, wanted an even number
gallery.uccsd(4, 2, [1.0]) -> Error: amplitudes: got 1, wanted 3
gallery.random_parities(2, 4, 1) -> Error: terms: got 4, wanted 0 to 3
gallery.qaoa(5, 1) -> Error: n: got 5, wanted an even number
gallery.hardware_efficient(2, 1, entangler='star') -> Error: entangler: got 'star', wanted one of
gallery.phase_estimation(3, math.inf) -> Error: phase: got inf, wanted a finite angle

# core
core.GaussianElimination(2, [[1.0, 0], [0, 1]]) -> TypeError: m: got float64
core.GaussianElimination(3, np.eye(2, dtype=bool)) -> ValueError: \(2, 2\)
core.PMH_Algorithm(2, np.eye(2, dtype=bool), 0) -> ValueError: section: got 0
core.RowOperation([[1]], 0, 1, 1) -> IndexError: j: got 1, wanted 0 to 0
core.CnotCircuit(2, [(0, 2)]) -> IndexError: target: got 2
core.CnotCircuit(2).insertGate(0, 1, 1) -> IndexError: position
core.OperatorTableau(2).cnot_left(1, 1) -> ValueError: same qubit
core.OperatorTableau(1).apply_left(core.Gate('RZ', [0])) -> ValueError: no angle
core.SyndromeSynthesis(1, [[1]], 2, 40) -> ValueError: states
core.addPermutation(2, core.CnotCircuit(2), [0, 0]) -> ValueError: perm
filled(STAR).steiner_tree([0, 4]) -> IndexError: terminals: got 4, wanted 0 to 3
core.steiner_good(graph_of(STAR), [0, 1]) -> ValueError: table is not filled
filled(LINE_AND_DOT).steiner_tree([0, 3]) -> ValueError: no path joins 0 and 3
core.Graph(2).add_edge(0, 2) -> IndexError: vertex: got 2
core.steiner_gauss_ham_path(SINGULAR, graph_of(Device.line(2)), [0, 1]) -> RuntimeError: ooops: Error: Can't fill up this tree!
core.steiner_gauss_ham_path(core.Table(4), graph_of(STAR), [0, 1, 2, 3]) -> RuntimeError: Path is not hamiltonian
core.simulate_circuit([[0]], [(1, 0, 1)], 1) -> IndexError: 1
core.greedy_pauli_synth({(1, 1): 0.5}, core.OperatorTableau(3)) -> ValueError: wanted 3
core.gray_synth({(0, 0): 1.0}) -> ValueError: poly: holds the zero parity
core.gray_synth_on_graph({(1, 1): 1.0}, core.Graph(2)) -> ValueError: graph: is not connected
core.reduce_cols({0}, [], [[1]], []) -> ValueError: params: got 0, wanted 1
core.place_cnot(0, 1, [], [[1]]) -> IndexError: target: got 1
core.clifford_nnize_depth([], core.Graph(2), 0, True, True, TABLEAU, 0) -> ValueError: graph: got 2 qubits, wanted 3
core.merge_rotations([(axis, core.Parameter(1.0)) for axis in ('X', 'XX')]) -> ValueError: got a string of 2 letters
"""

STAR = zb.Device(4, [(0, 1), (0, 2), (0, 3)])


def filled(device):
    graph = graph_of(device)
    graph.set_shortest_paths()
    return graph


NAMES = {
    **vars(zb),
    "np": np,
    "math": math,
    "graph_of": graph_of,
    "filled": filled,
    "masked": lambda values: np.ma.array(values, mask=np.zeros(np.shape(values))),
    "two": lambda: zb.pauli.synthesize([("XX", 1.0)], tail="return", method="ladder"),
    "X": zb.Gate("X", 0),
    "EYE": np.eye(3, dtype=bool),
    "STAR": STAR,
    "LINE_AND_DOT": zb.Device(4, [(0, 1), (1, 2)]),
    "SINGULAR": core.Table.from_matrix([[1, 1], [1, 1]]),
    "T3": "qreg q[3]; ccx q[0],q[1],q[2];",
    "LONG": LONG_PROGRAM,
    "PI": math.pi,
    "TABLEAU": core.OperatorTableau(3),
}
ERRORS = {**vars(errors), "Error": (ValueError, TypeError)}
BUILT_IN = {each.__name__: each for each in (ValueError, TypeError, IndexError, RuntimeError)}


@pytest.mark.parametrize("case", [line for line in CASES.split("\n") if line and line[0] != "#"])
def test_refusals(case, capfd):
    call, wanted = case.split(" -> ")
    name, text = wanted.split(": ", 1)
    with pytest.raises(ERRORS.get(name) or BUILT_IN[name], match=text):
        eval(call, dict(NAMES))
    assert capfd.readouterr().err == ""
