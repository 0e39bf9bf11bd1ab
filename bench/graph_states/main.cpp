// Searches for the fewest two-qubit gates of all graph states on 2 to 9 qubits, in half a minute,
// and writes them as CSV, which the package has as python/zeltbraidwerk/data/graph_states.csv, or
// with the argument "cpp" as the numbers in the library's graph_class_table.h.
#include <algorithm>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "graph_states/classes.h"

int main(int argc, char** argv) {
  using namespace graph_states;
  const bool as_cpp = argc > 1 && std::string(argv[1]) == "cpp";
  if (!as_cpp) std::cout << "vertices,graph6,graphs,edges,gates,circuit\n";
  for (int n = 2; n <= most_vertices; ++n) {
    const std::vector<GraphClass> all = classes(n);
    if (!are_known(all)) std::cerr << "the table of the library says otherwise\n";
    std::vector<GraphClass> found = connected_ones(all);
    std::cerr << n << " vertices: " << found.size() << " classes\n";
    if (as_cpp) std::ranges::sort(found, {}, entry_of);
    for (const GraphClass& each : found) {
      if (as_cpp) {
        std::cout << "0x" << std::hex << entry_of(each) << std::dec << ",\n";
      } else {
        std::cout << as_csv(each) << '\n';
      }
    }
  }
}
