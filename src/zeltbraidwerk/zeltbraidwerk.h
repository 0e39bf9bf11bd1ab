#pragma once

/// \file
/// The whole library.

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/foundations/signal_handler.h"
#include "zeltbraidwerk/foundations/structures.h"
#include "zeltbraidwerk/graphs/blossom.h"
#include "zeltbraidwerk/linear/synthesis.h"
