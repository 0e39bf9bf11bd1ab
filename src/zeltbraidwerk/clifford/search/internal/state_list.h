#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_graph.h"
#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// \file
/// Gates that turn zeros into a state, or encode into a code, and what they are apart from signs:
/// after the gates, label frame[end] of the state or code is found on `end`. The k logical qubits
/// of a code come in on wires 0 to k-1, zeros on the others.

/// The plain circuit: brought to the form of a graph state, one gate per edge. Of a graph the edges
/// are its own. In the order of an edge colouring where few layers are wanted.
GateList by_graph(const StateGraph& form, Objective objective);

/// The same of a graph of many edges: wires are added to each other (graph_sorting.h).
GateList by_sums(StateGraph form);

/// The circuit that is undone by these gates, which left `group` with each generator alone on its
/// qubit.
GateList backwards(const std::vector<Gate>& apart, const StateGroup& group);

/// The circuit `begin`, of what the first `count` gates of a list make, and the others after it.
GateList continued(GateList begin, const GateList& list, int count);

/// Orders gates by their layers; by layer, how many gates there are up to its end.
std::vector<int> order_by_layers(GateList& list);

/// The same list with its wires renamed so that each qubit of the state or code comes out on its
/// own. Logical qubits then come in anywhere.
GateList in_place(GateList list);

}  // namespace zelt::braidwerk::internal
