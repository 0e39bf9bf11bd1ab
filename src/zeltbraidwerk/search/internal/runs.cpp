#include "zeltbraidwerk/search/internal/runs.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <exception>
#include <limits>
#include <mutex>
#include <thread>
#include <tuple>

#include "zeltbraidwerk/foundations/internal/unforkable.h"

namespace zelt::braidwerk::internal {

using synthesis::SynthesisOptions;

namespace {

constexpr std::chrono::milliseconds most_after_stop(80);  ///< for a plain circuit
constexpr std::chrono::milliseconds poll_interval(10);    ///< of the calling thread
/// A lane whose best is so much longer than the best of all gets half its time.
constexpr double half_share = 0.05;

/// The moments at which the best circuit became better; reports them to `progress`.
class Trace {
 public:
  explicit Trace(const SynthesisOptions& options) : options_(options) {}

  void add(const SearchPoint& point) {
    const auto key = CircuitSize{point.count, point.depth}.key(options_.objective);
    if (best_ && *best_ <= key) return;
    const bool objective_fell = !best_ || key.first < best_->first;
    best_ = key;
    points_.push_back(point);
    if (objective_fell && options_.progress) options_.progress(point);
  }

  std::vector<SearchPoint> take() { return std::move(points_); }

 private:
  const SynthesisOptions& options_;
  std::optional<std::pair<int, int>> best_;
  std::vector<SearchPoint> points_;
};

/// One search: which run is made next, and which was the best. Workers make the runs; the calling
/// thread collects what they report, and tells them when to stop.
class Runner {
 public:
  Runner(const std::vector<Lane>& lanes, const SynthesisOptions& options, RunControl& control,
         const std::optional<Lane>& plain)
      : options_(options), control_(control), plain_(plain), trace_(options) {
    for (const Lane& lane : lanes) lanes_.push_back({&lane});
  }

  void work() {
    if (lanes_.size() == 1 && lanes_[0].lane->brief) {
      make({0, 0});
    } else {
      std::vector<std::jthread> workers;
      const StopAtExit stop{*this};  // before the workers are joined
      busy_ = most_workers();
      for (int k = busy_; k > 0; --k) workers.emplace_back([this] { make_runs(); });
      serve();
    }
    if (failure_) std::rethrow_exception(failure_);
    if (!best_ && plain_ && (stopped_ || (serves_deadlines() && control_.ended()))) make_plainly();
    add_news();
  }

  BestRun result() {
    if (!best_) {
      throw synthesis::UnfinishedError(
          "none of " + std::to_string(runs_) + " runs found a circuit in " +
          shown(control_.seconds()) +
          " s; wanted a larger budget, more restarts or another method");
    }
    BestRun run{best_->at.lane, std::move(best_->made.circuit), {}};
    synthesis::SynthesisResult& result = run.result;
    result.method = lanes_[run.lane].lane->method;
    result.objective = options_.objective;
    result.count = best_->made.size.count;
    result.depth = best_->made.size.depth;
    const auto draws = [](const LaneState& state) { return state.lane->draws; };
    if (std::ranges::any_of(lanes_, draws)) result.seed = options_.seed;
    result.runs = runs_that_count();
    result.seconds = control_.seconds();
    result.trace = trace_.take();
    result.least_count = control_.bound().count;
    result.least_depth = control_.bound().depth;
    result.stopped = stopped_;
    return run;
  }

 private:
  /// After a stop the caller waits, so that a large input gets no plain circuit then.
  void make_plainly() {
    Control brief;
    if (stopped_) brief.deadline = Clock::now() + most_after_stop;
    try {
      const StopScope in_time(brief, true);
      std::optional<MadeCircuit> made = plain_->make(0);
      lanes_.push_back({&*plain_});
      ++runs_;
      finish({lanes_.size() - 1, 0}, 0, std::move(made));
    } catch (const Stopped&) {
      // There is no circuit.
    }
  }

  using Clock = Control::Clock;
  using Key = std::pair<int, int>;

  struct Place {
    std::size_t lane;
    int run;
  };
  struct LaneState {
    const Lane* lane;
    int next = 0;        ///< the run that is made next
    int made = 0;        ///< runs that have ended
    double seconds = 0;  ///< that they took
    std::optional<int> best = {};
  };
  struct Best {
    Place at;
    MadeCircuit made;
  };
  struct StopAtExit {
    Runner& runner;
    ~StopAtExit() { runner.stop(); }
  };

  static std::string shown(double seconds) {
    std::string text = std::to_string(seconds);
    return text.substr(0, text.find('.') + 4);
  }

  int most_workers() const {
    long most = 0;
    for (const LaneState& state : lanes_) {
      most += state.lane->runs.value_or(std::numeric_limits<int>::max());
    }
    return static_cast<int>(std::min<long>(most, threads(options_)));
  }

  // --- workers --------------------------------------------------------------------------------

  void make_runs() {
    std::unique_lock lock(mutex_);
    while (const std::optional<std::size_t> lane = next_lane()) {
      const Place place{*lane, lanes_[*lane].next++};
      running_.push_back(place);
      lock.unlock();
      make(place);
      lock.lock();
      std::erase_if(running_, [&](const Place& other) {
        return other.lane == place.lane && other.run == place.run;
      });
      changed_.notify_one();
    }
    --busy_;
    changed_.notify_one();
  }

  void make(const Place& place) {
    const auto start = Clock::now();
    std::optional<MadeCircuit> made;
    std::exception_ptr failure;
    try {
      const StopScope scope(control_.stop_flag());
      made = lanes_[place.lane].lane->make(place.run);
    } catch (const Stopped&) {
      // As a run that has found nothing.
    } catch (...) {
      failure = std::current_exception();
    }
    const std::chrono::duration<double> took = Clock::now() - start;
    const std::lock_guard lock(mutex_);
    ++runs_;
    if (failure && !failure_) failure_ = failure;
    finish(place, took.count(), std::move(made));
  }

  void finish(const Place& place, double seconds, std::optional<MadeCircuit> made) {
    LaneState& state = lanes_[place.lane];
    ++state.made;
    state.seconds += seconds;
    if (!made) return;
    const Key key = made->size.key(options_.objective);
    state.best = std::min(state.best.value_or(key.first), key.first);
    if (best_ && best_rank() <= rank(key, place)) return;
    if (!best_ || key < best_key()) {
      control_.report({.count = made->size.count, .depth = made->size.depth});
    }
    best_ = {place, std::move(*made)};
  }

  // --- which run is next, and which is the best -----------------------------------------------

  std::optional<std::size_t> next_lane() {
    if (stopped_ || failure_) return std::nullopt;
    const bool ended = control_.ended();
    std::optional<std::size_t> least;
    for (std::size_t k = 0; k < lanes_.size(); ++k) {
      if (!is_open(lanes_[k], ended) || !may_win({k, lanes_[k].next})) continue;
      if (!least || share(lanes_[k]) < share(lanes_[*least])) least = k;
    }
    return least;
  }

  /// After the end, first runs are made until there is an answer.
  bool is_open(const LaneState& state, bool ended) {
    if (ended) return state.next == 0 && !has_answer();
    return !state.lane->runs || state.next < *state.lane->runs;
  }

  /// Seconds spent, counted the higher the further the best of the lane is from the best of all.
  double share(const LaneState& state) const {
    // A run that is being made takes as long as those before.
    const double mean = state.made > 0 ? state.seconds / state.made : 0.02;
    const double spent = state.seconds + mean * (state.next - state.made);
    if (!best_ || state.next == 0) return spent;
    const double excess =
        state.best ? static_cast<double>(*state.best) / std::max(best_key().first, 1) - 1 : 1;
    return spent * std::exp2(std::min(excess / half_share, 30.0));
  }

  using Rank = std::tuple<Key, bool, std::size_t, int>;

  /// The least rank is the answer. The bound is known from the first circuit of the engine on.
  Rank rank(const Key& key, const Place& place) {
    return {key, !(lanes_[place.lane].lane->proves && meets_bound(key)), place.lane, place.run};
  }
  Rank best_rank() { return rank(best_key(), best_->at); }
  Key best_key() const { return best_->made.size.key(options_.objective); }

  bool meets_bound(const Key& key) {
    const LowerBound bound = control_.bound();
    return key <= CircuitSize{bound.count, bound.depth}.key(options_.objective);
  }

  /// Where the answer meets the bound, those that were made beside the ones that could have been
  /// the answer are left out: how many there are depends on the threads.
  int runs_that_count() {
    if (stopped_ || options_.budget || !meets_bound(best_key())) return runs_;
    int count = 0;
    for (std::size_t k = 0; k < lanes_.size(); ++k) {
      const auto may_be = [&](int run) { return rank(best_key(), {k, run}) <= best_rank(); };
      for (int run = 0; run < lanes_[k].lane->runs.value_or(lanes_[k].made) && may_be(run); ++run)
        ++count;
    }
    return count;
  }

  /// Whether a run of a lane, or a later one, can still be the answer.
  bool may_win(const Place& place) {
    if (!best_ || !meets_bound(best_key())) return true;
    return rank(best_key(), place) < best_rank();
  }

  /// Whether nothing that is being made, or would be made next, can be the answer.
  bool is_decided() {
    return std::ranges::none_of(running_, [&](const Place& p) { return may_win(p); }) &&
           !next_lane();
  }

  /// Whether the budget is spent and there is an answer: what runs look at no clock for ends too.
  bool is_over() const { return control_.ended() && has_answer(); }
  bool has_answer() const { return control_.has_found() || serves_deadlines(); }
  bool serves_deadlines() const { return plain_ && !plain_->for_stops; }

  // --- the calling thread ---------------------------------------------------------------------

  void serve() {
    auto asked = Clock::now();
    std::unique_lock lock(mutex_);
    while (busy_ > 0) {
      changed_.wait_for(lock, poll_interval);
      if (failure_ || is_over() || is_decided()) control_.stop();
      lock.unlock();
      add_news();
      if (options_.stop && Clock::now() - asked >= poll_interval) {
        asked = Clock::now();
        if (options_.stop()) stop();
      }
      lock.lock();
    }
  }

  /// Without effect when all workers have ended.
  void stop() {
    const std::lock_guard lock(mutex_);
    if (busy_ == 0) return;
    stopped_ = true;
    control_.give_up();
  }

  void add_news() {
    for (const SearchPoint& point : control_.news()) trace_.add(point);
  }

  const SynthesisOptions& options_;
  RunControl& control_;
  const std::optional<Lane>& plain_;
  Trace trace_;

  std::mutex mutex_;  // of what follows
  std::condition_variable changed_;
  std::vector<LaneState> lanes_;
  std::vector<Place> running_;
  std::optional<Best> best_;
  int busy_ = 0;  // workers that have not ended
  int runs_ = 0;
  bool stopped_ = false;
  std::exception_ptr failure_;
};

}  // namespace

void prove(synthesis::SynthesisResult& result, const LowerBound& bound) {
  result.least_count = std::max(result.least_count, bound.count);
  result.least_depth = std::max(result.least_depth, bound.depth);
}

BestRun best_of_runs(const std::vector<Lane>& lanes, const SynthesisOptions& options,
                     RunControl& control, const std::optional<Lane>& plain) {
  if (is_forked_amid_a_build()) {
    throw synthesis::UnfinishedError(
        "this process was forked while a thread of its parent built a table, which will never be "
        "finished here; wanted a process that is spawned, or forked before the parent searches");
  }
  Runner runner(lanes, options, control, plain);
  runner.work();
  return runner.result();
}

}  // namespace zelt::braidwerk::internal
