#pragma once

/// \file
/// CNOT circuits for invertible Boolean matrices.

#include "zeltbraidwerk/linear/divide_and_conquer.h"
#include "zeltbraidwerk/linear/gauss.h"
#include "zeltbraidwerk/linear/greedy_escape.h"
#include "zeltbraidwerk/linear/greedy_inverse.h"
#include "zeltbraidwerk/linear/greedy_log.h"
#include "zeltbraidwerk/linear/greedy_ones.h"
#include "zeltbraidwerk/linear/pathfinding.h"
#include "zeltbraidwerk/linear/pmh.h"
#include "zeltbraidwerk/linear/syndrome_decoding.h"
#include "zeltbraidwerk/linear/syndrome_synthesis.h"
#include "zeltbraidwerk/linear/synthesize.h"
#include "zeltbraidwerk/linear/triangular_pairs.h"
