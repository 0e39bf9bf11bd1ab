// What a search may keep, and when. A program of its own without a test library: it is compiled
// again for every mutant of the header, see incumbent_mutants.py.
#include "zeltbraidwerk/search/internal/incumbent.h"

#include <cstdio>
#include <vector>

using namespace zelt::braidwerk::internal;

namespace {

int faults = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::printf("not so: %s\n", what);
  ++faults;
}

void the_smaller_circuit_stays() {
  for (const Objective objective : {Objective::count, Objective::depth}) {
    const bool depth = objective == Objective::depth;
    Smallest<int> best(objective);
    expect(best.empty(), "empty at first");
    expect(best.offer(1, {5, 5}) && best.circuit() == 1 && !best.empty(), "the first is taken");
    expect(best.offer(2, {6, 4}) == depth, "fewer layers for more gates");
    expect(best.offer(3, {4, 6}) == !depth, "fewer gates for more layers");
    expect(best.circuit() == (depth ? 2 : 3), "the objective decides");
    expect(!best.offer(4, best.size()), "of equals the first stays");
    expect(best.size() == (depth ? CircuitSize{6, 4} : CircuitSize{4, 6}), "its size");
    expect(best.offer(5, depth ? CircuitSize{5, 4} : CircuitSize{4, 5}), "the other one decides");
  }
  Smallest<int> latest(Objective::count, Ties::latest);
  latest.offer(1, {5, 5});
  expect(latest.offer(2, {5, 5}) && latest.circuit() == 2, "of equals the latest");
  expect(!latest.offer(3, {5, 6}) && !latest.offer(3, {6, 1}), "but none that is larger");
}

void more_effort_is_never_worse() {
  struct Case {
    Objective objective;
    Origin origin;
    bool lasts;
  };
  constexpr Case cases[] = {
      {Objective::count, Origin::certain, true},
      {Objective::count, Origin::lowering_count, true},
      {Objective::count, Origin::lowering_depth, false},
      {Objective::count, Origin::derived, false},
      {Objective::depth, Origin::certain, true},
      {Objective::depth, Origin::lowering_count, false},
      {Objective::depth, Origin::lowering_depth, true},
      {Objective::depth, Origin::derived, false},
  };
  for (const auto& [objective, origin, lasts] : cases) {
    Effort effort;
    effort.steps = 1;
    Meter meter(effort, objective);
    Incumbent<int> answer(objective, meter);
    answer.offer(1, {9, 9}, Origin::certain);
    expect(answer.counts(origin) && answer.offer(2, {8, 8}, origin), "all count with effort left");
    meter.step();
    expect(answer.counts(origin) == lasts, "what counts after the end");
    expect(answer.offer(3, {7, 7}, origin) == lasts, "what is taken after the end");
    expect(answer.circuit() == (lasts ? 3 : 2), "and stays the answer");
    Incumbent<int> none(objective, meter);
    expect(none.offer(4, {9, 9}, origin) && none.circuit() == 4, "some answer is needed");
  }
}

void the_meter_hears_of_what_is_smaller() {
  for (const Ties ties : {Ties::first, Ties::latest}) {
    std::vector<CircuitSize> heard;
    Effort effort;
    effort.on_better = [&](const SearchPoint& point) {
      heard.push_back({point.count, point.depth});
    };
    Meter meter(effort);
    Incumbent<int> answer(Objective::count, meter, ties);
    answer.offer(1, {5, 5}, Origin::certain);
    expect(answer.offer(2, {5, 5}, Origin::certain) == (ties == Ties::latest), "ties as asked");
    answer.offer(3, {6, 1}, Origin::certain);
    answer.offer(4, {5, 4}, Origin::certain);
    expect(heard == std::vector<CircuitSize>{{5, 5}, {5, 4}}, "of smaller ones alone");
    expect(answer.size() == CircuitSize{5, 4}, "the size of the answer");

    Incumbent<int> shallow(Objective::depth, meter, ties);
    shallow.offer(1, {5, 5}, Origin::certain);
    expect(shallow.offer(2, {6, 4}, Origin::certain), "by the objective");
  }
}

}  // namespace

int main() {
  the_smaller_circuit_stays();
  more_effort_is_never_worse();
  the_meter_hears_of_what_is_smaller();
  return faults == 0 ? 0 : 1;
}
