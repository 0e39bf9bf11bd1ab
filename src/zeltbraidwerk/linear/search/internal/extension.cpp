#include "zeltbraidwerk/linear/search/internal/extension.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "zeltbraidwerk/linear/search/internal/beams.h"
#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/exchanged_map.h"
#include "zeltbraidwerk/linear/search/internal/light_sums.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

/// A place in a circuit: before gate `time`, on a wire.
struct Place {
  int time;
  int wire;
};

/// Vectors, each with the place where it is found, the unit vectors first.
struct Pool {
  BitMatrix vectors;
  std::vector<Place> places;

  Pool(int wires, int more, int time) : vectors(wires + more, wires) {
    for (int w = 0; w < wires; ++w) {
      vectors.set(w, w);
      places.push_back({time, w});
    }
  }
  /// A line of a matrix, that of the wire.
  void add(const BitMatrix& now, const Place& place) {
    std::copy_n(now.row(place.wire), now.stride(), vectors.row(static_cast<int>(places.size())));
    places.push_back(place);
  }
  std::vector<Place> places_of(const std::vector<int>& set) const {
    std::vector<Place> result;
    for (const int k : set) result.push_back(places[static_cast<std::size_t>(k)]);
    return result;
  }
};

/// The parities of the inputs that there are in the first gates.
Pool received(const std::vector<Gate>& gates, int first, int wires) {
  Pool pool(wires, first, 0);
  BitMatrix now = BitMatrix::identity(wires);
  for (int k = 0; k < first; ++k) {
    const Gate& gate = gates[static_cast<std::size_t>(k)];
    now.add_row(wire_of(gate.a), wire_of(gate.b));
    pool.add(now, {k + 1, wire_of(gate.b)});
  }
  return pool;
}

/// The effects on the outputs that a gate to some wire has amid the other gates.
Pool sent(const std::vector<Gate>& gates, int first, int wires) {
  const int count = static_cast<int>(gates.size());
  Pool pool(wires, count - first, count);
  BitMatrix now = BitMatrix::identity(wires);
  for (int k = count; k-- > first;) {
    const Gate& gate = gates[static_cast<std::size_t>(k)];
    now.add_row(wire_of(gate.b), wire_of(gate.a));
    pool.add(now, {k, wire_of(gate.a)});
  }
  return pool;
}

/// A division of a circuit in two parts, and what a new wire takes there at least.
struct Division {
  std::vector<Gate> gates;
  std::vector<Place> receives;
  std::vector<Place> sends;
  int row = -1;  // that comes back
  int col = -1;

  int cost() const {
    return row < 0 ? std::numeric_limits<int>::max()
                   : static_cast<int>(receives.size() + sends.size());
  }
};

/// By their times, of equal ones in the order given.
template <class Time>
std::vector<Gate> in_order(std::vector<std::pair<Time, Gate>>& timed) {
  std::ranges::stable_sort(timed, {}, &std::pair<Time, Gate>::first);
  std::vector<Gate> gates;
  for (const auto& [time, gate] : timed) gates.push_back(gate);
  return gates;
}

/// The gates in another order that does the same: those of some wires later than of others.
std::vector<Gate> reordered(const GateList& list, Rng& rng) {
  std::vector<float> delays(static_cast<std::size_t>(list.wires()));
  const float longest = extension_tuning.delay * static_cast<float>(list.count());
  for (float& delay : delays) delay = longest * rng.unit();
  std::vector<float> as_control(delays.size());  // of the latest gate so far
  std::vector<float> as_target(delays.size());
  std::vector<std::pair<float, Gate>> timed;
  for (const Gate& gate : list.gates) {
    const auto c = static_cast<std::size_t>(wire_of(gate.a));
    const auto t = static_cast<std::size_t>(wire_of(gate.b));
    const float wanted = static_cast<float>(timed.size()) + delays[c] + delays[t];
    const float time = std::max({wanted, as_target[c], as_control[t]});
    as_control[c] = std::max(as_control[c], time);
    as_target[t] = std::max(as_target[t], time);
    timed.emplace_back(time, gate);
  }
  return in_order(timed);
}

/// The map with some outputs and inputs exchanged, and a circuit of the others.
class Extension {
 public:
  Extension(const BitMatrix& m, int window, Rng& rng, Meter& meter)
      : map_(m), rewriter_(window, true), rng_(rng), meter_(meter) {}

  int wires() const { return map_.wires(); }

  void make_core(std::uint64_t steps) {
    while (wires() > extension_tuning.core) map_.exchange_lightest(extension_tuning.noise, rng_);
    const BitMatrix m = map_.matrix();
    circuit_ = reduce(m, beam_cost(wires()), cnot_tuning.wide, Facing::plain, rng_, meter_);
    if (circuit_.gates.empty()) circuit_ = by_pairs(m, Facing::plain);
    walk(steps, cnot_tuning.cooling_long);
  }

  void walk(std::uint64_t steps, Cooling cooling) {
    walk_among_equals(circuit_, rewriter_, steps, cooling, rng_, meter_, [](const GateList&) {});
    map_.move_outputs(circuit_.frame);
    circuit_.frame = WireFrame(wires());
  }

  /// One wire more, unless the effort ends before.
  void add_wire(std::uint64_t steps) {
    Division best;
    for (int k = 0; k < extension_tuning.divisions && !meter_.ended(); ++k) {
      divide(static_cast<double>(steps) / extension_tuning.divisions, best);
    }
    if (!meter_.ended()) take(best);
  }

  /// Of the whole map, when all wires have come back.
  GateList circuit() const {
    GateList whole;
    whole.frame = map_.frame();
    for (const Gate& gate : circuit_.gates) {
      whole.gates.push_back(cnot(map_.input(wire_of(gate.a)), map_.input(wire_of(gate.b))));
    }
    return whole;
  }

 private:
  /// Makes `best` better by a division of the gates in another order.
  void divide(double steps, Division& best) {
    std::vector<Gate> gates = reordered(circuit_, rng_);
    const int count = static_cast<int>(gates.size());
    const float part = extension_tuning.least_part + extension_tuning.parts * rng_.unit();
    const int first = static_cast<int>(part * static_cast<float>(count));
    const Pool receive = received(gates, first, wires());
    const Pool send = sent(gates, first, wires());
    LightSums to_receive(receive.vectors, map_.parities());
    LightSums to_send(send.vectors, map_.effects());
    const int left = map_.exchanged();
    const double price = LightSums::steps(first, left) + LightSums::steps(count - first, left);
    for (double done = 0; done == 0 || done + price <= steps; done += price) {
      to_receive.look(rng_);
      to_send.look(rng_);
      meter_.charge(static_cast<std::uint64_t>(price));
      if (meter_.ended()) return;
    }
    int cost = best.cost();
    int row = -1;
    int col = -1;
    for (int p = 0; p < left; ++p) {
      for (int q = 0; q < left; ++q) {
        const int sum = to_receive.weight(p) + to_send.weight(q);
        if (sum >= cost || !map_.can_return(p, q)) continue;
        cost = sum;
        row = p;
        col = q;
      }
    }
    if (row < 0) return;
    best = {std::move(gates), receive.places_of(to_receive.set(row)),
            send.places_of(to_send.set(col)), row, col};
  }

  /// Of what is at the same time the new wire first receives, then sends.
  void take(const Division& way) {
    const int wire = wires();
    std::vector<std::pair<int, Gate>> timed;
    for (const Place& from : way.receives) timed.emplace_back(from.time, cnot(from.wire, wire));
    for (const Place& to : way.sends) timed.emplace_back(to.time, cnot(wire, to.wire));
    int time = 0;
    for (const Gate& gate : way.gates) timed.emplace_back(time++, gate);
    circuit_ = GateList(wire + 1, in_order(timed));
    map_.bring_back(way.row, way.col);
  }

  ExchangedMap map_;
  GateList circuit_;  // outputs in place
  BlockRewriter rewriter_;
  Rng& rng_;
  Meter& meter_;
};

}  // namespace

GateList extend_wire_by_wire(const BitMatrix& m, std::uint64_t steps, int window, Rng& rng,
                             Meter& meter) {
  const auto part = [&](double of_all) {
    return static_cast<std::uint64_t>(of_all * static_cast<double>(steps));
  };
  Extension extension(m, window, rng, meter);
  const int wires = extension.wires();
  extension.make_core(part(extension_tuning.core_part));
  const double share = 1.0 / std::max(1, wires - extension.wires());
  while (!meter.ended() && extension.wires() < wires) {
    extension.add_wire(part(extension_tuning.decoding_part * share));
    extension.walk(part(extension_tuning.walks_part * share), extension_tuning.cooling);
  }
  if (meter.ended()) return {};
  return extension.circuit();
}

}  // namespace zelt::braidwerk::internal
