#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/search/objective.h"
#include "zeltbraidwerk/search/search_point.h"

/// \file
/// What the synthesize functions of all families have in common: options, results, errors.
///
/// A method is run a number of times. Each run has a number and draws from a stream of its own, so
/// its circuit depends on the seed and on its number alone. The result is the best circuit of all
/// runs; ties: the first run of the first method. So it does not depend on the number of threads,
/// unless a budget decides which runs are made.
///
/// All of these functions throw std::invalid_argument for options that do not fit; the text names
/// the option, what came and what is wanted.

namespace structures {
struct Graph;
}

namespace synthesis {

/// A circuit that was found before, of CNOTs and gates on one qubit.
struct KnownCircuit {
  std::vector<structures::Gate> gates;  ///< in their order in time
  std::vector<int> permutation;         ///< output q is on wire permutation[q]
};

/// The options of all families. Each family adds its own.
struct SynthesisOptions {
  std::string method = "auto";  ///< one of the family's methods; "auto" takes the best of several
  Objective objective = Objective::count;  ///< what is to become small
  Outputs outputs = Outputs::in_place;     ///< where outputs may end
  /// With a device every gate on two qubits is on one of its edges. It is connected and has one
  /// vertex per qubit. The caller keeps it alive during the call.
  const structures::Graph* device = nullptr;
  std::uint64_t seed = 0;  ///< the same seed gives the same circuit, but for budgets

  /// Runs of each method, at least 1. Not given: as many as the method is worth, or as the budget
  /// has room for.
  std::optional<int> restarts;
  std::optional<double> budget;  ///< seconds, after which the search ends
  /// Steps of a run of the method "search", of about a microsecond or two. Not given: to the end of
  /// the budget, or a number that takes about a second.
  std::optional<std::uint64_t> steps;
  /// A circuit of the same operation: "search" goes on from it, and finds no larger one. Its gates
  /// are on the edges of the device; of one for a phase polynomial only the CNOTs count. Not for
  /// encoders.
  std::optional<KnownCircuit> start;
  int jobs = 1;  ///< threads, up to 1024; 0: one per core

  /// Called whenever the best value of the objective falls, from the calling thread.
  std::function<void(const SearchPoint&)> progress;
  /// Asked about every 10 ms, from the calling thread; true ends the search with its best circuit
  /// so far. An exception of either function ends the search and reaches the caller.
  std::function<bool()> stop;
};

/// How a circuit came about. Each family adds the circuit itself.
struct SynthesisResult {
  std::string method;                      ///< the one that found the circuit
  Objective objective = Objective::count;  ///< as in the options
  std::vector<int> permutation;            ///< output q is on wire permutation[q]
  int count = 0;                           ///< gates on two qubits
  int depth = 0;                           ///< layers of these
  std::optional<std::uint64_t> seed;       ///< none where no run made a draw
  int runs = 0;                            ///< of all methods, but what came after a proven answer
  double seconds = 0;                      ///< that the call took
  std::vector<SearchPoint> trace;          ///< moments at which the best circuit became better
  /// Proven: no circuit for what was asked has fewer gates on two qubits, none has fewer layers of
  /// them. Circuits here are those that the family makes, with outputs where the options let them
  /// be, on the edges of the device where there is one. 0 where nothing is known.
  /// @{
  int least_count = 0;
  int least_depth = 0;
  /// @}
  bool stopped = false;  ///< by the function `stop`, before the search had come to its end

  /// What is proven of the objective: least_count or least_depth. 0 where nothing is known.
  int bound() const { return objective == Objective::depth ? least_depth : least_count; }
  /// Whether no circuit is better by the objective, proven.
  bool is_optimal() const { return (objective == Objective::depth ? depth : count) <= bound(); }
};

/// The search ended, by its budget, its stop function or a cap on its operations, before any run
/// had found a circuit.
class UnfinishedError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Options that ask for more memory than there is, or more qubits than a search has room for.
class TooLargeError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

}  // namespace synthesis
