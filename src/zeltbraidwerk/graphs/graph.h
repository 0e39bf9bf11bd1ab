#pragma once

#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

namespace structures {

/// The connectivity graph of a device: undirected, on the vertices 0 to n - 1, which are its
/// qubits. It carries three things computed from it: the table of shortest paths, the sketches of
/// its vertices, and the Steiner trees already built. A Steiner tree is itself a Graph on the same
/// numbering.
///
/// `vertices` and `adjacency` are separate: removing or adding edges never touches `vertices`, and
/// every endpoint of an edge lies in it. Nothing invalidates the derived fields when edges change:
/// call update_shortest_paths. Distances are hop counts; `weights` is carried along and read by
/// nothing. Vertex numbers are not validated, except that are_neighbors and what rests on it answer
/// "no" for vertices outside the graph.
///
/// steiner_tree and initialize_sketches change the graph, so one object serves one caller at a
/// time.
struct ZELTBRAIDWERK_EXPORT Graph {
  int n = 0;                    ///< vertices are below n
  BoolRow adjacency;            ///< edge (i, j) at i * n + j and at j * n + i
  std::vector<double> weights;  ///< empty, or indexed like adjacency
  /// [i][j] is a shortest path from i to j, both included; empty when there is none. An empty table
  /// until set_shortest_paths runs.
  std::vector<std::vector<std::vector<int>>> shortest_paths;
  std::set<int> vertices;                           ///< 0 to n - 1, or a part of them
  std::map<std::vector<int>, Graph> steiner_cache;  ///< by the terminal list, order included
  int sketch_mode = 0;                              ///< 0: steiner_good, else sketch_steiner
  std::vector<std::set<int>> sketches;              ///< empty, or the nearest seeds of each vertex

  Graph() = default;
  explicit Graph(int n);  ///< n vertices, no edges

  /// A copy starts without cache and sketches; assignment takes every field.
  Graph(const Graph& other);
  Graph(Graph&&) noexcept = default;
  Graph& operator=(const Graph&) = default;
  Graph& operator=(Graph&&) noexcept = default;
  ~Graph() = default;

  void add_edge(int i, int j);            ///< i and j differ
  void add_edge(int i, int j, double w);  ///< with weight w
  void remove_edge(int i, int j);         ///< nothing where there is none
  void disconnect(int v);                 ///< removes all edges of v, which stays in `vertices`

  std::vector<int> neighbors(int i) const;         ///< ascending
  std::vector<std::pair<int, int>> edges() const;  ///< each once, smaller vertex first, ascending
  int degree(int i) const;                         ///< the number of its neighbours
  int nb_vertices() const;                         ///< the size of `vertices`, not n
  bool are_neighbors(int i, int j) const;          ///< whether an edge joins them

  /// Whether `vertices` is connected. False for a graph without vertices.
  bool is_connected() const;
  /// is_connected() of what is left without v.
  bool is_non_cutting(int v) const;
  /// A copy in which the vertices outside s are gone; n and the numbering stay.
  Graph induced_subgraph(const std::set<int>& s) const;

  /// Whether the path walks edges and visits all n slots once. A longer vector is not refused: the
  /// links among its first n entries count, and its last entry stands in for the end of the walk.
  /// The empty path is Hamiltonian on the empty graph.
  bool is_ham_path(const std::vector<int>& path) const;

  /// A shortest path, both ends included, independent of `shortest_paths`; empty when there is
  /// none. Ties as if distances to the target were relaxed in sweeps over the vertices in ascending
  /// order: each vertex keeps the first neighbour that gave it its final distance. O(edges).
  std::vector<int> shortest_path(int source, int target) const;

  /// Fills `shortest_paths` by compute_all_shortest_paths_lemon; needed before any Steiner tree.
  void set_shortest_paths();
  /// Refills `shortest_paths` with shortest_path(i, j) for every pair, which copes with vertices
  /// cut off by disconnect. Where the table was never filled: set_shortest_paths.
  void update_shortest_paths();
  /// Draws new seed sets and replaces `sketches`.
  void initialize_sketches();
  /// The Steiner tree of the terminals, by the builder that `sketch_mode` names, from the cache
  /// when this very list was asked for before. Errors as for the builder.
  Graph steiner_tree(std::vector<int>& terminals);

  std::string to_string() const;  ///< the text of operator<<
};

/// One line per vertex that has neighbours: the vertex, " : ", each neighbour followed by a blank.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const Graph& graph);

}  // namespace structures
