#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What the runs of one call share: its clock, its deadline, its stop flag, and what they report.
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
  void give_up() { given_up_ = stop_ = true; }
  const std::atomic<bool>* stop_flag() const { return &stop_; }
  bool ended() const { return control(0).stop_requested(); }
  double seconds() const;  ///< since the call began

  void report(SearchPoint point);                ///< a circuit was found, now
  std::vector<SearchPoint> news();               ///< what was reported since the last call
  bool has_found() const { return has_found_; }  ///< whether anything was ever reported
  LowerBound bound();                            ///< what has been proven so far

 private:
  Control::Clock::time_point start_ = Control::Clock::now();
  std::optional<Control::Clock::time_point> deadline_;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> given_up_ = false;
  std::atomic<bool> has_found_ = false;
  std::mutex mutex_;
  std::vector<SearchPoint> points_;
  LowerBound bound_;
};

}  // namespace zelt::braidwerk::internal
