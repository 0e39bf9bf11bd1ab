#pragma once

#include <any>
#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"
#include "zeltbraidwerk/search/internal/effort.h"
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

/// What the runs of one call share: its clock, its deadline, its stop flag, and what they tell.
class RunControl {
 public:
  explicit RunControl(std::optional<double> budget);

  /// For the kernels of a run on n qubits.
  Control control(int n) const;
  /// Run 0 of a quick method goes to its end whatever the deadline, so that there is an answer.
  Control control_of_run(int n, int run) const;
  /// For a run of the search engine. Without steps it goes on to the deadline, or until stopped.
  Effort effort(std::optional<std::uint64_t> steps);

  void stop() { stop_ = true; }
  bool ended() const { return control(0).stop_requested(); }
  double seconds() const;  ///< since the call began

  void tell(SearchPoint point);     ///< a circuit was found, now
  std::vector<SearchPoint> news();  ///< what was told since the last call
  LowerBound bound();               ///< what has been proven so far

 private:
  Control::Clock::time_point start_ = Control::Clock::now();
  std::optional<Control::Clock::time_point> deadline_;
  std::atomic<bool> stop_ = false;
  std::mutex mutex_;
  std::vector<SearchPoint> points_;
  LowerBound bound_;
};

/// The circuit of a run. The runner looks at its size alone.
struct MadeCircuit {
  CircuitSize size;
  std::any circuit;
};

/// The runs of one method.
struct Lane {
  std::string method;
  std::optional<int> runs;  ///< none: as many as the budget has room for
  std::function<std::optional<MadeCircuit>(int)> make;  ///< of a run by number; none: not finished
  bool proves = false;  ///< runs of the search engine, which prove bounds
  bool draws = true;    ///< its runs depend on the seed
  bool brief = false;   ///< one run alone is made on the calling thread, without a look at `stop`
};

struct BestRun {
  std::size_t lane = 0;
  std::any circuit;
  synthesis::SynthesisResult result;  ///< all but the permutation

  template <class Circuit>
  Circuit& as() {
    return *std::any_cast<Circuit>(&circuit);
  }
};

/// Makes the runs of all lanes, on options.jobs threads, to their end or to the deadline. Throws
/// UnfinishedError when no run found a circuit, and what a run or a function of the options throws.
BestRun best_of_runs(const std::vector<Lane>& lanes, const synthesis::SynthesisOptions& options,
                     RunControl& control);

/// Throws std::invalid_argument for efforts out of their range.
void check_effort(const synthesis::SynthesisOptions& options);

/// Throws std::invalid_argument unless the options' method is in the list.
void check_method(const std::string& method, const std::vector<std::string>& known, bool on_device);

/// An option that not every method takes.
struct OptionOfSome {
  const char* name;
  bool given;
  std::vector<std::string> takers;
};
/// Throws std::invalid_argument when one is given that the method does not take.
void check_options_of(const std::string& method, const std::vector<OptionOfSome>& options);

/// The same for the options that only methods take that search for long.
void check_search_options(const synthesis::SynthesisOptions& options,
                          const std::vector<std::string>& takers);

constexpr std::uint64_t default_search_steps = 200'000;

/// Steps of a run of the search engine; none: to the end of the budget.
std::optional<std::uint64_t> steps_of_search(const synthesis::SynthesisOptions& options);
/// Runs of the search engine. To the end of a budget, one per thread.
int runs_of_search(const synthesis::SynthesisOptions& options);
int threads(const synthesis::SynthesisOptions& options);

/// 0 to n-1 in an order that was drawn.
std::vector<int> shuffled(int n, const Draw& draw);
/// 0 to n-1.
std::vector<int> in_order(int n);

}  // namespace zelt::braidwerk::internal
