#pragma once

/// \file
/// The value types.

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/foundations/parameter.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/foundations/weyl.h"
