"""Published numbers of two-qubit gates of the circuits in bench/circuits.

N: Y. Nam et al., npj Quantum Information 4, 23 (2018), "heavy", counted in the circuits that they
published. P: the results that the authors of PhasePoly (2025) publish with their program. Both keep
every output in its place.
"""

HEAVY = {
    "tof_3": 14, "tof_4": 22, "tof_5": 30, "tof_10": 70, "mod_mult_55": 40, "csla_mux_3": 70,
    "rc_adder_6": 71, "mod_red_21": 77, "csum_mux_9": 140, "gf2^6_mult": 221, "gf2^7_mult": 300,
    "gf2^8_mult": 405, "gf2^9_mult": 494, "gf2^10_mult": 609, "gf2^16_mult": 1581,
    "gf2^32_mult": 6299,
}  # fmt: skip
PHASE_POLY = {
    "barenco_tof_3": 16, "barenco_tof_4": 30, "barenco_tof_5": 44, "barenco_tof_10": 114,
    "mod5_4": 17, "vbe_adder_3": 36, "gf2^4_mult": 90, "gf2^5_mult": 144, "hwb6": 96,
    "qcla_com_7": 120, "qcla_adder_10": 175, "ham15-low": 204, "grover_5": 202, "qcla_mod_7": 287,
    "adder_8": 257, "ham15-med": 328, "mod_adder_1024": 1220, "ham15-high": 1350,
}  # fmt: skip
# Other tables (GUOQ, QUESO, VOQC and later ones) give all gates of a circuit in one number. Without
# its rotations and H gates that leaves these; they may be off by a few.
ESTIMATES = {
    "tof_3": 12, "tof_4": 18, "mod5_4": 13, "csla_mux_3": 62, "gf2^4_mult": 87, "gf2^5_mult": 132,
    "gf2^6_mult": 198, "gf2^7_mult": 257, "gf2^8_mult": 363, "gf2^9_mult": 436,
    "gf2^10_mult": 571,
}  # fmt: skip


def published(name: str) -> str:
    """The best number with its source, and an estimate where that is lower; "-" for none."""
    found = [f"{table[name]} {letter}" for table, letter in ((HEAVY, "N"), (PHASE_POLY, "P"))
             if name in table]  # fmt: skip
    if name in ESTIMATES:
        found.append(f"~{ESTIMATES[name]}")
    return ", ".join(found) or "-"
