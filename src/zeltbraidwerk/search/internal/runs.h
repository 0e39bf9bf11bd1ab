#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/circuit_size.h"
#include "zeltbraidwerk/search/internal/options.h"
#include "zeltbraidwerk/search/internal/orders.h"
#include "zeltbraidwerk/search/internal/run_control.h"
#include "zeltbraidwerk/search/synthesis_options.h"

/// \file
/// Runs of randomised searches, shared out over threads.
///
/// A search is a list of lanes, one per method. A lane is a row of runs, numbered from 0; the
/// circuit of a run depends on its number alone. The answer is the best circuit; ties: the first
/// run of the first lane. So it does not depend on the number of threads, unless a deadline decides
/// which runs are made.
///
/// Runs of the search engine tell how many gates and layers every circuit has at least. Of the
/// circuits that meet this bound, one of the engine is the answer before those of other methods.
/// The search is over when no run that is still to be made could be the answer instead.
namespace zelt::braidwerk::internal {

/// The circuit of a run. The runner looks at its size alone.
struct MadeCircuit {
  CircuitSize size;
  std::shared_ptr<void> circuit;  ///< of the type that the family takes it back as
};

template <class Circuit>
MadeCircuit made_circuit(const CircuitSize& size, Circuit circuit) {
  return {size, std::make_shared<Circuit>(std::move(circuit))};
}

/// The runs of one method.
struct Lane {
  std::string method;
  std::optional<int> runs;  ///< none: as many as the budget has room for
  std::function<std::optional<MadeCircuit>(int)> make;  ///< of a run by number; none: not finished
  bool proves = false;  ///< runs of the search engine, which prove bounds
  bool draws = true;    ///< its runs depend on the seed
  bool brief = false;   ///< one run alone is made on the calling thread, without a look at `stop`
  bool for_stops = false;  ///< a plain lane that is made after a stop, and not after a deadline
};

struct BestRun {
  std::size_t lane = 0;
  std::shared_ptr<void> circuit;
  synthesis::SynthesisResult result;  ///< all but the permutation

  template <class Circuit>
  Circuit& as() {
    return *static_cast<Circuit*>(circuit.get());
  }
};

/// Adds to a result what is proven of the problem, where no run of the search engine did so.
void prove(synthesis::SynthesisResult& result, const LowerBound& bound);

/// Makes the runs of all lanes, on options.jobs threads, to their end or to the deadline. Throws
/// UnfinishedError when no run found a circuit, and what a run or a function of the options throws.
///
/// `plain`, where there is one, is made when the search was stopped or its time was over before it
/// had found any circuit. It takes milliseconds. Without it, or with one for stops alone, first
/// runs go on after the deadline until there is an answer.
BestRun best_of_runs(const std::vector<Lane>& lanes, const synthesis::SynthesisOptions& options,
                     RunControl& control, const std::optional<Lane>& plain = std::nullopt);

}  // namespace zelt::braidwerk::internal
