#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"

/// \file
/// Few vectors that sum up to a given one. Only the first n bits of all vectors are looked at.

/// Number of places below n at which the two differ.
ZELTBRAIDWERK_EXPORT int HammingXOR(const BoolRow& a, const BoolRow& b, int n);

/// Adds to the syndrome the vector nearest to it, of equally near ones the first, until nothing is
/// left. Returns, ascending, the indices of the vectors added an odd number of times; empty for a
/// zero syndrome, and where the way never ends, which cannot be when every unit vector is among
/// the vectors. O(additions * vectors * n / 64).
ZELTBRAIDWERK_EXPORT std::vector<int> solve_decoding_greedy(const BoolMatrix& vectors,
                                                            BoolRow syndrome, int n);

/// The shortest answer of solve_decoding_greedy on the problem as it is and on `tries` others, in
/// each of which the bits are combined so that n vectors drawn at random become unit vectors (the
/// information sets of E. Prange, "The use of information sets in decoding cyclic codes", IRE
/// Transactions on Information Theory 8 (1962) 5). The draws come from a Mersenne Twister of the
/// call's own, seeded from one draw of the random device.
ZELTBRAIDWERK_EXPORT std::vector<int> solve_syndrome(const BoolMatrix& vectors,
                                                     const BoolRow& syndrome, int n, int tries);
