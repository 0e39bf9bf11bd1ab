#pragma once

/// \file
/// CNOT circuits for invertible Boolean matrices.

#include "zeltbraidwerk/linear/gauss.h"
#include "zeltbraidwerk/linear/pmh.h"
