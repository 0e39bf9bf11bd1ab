#include "zeltbraidwerk/clifford/search/internal/state_search.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/decoded_state.h"
#include "zeltbraidwerk/clifford/search/internal/peeled_code.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_device_search.h"
#include "zeltbraidwerk/clifford/search/internal/state_graph.h"
#include "zeltbraidwerk/clifford/search/internal/state_layers.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/state_problem.h"
#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/clifford/search/internal/word_beam.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"
#include "zeltbraidwerk/search/internal/driver.h"

namespace zelt::braidwerk::internal {
namespace {

/// Beams from the state or code take it apart gate by gate; walks and new beginnings of the circuit
/// in turns make what they find shorter. Where logical operators are wanted, a circuit for them is
/// put before what takes the code apart, and whole operators that have them are searched too.
class CodeSearch : public SearchByBoth<GateList> {
 public:
  CodeSearch(const Code& code, const Task& task, const Effort& effort)
      : SearchByBoth(task, effort), code_(code), wires_(code.qubits()), start_(code.stabilisers) {
    if (code.logical_qubits() == 0) {
      StateGraph form(code.stabilisers);
      prove(form.groups());
      if (takes_sums(form)) {
        offer(by_sums(std::move(form)));
      } else {
        offer(by_graph(form, task.objective));
      }
    } else {
      prove(entangled_groups(code.stabilisers));
      offer(wanted(eliminated_code(start_), code.logicals));
    }
    plain_ = shortest().count();
    if (task.start != nullptr) offer(*task.start);
  }

  static Schedule schedule() { return state_tuning.walk; }

  /// On few wires a greedy run takes milliseconds.
  void first() {
    if (finished()) return;
    const bool is_small = wires_ <= state_tuning.most_peeled;
    const bool is_light = are_light(code_.stabilisers);
    if (is_small || is_light) peel(Generators::as_given);
    const bool quick = wires_ <= state_tuning.quick_wires;
    const Effort unlimited;
    Meter own(unlimited);
    if (task_.by_depth()) take_layers(0, quick ? own : meter_);
    if (takes_parts()) return;
    const int sets = is_small || !is_light ? state_tuning.first_sets : 0;
    for (int k = 0; k < sets && (quick || !meter_.ended()); k += state_tuning.sets_at_once) {
      start_.lighten(state_tuning.sets_at_once, rng_);
    }
    if (!meter_.ended() && is_dense()) {
      takes_blocks_ = true;
      eliminate(0);
      return;
    }
    take_apart(start_, 1, quick ? own : meter_);
    if (is_small && (quick || !meter_.ended())) peel(Generators::lightened);
    // With more effort a greedy run that was cut would lead to other operators.
    if (takes_operators() && (quick || !meter_.ended())) make_operators();
    take_apart(start_, state_tuning.first_width, meter_);
  }

  bool finished() const {
    return meter_.proven() ||
           (!task_.by_depth() && incumbent_.size().count <= meter_.bound().count);
  }

  void round(const Round& round) {
    if (takes_operators()) change_gauge(round);
    const StateRewriter rewriter(window_wires(round.number), code_);
    walk(rewriter, round.steps);
    if (takes_blocks_) return eliminate(state_tuning.decoding_walks * round.steps);
    if (task_.by_depth()) {
      anneal_depth(round.number % 2 == 0 ? shortest() : shallowest(), rewriter,
                   state_tuning.anneal_walks * round.steps, rng_, meter_,
                   [this](const GateList& list, int depth) {
                     offer(list, {list.count(), depth}, Origin::certain);
                   });
      take_layers(state_tuning.layer_walks * round.steps, meter_);
      if (takes_parts()) return;
      renew_layers(state_tuning.layer_renewals
                   << std::min(round.number, state_tuning.most_renewal_doublings));
    }
    take_words_apart(state_tuning.word_walks * round.steps);
    renew(state_tuning.renewals << std::min(round.number, state_tuning.most_renewal_doublings));
    take_apart(start_, state_tuning.width << std::min(round.number, state_tuning.most_doublings),
               meter_);
  }

 private:
  void prove(const WireGroups& entangled) {
    meter_.prove(bound_of_state(code_.stabilisers, entangled.joins(), entangled.largest()));
  }

  /// Whether sums of wires make fewer gates than edges. On few wires a greedy run makes fewer
  /// still.
  bool takes_sums(const StateGraph& form) const {
    const int digits = std::bit_width(static_cast<unsigned>(wires_));
    return !task_.by_depth() && wires_ > state_tuning.quick_wires &&
           form.edges.weight() * (digits - state_tuning.summed_digits) > wires_ * wires_;
  }

  using SearchByBoth::offer;
  void offer(const GateList& list) { offer(list, size_of(list), Origin::certain); }

  /// Calls found(apart, left) with the gates of a beam and what they leave of the group.
  template <class Problem, class Found>
  void search_from(Problem problem, const StateGroup& group, int width, Meter& meter,
                   Found&& found) {
    const BeamOptions options{.width = width, .patience = state_tuning.patience};
    BeamSearch<Problem> search(problem, options, rng_, meter);
    for (const auto& [state, moves] : search.run(group)) {
      std::vector<Gate> apart;
      for (const auto& move : moves) {
        const std::span<const Gate> gates = problem.gates(move);
        apart.insert(apart.end(), gates.begin(), gates.end());
      }
      found(apart, state);
    }
  }
  void offer_backwards(const std::vector<Gate>& apart, const StateGroup& left) {
    offer(wanted(backwards(apart, left), code_.logicals));
  }
  void take_apart(const StateGroup& group, int width, Meter& meter) {
    search_from(StateProblem(rng_), group, width, meter,
                [this](const auto& apart, const auto& left) { offer_backwards(apart, left); });
  }

  /// A beam as wide as its steps pay for.
  void take_words_apart(std::uint64_t steps) {
    if (!words_ || task_.by_depth()) return;
    const auto gates = static_cast<std::uint64_t>(std::max(shortest().count(), 1));
    const std::uint64_t width =
        std::min(steps / (gates * words_->steps_of_state()), state_tuning.most_word_width);
    if (width == 0) return;
    const auto found = words_->run(static_cast<int>(width), rng_, meter_);
    if (found && found->left.left() == 0) offer_backwards(found->gates, found->left);
  }

  enum class Generators { as_given, lightened };
  /// With draws of its own, so that where it finds nothing all else is as without it.
  void peel(Generators generators) {
    const bool lightens = generators == Generators::lightened;
    Rng rng(task_.seed, ~task_.stream);
    const int tries = std::clamp(state_tuning.peeled_area / std::max(wires_ * wires_, 1),
                                 state_tuning.least_peelings, state_tuning.most_peelings);
    for (int k = 0; k < tries; ++k) {
      StateGroup group(code_.stabilisers);
      if (lightens) group.lighten(state_tuning.renewed_sets, rng);
      if (const auto found = peeled(group, plain_, rng)) offer_backwards(found->gates, found->left);
    }
  }

  /// Where few layers of a large state are wanted, beams gate by gate take too long for what they
  /// find.
  bool takes_parts() const {
    return task_.by_depth() && code_.logical_qubits() == 0 && wires_ > state_tuning.largest_part;
  }

  /// Where a large state has no light generators, beams gate by gate have nothing to begin from.
  bool is_dense() const {
    const StateTuning& tuning = state_tuning;
    if (task_.by_depth() || code_.logical_qubits() != 0) return false;
    if (wires_ < tuning.least_decoded || wires_ > tuning.most_decoded) return false;
    int letters = 0;
    for (int k = 0; k < wires_; ++k) letters += start_.weight(k);
    return letters > tuning.decoded_density * wires_ * wires_;
  }
  void eliminate(std::uint64_t steps) {
    const auto area = static_cast<std::uint64_t>(wires_) * static_cast<std::uint64_t>(wires_);
    const std::uint64_t least = area / state_tuning.first_decoding_part;
    const GateList found =
        state_by_decoding(code_.stabilisers, std::max(steps, least), rng_, meter_);
    if (found.wires() == wires_) offer(found);
  }

  /// The same by layers; of large states after layers that split them into parts.
  void take_layers(std::uint64_t steps, Meter& meter) {
    if (takes_parts()) {
      take_parts(steps, meter);
    } else {
      search_layers(start_, steps, meter,
                    [this](const auto& apart, const auto& left) { offer_backwards(apart, left); });
    }
  }
  void take_parts(std::uint64_t steps, Meter& meter) {
    StateGraph form(code_.stabilisers);
    std::vector<Gate> apart;
    const GraphInWork graph{[&] { return form.edges; },
                            [&](const GraphMove& move) { apart.push_back(form.play(move)); }};
    const auto parts = clear_by_blocks(wires_, state_tuning.largest_part, graph, rng_, meter);
    if (!parts) return;
    PauliFrame letters(wires_, wires_);
    std::size_t finished_parts = 0;
    for (const std::vector<int>& qubits : *parts) {
      const auto qubit = [&](int k) { return qubits[static_cast<std::size_t>(k)]; };
      const auto end = [&](End e) { return end_of(qubit(wire_of(e)), label_of(e)); };
      search_layers(StateGroup(form.part(qubits)), steps / parts->size(), meter,
                    [&](const std::vector<Gate>& gates, const StateGroup& left) {
                      ++finished_parts;
                      for (const Gate& gate : gates) apart.push_back({end(gate.a), end(gate.b)});
                      for (int k = 0; k < left.qubits(); ++k) {
                        letters.set_letter(qubit(k), qubit(k), letter_for(left.label(k)));
                      }
                    });
    }
    if (finished_parts == parts->size()) offer_backwards(apart, StateGroup(letters));
  }
  /// A beam as wide as its steps pay for.
  template <class Found>
  void search_layers(StateGroup group, std::uint64_t steps, Meter& meter, Found&& found) {
    group.lighten(state_tuning.renewed_sets, rng_);
    const int n = group.qubits();
    const int gates = n * n / 8 + 1;
    const auto width = steps / static_cast<std::uint64_t>(gates * state_tuning.layer_variants);
    const int most =
        static_cast<int>(std::clamp<std::uint64_t>(width, 1, state_tuning.most_layer_width));
    search_from(StateLayers(most > 1 ? state_tuning.layer_variants : 1, rng_, meter), group, most,
                meter, found);
  }

  GateList wanted(GateList encoder, const PauliFrame& logicals) {
    return logicals.rows() == 0 ? encoder : with_logicals(encoder, logicals, rng_);
  }

  /// Whether an encoder is searched as one of the operators that have the logical operators: one on
  /// a single qubit takes no gates, so there a circuit before the encoder costs nothing.
  bool takes_operators() const { return !code_.any_logicals() && code_.logical_qubits() > 1; }

  void make_operators() {
    const PauliFrame images = images_with_other_gauge(shortest(), code_.logical_qubits(), 0, rng_);
    offer(operator_of(images, 0));
    const PauliFrame given = images_as_given(code_, images);
    offer(operator_of(with_light_gauge(given, code_.logical_qubits()), 0));
  }
  /// Its shortest circuit after some steps, outputs anywhere.
  GateList operator_of(const PauliFrame& images, std::uint64_t steps) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = steps;
    const Task task{
        .objective = task_.objective, .outputs = Outputs::anywhere, .seed = rng_.next()};
    return clifford_list(images, task, effort);
  }
  void change_gauge(const Round& round) {
    const std::uint64_t steps = round.steps / state_tuning.gauge_part;
    const int changes = rng_.below(rng_.below(wires_) + 1);  // few more often than many
    const GateList found = operator_of(
        images_with_other_gauge(shortest(), code_.logical_qubits(), changes, rng_), steps);
    meter_.charge(steps);
    if (!meter_.ended()) offer(found);
  }

  void walk(StateRewriter rewriter, std::uint64_t steps) {
    GateList best = shortest();
    walk_round(best, rewriter, steps, state_tuning.cooling, rng_, meter_,
               [&](const GateList& list, bool) {
                 offer(list, size_of(list), Origin::lowering_count);
                 return false;
               });
  }

  bool renews() const { return code_.logicals.rows() <= 2 * clifford_tuning.table_wires; }

  /// Searches again for what leads up to random gates, from the best circuit on and then from what
  /// comes of it, as long as it is no longer.
  void renew(int tries) {
    if (!renews()) return;
    GateList now = shortest();
    for (int k = 0; k < tries && now.count() > 1 && !meter_.ended(); ++k) {
      const int cut = 2 + rng_.below(now.count() - 1);
      renew(now, cut, StateProblem(rng_),
            [&](const GateList& begin) { return begin.count() <= cut; });
    }
  }
  /// The same for what leads up to random layers.
  void renew_layers(int tries) {
    if (!renews()) return;
    GateList now = shallowest();
    for (int k = 0; k < tries && !meter_.ended(); ++k) {
      const std::vector<int> ends = order_by_layers(now);
      const auto most = static_cast<int>(ends.size());
      if (most < 2) return;
      const int layers = 2 + rng_.below(most - 1);
      renew(now, ends[static_cast<std::size_t>(layers - 1)],
            StateLayers(state_tuning.layer_variants, rng_, meter_),
            [&](const GateList& begin) { return depth_of(begin.gates, wires_) <= layers; });
    }
  }
  template <class Problem, class Fits>
  void renew(GateList& now, int cut, Problem problem, Fits&& fits) {
    const Code part = code_after(now, cut, code_.logical_qubits(), !code_.any_logicals());
    StateGroup group(part.stabilisers);
    group.lighten(state_tuning.renewed_sets, rng_);
    search_from(std::move(problem), group, 1, meter_, [&](const auto& apart, const auto& left) {
      GateList begin = wanted(backwards(apart, left), part.logicals);
      if (!fits(begin)) return;
      now = continued(std::move(begin), now, cut);
      offer(now);
    });
  }

  const Code& code_;
  int wires_;
  int plain_;  ///< gates of the plain circuit
  StateGroup start_;
  std::optional<WordBeam> words_ = WordBeam::of(code_.stabilisers);
  bool takes_blocks_ = false;
};

}  // namespace

bool stabilise_a_state(const PauliFrame& strings) {
  return strings.rows() == strings.qubits() && are_independent_stabilisers(strings);
}

GateList state_list(const PauliFrame& stabilisers, const Task& task, Effort& effort) {
  const Code code{stabilisers, {}};
  CodeSearch search(code, task, effort);
  run_search(search);
  effort.steps = search.meter().steps();
  return search.incumbent().circuit();
}

EncoderCircuit search_encoder(const Code& code, const Task& task, const Effort& effort) {
  // The plain circuit of many wires stays the best for long, and is written before a stop, by the
  // first of several runs: whatever the deadline, as there is no other answer then.
  const bool is_large = code.qubits() > state_tuning.most_written_late;
  const bool writes = is_large && task.stream == 0;
  std::unique_ptr<StopScope> until_written;
  if (writes && effort.control.deadline) {
    until_written = std::make_unique<StopScope>(effort.control.given_up);
  }
  CodeSearch search(code, task, effort);
  const CircuitSize size = search.incumbent().size();
  std::optional<EncoderCircuit> plain;
  if (writes) plain = encoder_circuit(search.incumbent().circuit(), code);
  until_written.reset();
  run_search(search);
  const bool is_plain = is_large && search.incumbent().size() == size;
  if (is_plain && !plain) throw Stopped();  // the first run has it
  if (is_plain) return *std::move(plain);
  const StopScope::Suspended to_the_end;
  return encoder_circuit(search.incumbent().circuit(), code);
}

CliffordCircuit search_state(const PauliFrame& stabilisers, const Task& task,
                             const Effort& effort) {
  if (task.device != nullptr) return search_state_on_device(stabilisers, task, effort);
  return search_encoder({stabilisers, {}}, task, effort);
}

}  // namespace zelt::braidwerk::internal
