#include <nanobind/stl/map.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/set.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/graphs/blossom.h"
#include "zeltbraidwerk/graphs/routines.h"
#include "zeltbraidwerk/graphs/shortest_paths.h"
#include "zeltbraidwerk/graphs/steiner.h"
#include "zeltbraidwerk/graphs/steiner_gauss.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;
using structures::Table;

namespace {

/// Runs f and, where it fails, puts what it wrote to standard error into the text of the exception.
template <class F>
auto with_detail(F&& f) {
  return unlocked_alone([&] {
    std::ostringstream detail;
    struct Restore {
      std::streambuf* kept;
      ~Restore() { std::cerr.rdbuf(kept); }
    };
    const Restore restore{std::cerr.rdbuf(detail.rdbuf())};
    try {
      return f();
    } catch (const std::exception& e) {
      const std::string text = detail.str();
      if (text.empty()) throw;
      throw std::runtime_error(std::string(e.what()) + ": " +
                               text.substr(0, text.find_last_not_of(" \n") + 1));
    }
  });
}

/// As many as searches have a matrix for.
constexpr int most_vertices = 16383;

void check_vertices(int n) {
  check_size(n, "n");
  check_at_most(n, most_vertices, "n");
}

/// Sum of the distances from v, and the number of vertices in its component.
std::pair<double, double> distances_from(int v, const Graph& g, std::vector<bool>& seen) {
  double sum = 0;
  double reached = 0;
  std::vector<int> layer{v};
  seen[static_cast<std::size_t>(v)] = true;
  for (int distance = 0; !layer.empty(); ++distance) {
    sum += distance * static_cast<double>(layer.size());
    reached += static_cast<double>(layer.size());
    std::vector<int> next;
    for (const int at : layer) {
      for (int w = 0; w < g.n; ++w) {
        if (seen[static_cast<std::size_t>(w)] || !g.are_neighbors(at, w)) continue;
        seen[static_cast<std::size_t>(w)] = true;
        next.push_back(w);
      }
    }
    layer = std::move(next);
  }
  return {sum, reached};
}

/// Raises TooLargeError for a path table, with so many bytes per vertex of a path, that is too
/// large. Over all pairs the mean distance is at most twice that from one vertex.
void check_path_table(const Graph& g, double bytes = 4) {
  if (g.n < 256) return;
  double size = 24.0 * g.n * g.n;
  std::vector<bool> seen(static_cast<std::size_t>(g.n));
  for (int v = 0; v < g.n; ++v) {
    if (seen[static_cast<std::size_t>(v)]) continue;
    const auto [sum, reached] = distances_from(v, g, seen);
    size += reached * (2 * sum + 9 * reached) * bytes;
  }
  check_memory(size, "n", g.n);
}

void check_filled(const Graph& g) {
  if (std::cmp_less(g.shortest_paths.size(), g.n)) {
    raise_value_error("g: its path table is not filled, wanted set_shortest_paths before");
  }
}

void check_terminals(const Graph& g, const std::vector<int>& terminals) {
  check_filled(g);
  if (terminals.empty()) raise_value_error("terminals: got none, wanted at least one");
  check_indices(terminals, g.n, "terminals");
  const auto& paths = g.shortest_paths[static_cast<std::size_t>(terminals[0])];
  for (const int t : terminals) {
    if (t != terminals[0] && paths[static_cast<std::size_t>(t)].empty()) {
      raise_value_error("terminals: no path joins %d and %d", terminals[0], t);
    }
  }
}

using GraphEdit = void (Graph::*)(int, int);

template <GraphEdit edit>
void edited(Graph& g, int i, int j) {
  check_indices(std::array{i, j}, g.n, "vertex");
  (g.*edit)(i, j);
}

template <void (Graph::*fill)()>
void filled(Graph& g) {
  check_path_table(g);
  unlocked([&] { (g.*fill)(); });
}

void bind_graph_edits(nb::class_<Graph>& graph) {
  graph.def("add_edge", edited<static_cast<GraphEdit>(&Graph::add_edge)>, "i"_a, "j"_a)
      .def(
          "add_edge",
          [](Graph& g, int i, int j, double w) {
            check_indices(std::array{i, j}, g.n, "vertex");
            check_square(g.n, "n", 8);
            g.add_edge(i, j, w);
          },
          "i"_a, "j"_a, "w"_a)
      .def("remove_edge", edited<&Graph::remove_edge>, "i"_a, "j"_a)
      .def(
          "disconnect",
          [](Graph& g, int v) {
            check_index(v, g.n, "v");
            g.disconnect(v);
          },
          "v"_a, "Removes all edges of v, which stays in vertices.")
      .def("set_shortest_paths", filled<&Graph::set_shortest_paths>,
           "Fills shortest_paths; before any tree.")
      .def("update_shortest_paths", filled<&Graph::update_shortest_paths>,
           "Refills shortest_paths, pair by pair.")
      .def(
          "initialize_sketches",
          [](Graph& g) {
            check_filled(g);
            unlocked_alone([&] { g.initialize_sketches(); });
          },
          "Draws seed sets and fills sketches.")
      .def(
          "steiner_tree",
          [](Graph& g, std::vector<int> terminals) {
            check_terminals(g, terminals);
            return unlocked_alone([&] { return g.steiner_tree(terminals); });
          },
          "terminals"_a, "The tree of the terminals by the builder that sketch_mode names.");
}

void bind_graph_queries(nb::class_<Graph>& graph) {
  graph
      .def(
          "neighbors",
          [](const Graph& g, int i) {
            check_index(i, g.n, "i");
            return g.neighbors(i);
          },
          "i"_a)
      .def("edges", &Graph::edges, "Each edge once, smaller vertex first.")
      .def(
          "degree",
          [](const Graph& g, int i) {
            check_index(i, g.n, "i");
            return g.degree(i);
          },
          "i"_a)
      .def("nb_vertices", &Graph::nb_vertices)
      .def("are_neighbors", &Graph::are_neighbors, "i"_a, "j"_a)
      .def("is_connected", &Graph::is_connected)
      .def(
          "is_non_cutting",
          [](const Graph& g, int v) {
            check_index(v, g.n, "v");
            return g.is_non_cutting(v);
          },
          "v"_a)
      .def("induced_subgraph", &Graph::induced_subgraph, "s"_a)
      .def(
          "is_ham_path",
          [](const Graph& g, const std::vector<int>& path) {
            check_indices(path, g.n, "path");
            return g.is_ham_path(path);
          },
          "path"_a)
      .def(
          "shortest_path",
          [](const Graph& g, int source, int target) {
            check_indices(std::array{source, target}, g.n, "vertex");
            return g.shortest_path(source, target);
          },
          "source"_a, "target"_a)
      .def("to_string", &Graph::to_string)
      .def("__str__", &Graph::to_string)
      .def("__repr__", [](const Graph& g) {
        return "<Graph of " + std::to_string(g.nb_vertices()) + " vertices and " +
               std::to_string(g.edges().size()) + " edges>";
      });
}

void bind_graph(nb::module_& m) {
  nb::class_<Graph> graph(m, "Graph", "The connectivity of a device, or a tree of it.");
  graph.def(nb::init<>())
      .def(
          "__init__",
          [](Graph* self, int n) {
            check_vertices(n);
            new (self) Graph(n);
          },
          "n"_a)
      .def(nb::init<const Graph&>(), "other"_a, "A copy, without cache and sketches.")
      .def_ro("n", &Graph::n)
      .def_prop_ro(
          "adjacency", [](const Graph& g) { return to_numpy(g.adjacency); },
          nb::rv_policy::automatic, "Row-major, one array.")
      .def_ro("weights", &Graph::weights)
      .def_prop_ro("shortest_paths",
                   [](const Graph& g) {
                     if (!g.shortest_paths.empty()) check_path_table(g, 12);
                     return g.shortest_paths;
                   })
      .def_ro("vertices", &Graph::vertices)
      .def_ro("steiner_cache", &Graph::steiner_cache)
      .def_rw("sketch_mode", &Graph::sketch_mode, "0: steiner_good, else sketch_steiner.")
      .def_ro("sketches", &Graph::sketches);
  bind_graph_edits(graph);
  bind_graph_queries(graph);
}

using TreeBuilder = Graph (*)(Graph&, std::vector<int>&);

template <TreeBuilder build>
Graph built(Graph& g, std::vector<int> terminals) {
  check_terminals(g, terminals);
  return unlocked_alone([&] { return build(g, terminals); });
}

void bind_steiner(nb::module_& m) {
  m.def(
      "compute_all_shortest_paths_lemon",
      [](Graph g) {
        check_path_table(g, 12);
        std::vector<std::vector<std::vector<int>>> paths;
        unlocked([&] { structures::compute_all_shortest_paths_lemon(g, paths); });
        return paths;
      },
      "g"_a, "The path table of the graph.");
  m.def("steiner_good", built<structures::steiner_good>, "g"_a, "terminals"_a,
        "A tree that grows from the first terminal to the nearest one, again and again.");
  m.def("sketch_steiner", built<structures::sketch_steiner>, "g"_a, "terminals"_a,
        "Shortest paths from all terminals to one seed of their sketches.");
  m.def(
      "get_seed_set",
      [](int n, int size) {
        check_vertices(n);
        check_size(size, "size");
        check_at_most(size, 1 << 20, "size");
        return unlocked_alone([&] { return structures::get_seed_set(n, size); });
      },
      "n"_a, "size"_a, "A random sample of the vertices.");
  m.def(
      "get_seed_sets",
      [](int n) {
        check_vertices(n);
        return unlocked_alone([&] { return structures::get_seed_sets(n); });
      },
      "n"_a, "Seed sets of 1, 2, 4, ... draws.");
  m.def(
      "build_sketches",
      [](const std::vector<std::set<int>>& seed_sets, Graph& g) {
        check_filled(g);
        for (const auto& seeds : seed_sets) {
          check_indices(seeds, g.n, "seed_sets");
        }
        return unlocked([&] { return structures::build_sketches(seed_sets, g); });
      },
      "seed_sets"_a, "g"_a, "The nearest seeds of each vertex.");
}

void bind_routines(nb::module_& m) {
  m.def(
      "fill_for_fan_in",
      [](const Graph& tree, const std::vector<int>& terminals) {
        check_indices(terminals, tree.n, "terminals");
        return with_detail([&] { return routines::fill_for_fan_in(tree, terminals); });
      },
      "tree"_a, "terminals"_a, "The gates that add the other vertices in once more.");
  m.def(
      "empty_for_fan_in",
      [](const Graph& tree, int root) {
        check_index(root, tree.n, "root");
        return with_detail([&] { return routines::empty_for_fan_in(tree, root); });
      },
      "tree"_a, "root"_a, "The gates that fold the tree onto the root.");
  m.def(
      "fan_in_on_tree",
      [](const Graph& tree, const std::vector<int>& terminals, int root) {
        check_indices(terminals, tree.n, "terminals");
        check_index(root, tree.n, "root");
        return with_detail([&] { return routines::fan_in_on_tree(tree, terminals, root); });
      },
      "tree"_a, "terminals"_a, "root"_a, "Both: the root ends with the sum of the terminals.");
  m.def(
      "fill_tree",
      [](const Graph& tree, const std::vector<int>& targets, int root, bool root_is_set) {
        check_indices(targets, tree.n, "targets");
        check_index(root, tree.n, "root");
        return with_detail([&] { return routines::fill_tree(tree, targets, root, root_is_set); });
      },
      "tree"_a, "targets"_a, "root"_a, "root_is_set"_a, "The gates that set a column on the tree.");
  m.def(
      "empty_tree",
      [](const Graph& tree, const std::vector<int>& targets, int root) {
        check_indices(targets, tree.n, "targets");
        check_index(root, tree.n, "root");
        return with_detail([&] { return routines::empty_tree(tree, targets, root); });
      },
      "tree"_a, "targets"_a, "root"_a, "The gates that clear a column but for the root.");
}

void bind_steiner_gauss(nb::module_& m) {
  m.def(
      "steiner_gauss_ham_path",
      [](Table table, Graph& graph, std::vector<int> path) {
        check_same(table.n, graph.n, "table", "rows");
        check_indices(path, graph.n, "path");
        return with_detail([&] { return synthesis::steiner_gauss_ham_path(table, graph, path); });
      },
      "table"_a, "graph"_a, "path"_a, "Gates on edges that reduce the table to the identity.");
  m.def("check_is_upper_triangular", &synthesis::check_is_upper_triangular, "table"_a);
  m.def("inverse_index", &synthesis::inverse_index, "list"_a, "value"_a,
        "First position of the value, or -1.");
  m.def(
      "prune_leaves",
      [](Graph tree, std::vector<int> keep) {
        check_indices(keep, tree.n, "keep");
        structures::prune_leaves(tree, keep);
        return tree;
      },
      "tree"_a, "keep"_a, "The tree without the chains that end outside keep.");
  m.def(
      "shortcut_ham_path",
      [](const Graph& graph, std::vector<int> path, std::vector<int> targets, int root) {
        check_indices(path, graph.n, "path");
        check_indices(targets, graph.n, "targets");
        check_index(root, graph.n, "root");
        if (targets.size() > 1 && std::ranges::find(path, targets.front()) == path.end()) {
          raise_value_error("targets: got %d, wanted a vertex of the path", targets.front());
        }
        return structures::shortcut_ham_path(graph, path, targets, root);
      },
      "graph"_a, "path"_a, "targets"_a, "root"_a, "The tree that descends the path.");
  m.def(
      "check_is_descending",
      [](const Graph& tree, std::vector<int> path, int root) {
        check_indices(path, tree.n, "path");
        check_index(root, tree.n, "root");
        return structures::check_is_descending(tree, path, root);
      },
      "tree"_a, "path"_a, "root"_a);
  m.def(
      "BlossomAlgorithm",
      [](const ArrayLike& weights, int n) {
        const auto table = to_table<int>(weights, n, "weights");
        std::vector<std::tuple<int, int>> matching;
        const double weight = unlocked([&] { return BlossomAlgorithm(table, n, matching); });
        return std::tuple(weight, std::move(matching));
      },
      "weights"_a, "n"_a, "(weight, pairs) of a maximum-weight matching.");
}

}  // namespace

void bind_graphs(nb::module_& m) {
  bind_graph(m);
  bind_steiner(m);
  bind_routines(m);
  bind_steiner_gauss(m);
}

}  // namespace zelt::braidwerk::python
