#include "zeltbraidwerk/clifford/encoder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/clifford/internal/synthesize.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/search/internal/options.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double bytes_of_run = 150;  // over the square of the qubits

}  // namespace

FoundCliffords synthesize_encoder(const Code& code, const synthesis::EncoderOptions& options) {
  check_effort(options);
  refuse_any_start(options);
  check_method(options.method, synthesis::state_methods(), false);
  check_encoder_options(options);
  check_wires("stabilisers", code.qubits());
  check_search_memory("stabilisers", code.qubits(), options, bytes_of_run);
  if (!are_independent_stabilisers(code.stabilisers)) {
    throw std::invalid_argument(
        "stabilisers: got strings that do not commute or are not independent, wanted some that "
        "are");
  }
  if (!code.any_logicals() && !are_logicals_of(code.logicals, code.stabilisers)) {
    throw std::invalid_argument(
        "logicals: got others, wanted images of X, then Z, on all logical qubits that commute with "
        "the stabilisers and with each other as these do");
  }
  RunControl control(options.budget);
  const auto make = [&](int run) -> std::optional<MadeCircuit> {
    const Task task{.objective = options.objective,
                    .seed = options.seed,
                    .stream = static_cast<std::uint64_t>(run)};
    EncoderCircuit found =
        search_encoder(code, task, control.effort(steps_for_state(code.stabilisers, options)));
    const CircuitSize size = found.size;
    return made_circuit(size, std::move(found));
  };
  const Lane lane{
      .method = "search", .runs = runs_of_search(options), .make = make, .proves = true};
  BestRun best = best_of_runs({lane}, options, control);
  auto& found = best.as<EncoderCircuit>();
  FoundCliffords result{std::move(best.result), std::move(found.gates),
                        std::move(found.logical_wires)};
  result.permutation = std::move(found.wires);
  return result;
}

namespace {

PauliFrame packed(const char* name, const std::vector<std::vector<unsigned char>>& strings,
                  const std::vector<bool>& minus, std::size_t qubits) {
  const bool fits = std::ranges::all_of(strings, [&](const auto& string) {
    return string.size() == qubits && std::ranges::all_of(string, [](int c) { return c <= 3; });
  });
  if (!fits || minus.size() != strings.size()) {
    throw std::invalid_argument(std::string(name) + ": got others, wanted strings of " +
                                std::to_string(qubits) + " codes 0 to 3, and as many signs");
  }
  PauliFrame frame = PauliFrame::pack(strings, static_cast<int>(qubits));
  for (int r = 0; r < frame.rows(); ++r) frame.set_negative(r, minus[static_cast<std::size_t>(r)]);
  return frame;
}

}  // namespace
}  // namespace zelt::braidwerk::internal

namespace synthesis {

EncoderResult synthesize_encoder(const std::vector<std::vector<unsigned char>>& stabilisers,
                                 const std::vector<bool>& minus, const EncoderOptions& options) {
  return synthesize_encoder(stabilisers, minus, {}, {}, options);
}

EncoderResult synthesize_encoder(const std::vector<std::vector<unsigned char>>& stabilisers,
                                 const std::vector<bool>& minus,
                                 const std::vector<std::vector<unsigned char>>& logicals,
                                 const std::vector<bool>& logicals_minus,
                                 const EncoderOptions& options) {
  using zelt::braidwerk::internal::packed;
  const std::size_t n = stabilisers.empty() ? 0 : stabilisers[0].size();
  return zelt::braidwerk::internal::unpacked<EncoderResult>(
      zelt::braidwerk::internal::synthesize_encoder(
          {packed("stabilisers", stabilisers, minus, n),
           packed("logicals", logicals, logicals_minus, n)},
          options));
}

}  // namespace synthesis
