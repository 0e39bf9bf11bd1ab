// Writes the table of graph states on 2 to 9 qubits as CSV, in half a minute. The package has it as
// python/zeltbraidwerk/data/graph_states.csv.
#include <iostream>

#include "graph_states/classes.h"

int main() {
  std::cout << "vertices,graph6,graphs,edges,gates,circuit\n";
  for (int n = 2; n <= graph_states::most_vertices; ++n) {
    const auto lines = graph_states::lines_of_table(n);
    std::cerr << n << " vertices: " << lines.size() << " classes\n";
    for (const std::string& line : lines) std::cout << line << '\n';
  }
}
