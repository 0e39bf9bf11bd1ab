"""Measures the energy of a small ansatz with and without the Clifford gates after its rotations.

The circuit of an ansatz ends with Clifford gates that undo the basis changes of the synthesis. With
tail="return" they are left out, and the Hamiltonian, or the basis change before the measurement,
accounts for them instead. Prints the expectation values of all three ways, which are equal.
"""

import numpy as np

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

# H2 in a minimal basis at its bond length: the terms that the ansatz changes.
HAMILTONIAN = {
    "ZIII": 0.171, "IZII": 0.171, "IIZI": -0.223, "IIIZ": -0.223, "ZZII": 0.169, "IIZZ": 0.174,
    "ZIZI": 0.121, "IZIZ": 0.121, "ZIIZ": 0.166, "IZZI": 0.166,
    "XXYY": -0.045, "YYXX": -0.045, "XYYX": 0.045, "YXXY": 0.045,
}  # fmt: skip
LETTERS = {"I": np.eye(2), "X": np.eye(2)[::-1], "Y": np.diag([-1j, 1j])[:, ::-1]}
LETTERS["Z"] = np.diag([1, -1])


def main() -> None:
    ansatz = list(gallery.uccsd(4, 2, [0.02, -0.03, -0.11]).items())  # a product, in this order
    closed = zb.pauli.synthesize(ansatz, method="greedy", seed=1)
    left_open = zb.pauli.synthesize(ansatz, method="greedy", tail="return", seed=1)
    # The Hartree-Fock state: orbitals 0 and 1 filled.
    filled = zb.Circuit(4, [zb.Gate("X", 0), zb.Gate("X", 1)])

    print(f"tail closed:                  {closed.count} CNOTs")
    print(f"  energy                      {energy(filled + closed.circuit, HAMILTONIAN):.9f}")
    print(f"tail returned:                {left_open.count} CNOTs")
    absorbed = left_open.absorb(HAMILTONIAN)
    print(f"  energy, absorbed            {energy(filled + left_open.circuit, absorbed):.9f}")

    # One basis change per group of commuting strings; the readout turns bits into values.
    total = 0.0
    bits = np.array([[k >> (3 - q) & 1 for q in range(4)] for k in range(16)])
    for group in zb.pauli.partition(HAMILTONIAN):
        readout = left_open.readout(group)
        odds = np.abs(state(filled + left_open.circuit + readout.circuit)) ** 2
        total += odds @ readout.values(bits) @ [HAMILTONIAN[pauli] for pauli in group]
    print(f"  energy, by readouts         {total:.9f}")


def energy(circuit: zb.Circuit, observable: dict[str, float]) -> float:
    vector = state(circuit)
    return sum(
        coefficient * (vector.conj() @ matrix(pauli) @ vector).real
        for pauli, coefficient in observable.items()
    )


def state(circuit: zb.Circuit) -> np.ndarray:
    vector = np.eye(2**circuit.n, dtype=complex)[0]
    for gate in circuit:
        vector = apply(gate, vector, circuit.n)
    return vector


def apply(gate: zb.Gate, vector: np.ndarray, n: int) -> np.ndarray:
    def on(**letters: str) -> np.ndarray:
        return matrix("".join(letters.get(f"q{q}", "I") for q in range(n))) @ vector

    a, b = gate.qubits[0], gate.qubits[-1]
    if gate.name in ("RX", "RY", "RZ", "PH"):
        half = float(gate.params[0]) / 2
        axis = "Z" if gate.diag else gate.name[1]
        return np.cos(half) * vector - 1j * np.sin(half) * on(**{f"q{a}": axis})
    if gate.name == "CNOT":
        both = on(**{f"q{a}": "Z", f"q{b}": "X"})
        return (vector + on(**{f"q{a}": "Z"}) + on(**{f"q{b}": "X"}) - both) / 2
    if gate.name == "H":
        return (on(**{f"q{a}": "X"}) + on(**{f"q{a}": "Z"})) / np.sqrt(2)
    return on(**{f"q{a}": gate.name})


def matrix(pauli: str) -> np.ndarray:
    product = np.eye(1)
    for letter in pauli:
        product = np.kron(product, LETTERS[letter])
    return product


if __name__ == "__main__":
    main()
