#pragma once

/// \file
/// The whole library.

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/foundations/signal_handler.h"
#include "zeltbraidwerk/foundations/structures.h"
#include "zeltbraidwerk/graph_state/graph_state.h"
#include "zeltbraidwerk/graph_state/parities.h"
#include "zeltbraidwerk/graph_state/syndrome.h"
#include "zeltbraidwerk/graph_state/synthesis.h"
#include "zeltbraidwerk/graphs/blossom.h"
#include "zeltbraidwerk/graphs/descending_tree.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/graphs/routines.h"
#include "zeltbraidwerk/graphs/shortest_paths.h"
#include "zeltbraidwerk/graphs/steiner.h"
#include "zeltbraidwerk/graphs/steiner_gauss.h"
#include "zeltbraidwerk/linear/synthesis.h"
#include "zeltbraidwerk/pauli/codiag.h"
#include "zeltbraidwerk/pauli/commuting.h"
#include "zeltbraidwerk/pauli/graph_state_codiag.h"
#include "zeltbraidwerk/pauli/pauli_table.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/gray_synth_on_graph.h"
