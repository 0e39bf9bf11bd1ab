#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// \file
/// Gates that turn zeros into a state, and what they are apart from signs: after the gates, label
/// frame[end] of the state is found on `end`.

/// The plain circuit: brought to the form of a graph state, one gate per edge. Of a graph the edges
/// are its own.
GateList by_graph(const PauliFrame& stabilisers);

/// The circuit that is undone by these gates, which left `group` with each generator alone on its
/// qubit.
GateList backwards(const std::vector<Gate>& apart, const StateGroup& group);

/// The stabilisers, without signs, of what the first `count` gates make of zeros.
PauliFrame stabilisers_after(const GateList& list, int count);

/// The circuit `begin`, of what the first `count` gates of a list make, and the others after it.
GateList continued(GateList begin, const GateList& list, int count);

/// The same list with its wires renamed so that each qubit of the state comes out on its own: the
/// zeros that come in do not tell them apart.
GateList in_place(GateList list);

/// The circuit of a list of a state in place, of CNOTs and gates on one qubit, with X gates first
/// that give the stabilisers their signs.
std::vector<structures::Gate> preparation(const GateList& list, const PauliFrame& stabilisers);

}  // namespace zelt::braidwerk::internal
