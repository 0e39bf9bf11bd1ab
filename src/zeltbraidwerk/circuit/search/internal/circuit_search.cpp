#include "zeltbraidwerk/circuit/search/internal/circuit_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "zeltbraidwerk/circuit/search/internal/circuit_problem.h"
#include "zeltbraidwerk/circuit/search/internal/piece_walk.h"
#include "zeltbraidwerk/circuit/search/internal/tournament.h"
#include "zeltbraidwerk/circuit/search/internal/tuning.h"
#include "zeltbraidwerk/pauli/search/internal/label_frame.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CircuitTuning& tuning = circuit_tuning;

/// Rounds of networks, forward and backward, of small circuits; and of walks from the best.
///
/// Outputs that may stand anywhere change nothing of it: the best circuits are closed anew as well,
/// to any order, and the shorter ones among these are only answers. So they are never longer than
/// the circuits with outputs in place. A circuit that is routed has outputs anywhere from the
/// start.
class CircuitSearch : public SearchBase<Network> {
 public:
  CircuitSearch(const CircuitProblem& problem, const CircuitTask& task, const Effort& effort)
      : SearchBase(task, effort, task.by_depth() ? Ties::first : Ties::latest),
        problem_(problem),
        circuit_task_(task) {}

  Schedule schedule() const {
    return {.first_steps = static_cast<double>(tuning.first_steps),
            .most_growths = tuning.most_doublings};
  }

  void first() {
    if (circuit_task_.routes) {
      NetworkTask task = network_task(problem_, nullptr);
      task.outputs = searched_outputs();
      start_ = search_events({problem_.rows, {}}, task, within(tuning.routing_steps));
    } else {
      start_ = problem_.given;
    }
    offer(start_, Origin::certain);
    if (are_freed()) close_freely();
  }
  bool finished() const { return shortest_.size().count == 0; }

  void round(const Round& round) {
    const bool has_tournaments = round.number > 0 && meter_.seconds_left();
    const int most_rotations =
        has_tournaments ? tuning.most_beside_tournaments : tuning.most_for_beams;
    const bool with_beams =
        problem_.rows.rows() < most_rotations && qubits() <= tuning.most_qubits_for_beams;
    if (with_beams) {
      search(forward_, round.steps, [&](std::uint64_t steps) { search_forward(steps); });
      search(backward_, round.steps, [&](std::uint64_t steps) { search_backward(steps); });
      if (round.number == tuning.open_round) search_open(round.steps / tuning.open_part);
    }
    const std::uint64_t end = meter_.steps() + (with_beams ? round.steps / 2 : 0);
    do {
      walk();
      if (task_.by_depth()) walk_by_layers();
      ++walks_;
      meter_.step();  // circuits with nothing to walk through end as well
    } while (meter_.steps() < end && !meter_.ended());
    if (with_beams && are_freed() && !meter_.ended()) search_freely(round.steps / tuning.free_part);
  }

 private:
  /// A part of the rounds gets fewer steps each time that it finds nothing better.
  template <class Part>
  void search(double& share, std::uint64_t steps, Part&& part) {
    const CircuitSize before = searched().size();
    part(static_cast<std::uint64_t>(share * static_cast<double>(steps)));
    const bool better =
        searched().size().key(task_.objective).first < before.key(task_.objective).first;
    share = better ? tuning.beam_share : std::max(share / 2, tuning.least_beam_share);
  }

  Network search_network(const CircuitProblem& problem, const Network& given, Outputs outputs,
                         std::uint64_t steps) {
    NetworkTask task = network_task(problem, &given);
    task.outputs = outputs;
    const Effort effort = within(std::min(steps, meter_.left()));
    Network found = search_events({problem.rows, {}}, task, effort);
    meter_.charge(effort.steps);
    return found;
  }
  NetworkTask network_task(const CircuitProblem& problem, const Network* given) {
    return network_task(problem, given, rng_);
  }
  NetworkTask network_task(const CircuitProblem& problem, const Network* given, Rng& rng) const {
    NetworkTask task;
    static_cast<Task&>(task) = task_;
    task.seed = rng.next();
    task.in_order = true;
    task.target = &problem.target;
    task.given = given;
    task.most_layers = most_layers();
    return task;
  }
  Effort within(std::uint64_t steps) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = steps;
    effort.on_bound = [this](const LowerBound& bound) { meter_.prove(bound); };
    return effort;
  }

  void search_forward(std::uint64_t steps) {
    if (meter_.ended()) return;
    const Network given = searched().circuit();
    offer(search_network(problem_, given, searched_outputs(), steps), lowering());
  }

  /// The inverse circuit, of which the inverse is taken.
  void search_backward(std::uint64_t steps) {
    const Network& best = searched().circuit();
    if (meter_.ended() || best.wires != in_order(qubits())) return;
    const CircuitProblem inverse = inverted_problem(best);
    const Network found = search_network(inverse, inverse.given, Outputs::in_place, steps);
    const Network back =
        network_of(events_of(qubits(), inverted(steps_of(found, inverse), problem_.rows.rows())),
                   in_order(qubits()), true);
    offer(back, lowering());
  }

  /// A network of the rotations alone, by half of the steps, after which what is left of the
  /// operator is a Clifford circuit that the other half searches for.
  void search_open(std::uint64_t steps) {
    if (meter_.ended() || task_.device != nullptr) return;
    NetworkTask task = network_task(problem_, nullptr);
    task.target = nullptr;
    task.most_layers = std::numeric_limits<int>::max();  // it is closed later
    task.outputs = Outputs::left_open;
    const std::uint64_t half = std::min(steps / 2, meter_.left());
    const Network found = search_events({problem_.rows, {}}, task, within(half));
    meter_.charge(half);
    const Network closed = closed_anew(found, Outputs::in_place, steps - half, rng_);
    meter_.charge(steps - half);
    offer(closed, Origin::derived);
  }

  /// The given circuit, its gates after the last rotation made anew with outputs anywhere.
  void close_freely() {
    const Network open = network_of(start_.events, in_order(qubits()), false);
    offer(closed_anew(open, task_.outputs, 0, free_rng_), Origin::certain);
  }
  /// Networks with outputs anywhere, from the shortest in place. With draws of its own, and not
  /// counted: what is found with outputs in place stays the same.
  void search_freely(std::uint64_t steps) {
    NetworkTask task = network_task(problem_, &shortest_.circuit(), free_rng_);
    task.outputs = task_.outputs;
    offer(search_events({problem_.rows, {}}, task, within(steps)), Origin::derived);
  }

  Network closed_anew(const Network& open, Outputs outputs, std::uint64_t steps, Rng& rng) {
    LabelFrame frame(qubits());
    for (const NetworkEvent& event : open.events) {
      if (event.row < 0) frame.play(event.gate);
    }
    NetworkTask task;
    static_cast<Task&>(task) = task_;
    task.outputs = outputs;
    task.target = &problem_.target;
    return closed(open.events, frame, task, meter_.control(), steps, rng);
  }

  CircuitProblem inverted_problem(const Network& network) const {
    return problem_of(qubits(), inverted(steps_of(network, problem_), problem_.rows.rows()));
  }

  /// Where there is time for them, tournaments. Otherwise chains of walks, each from the best of
  /// the one before and twice as long: one chain from the given circuit, the next from the best of
  /// all, which exchanges wires as well.
  void walk() {
    if (meter_.ended() || play_in_time()) return;
    const bool from_given = walks_ / tuning.walks_of_chain % 2 == 0;
    if (walks_ % tuning.walks_of_chain == 0) {
      chain_ = Smallest<Network>(Objective::count, Ties::latest);
      const Network& start = from_given ? start_ : shortest_.circuit();
      chain_.offer(start, start.size);
    }
    const Network& from = chain_.circuit();
    const Network found = walked(from, {.steps = windows_of_chain(from), .exchanges = !from_given});
    chain_.offer(found, found.size);
  }
  void walk_by_layers() {
    if (meter_.ended()) return;
    const Network& from = shallowest_.circuit();
    walked(from, {.steps = windows_of_chain(from), .by_layers = true});
  }
  std::uint64_t windows_of_chain(const Network& from) const {
    return tuning.walk_windows * from.events.size() << walks_ % tuning.walks_of_chain;
  }

  /// A tournament, in turns from the given circuit and from the best of all, of a part of the time
  /// that is left. False where that is too short for one, or is not known, or not yet how long a
  /// window takes.
  bool play_in_time() {
    constexpr double growth = tuning.tournament_growth;
    const std::optional<double> left = meter_.seconds_left();
    if (!left) return false;
    const double seconds = tuning.part_of_time * *left;
    const double first_windows =
        tuning.tournament_windows * static_cast<double>(start_.events.size());
    const int in_time = rounds_within(seconds * windows_per_second_ / first_windows, growth);
    if (in_time < tuning.least_rounds) return false;
    const int most = tuning.most_rounds + tournaments_ / 2;
    const int rounds = std::min(in_time, most);
    const double of_first = first_windows / windows_per_second_;
    // What is left of the time is for the last walk: large circuits want long ones.
    const double rest = rounds < most ? seconds - of_first * tournament_length(rounds, growth) : 0;
    const Network start = tournaments_++ % 2 == 0 ? start_ : shortest_.circuit();
    const Network found = play_tournament(
        start, rounds, [](const Network& network) { return network.size.count; },
        [&](const Network& from, int round) {
          // The colder a walk, the longer its windows take: so by the time of the walk before.
          const double time = of_first * std::pow(growth, round) + (round == rounds ? rest : 0);
          return walked(from, {.steps = static_cast<std::uint64_t>(windows_per_second_ * time),
                               .exchanges = rng_.chance(tuning.tournament_exchanges)});
        });
    chain_.offer(found, found.size);
    return true;
  }

  Network walked(const Network& from, PieceWalkOptions options) {
    if (meter_.ended()) return from;
    options.qubits = qubits();
    options.device = task_.device;
    options.most_steps = std::min(options.steps, meter_.left());
    options.seed = rng_.next();
    options.most_layers = most_layers();
    const bool limited = circuit_task_.keeps_depth &&
                         from.events.size() < static_cast<std::size_t>(tuning.most_limited);
    options.piece = options.by_layers || limited ? 0 : tuning.piece;
    options.jobs = circuit_task_.jobs;
    const double began = meter_.seconds();
    PieceWalkResult walked = walk_in_pieces(from.events, options, meter_.control());
    meter_.charge(options.most_steps);
    if (!options.by_layers) {
      windows_per_second_ =
          static_cast<double>(walked.steps) / std::max(meter_.seconds() - began, 1e-6);
    }
    Network network = network_of(std::move(walked.events), from.wires, true);
    offer(network, options.by_layers ? Origin::lowering_depth : Origin::lowering_count);
    return network;
  }

  void offer(const Network& network, Origin origin) {
    if (!incumbent_.counts(origin) || network.size.depth > most_layers()) return;
    if (circuit_task_.routes || network.wires == in_order(qubits())) {
      shortest_.offer(network, network.size);
      shallowest_.offer(network, network.size);
    }
    incumbent_.offer(network, network.size, origin);
  }

  /// The best circuit to search on from.
  const Smallest<Network>& searched() const { return task_.by_depth() ? shallowest_ : shortest_; }
  Outputs searched_outputs() const {
    return circuit_task_.routes ? task_.outputs : Outputs::in_place;
  }

  int most_layers() const {
    return circuit_task_.keeps_depth ? problem_.given.size.depth : std::numeric_limits<int>::max();
  }

  bool are_freed() const { return task_.outputs != searched_outputs(); }

  int qubits() const { return problem_.rows.qubits(); }
  Origin lowering() const {
    return task_.by_depth() ? Origin::lowering_depth : Origin::lowering_count;
  }

  const CircuitProblem& problem_;
  const CircuitTask& circuit_task_;
  Network start_;
  Smallest<Network> shortest_{Objective::count, Ties::latest};
  Smallest<Network> shallowest_{Objective::depth};
  Rng free_rng_{task_.seed, task_.stream};
  double forward_ = tuning.beam_share;
  double backward_ = tuning.beam_share;
  int walks_ = 0;
  int tournaments_ = 0;
  double windows_per_second_ = 0;  ///< of the last walk by count
  Smallest<Network> chain_{Objective::count, Ties::latest};
};

}  // namespace

CircuitFound search_circuit(int qubits, const std::vector<Step>& steps, const CircuitTask& task,
                            const Effort& effort) {
  const CircuitProblem problem = problem_of(qubits, steps);
  CircuitSearch search(problem, task, effort);
  run_search(search);
  const StopScope::Suspended to_the_end;
  const Network& best = search.incumbent().circuit();
  std::vector<Step> found = steps_of(best, problem);
  // Writing gates anew may take more of them on one qubit.
  if (!task.routes && best.size == problem.given.size && found.size() >= steps.size()) {
    return {steps, in_order(qubits), best.size};
  }
  return {std::move(found), best.wires, best.size};
}

}  // namespace zelt::braidwerk::internal
