#include "zeltbraidwerk/search/internal/table_store.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>

#include "zeltbraidwerk/clifford/search/internal/class_table.h"
#include "zeltbraidwerk/clifford/search/internal/operator_table.h"
#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"
#include "zeltbraidwerk/phase/search/internal/parity_table.h"

namespace {

using namespace zelt::braidwerk::internal;
namespace fs = std::filesystem;

/// A folder of its own for the tables of each test.
class TableStore : public testing::Test {
 protected:
  TableStore() { use(folder_.string()); }
  ~TableStore() override {
    use("off");
    fs::remove_all(folder_);
  }

  static void use(const std::string& folder) { ::setenv("ZELTBRAIDWERK_CACHE", folder.c_str(), 1); }
  fs::path file() const { return folder_ / "squares-3.table"; }

  /// Squares; counts how often they are built.
  StoredTable<std::uint32_t> squares(std::size_t size = 5000) {
    return stored_table<std::uint32_t>("squares", 3, size, [&] {
      ++built_;
      std::vector<std::uint32_t> made;
      for (std::uint32_t k = 0; k < size; ++k) made.push_back(k * k);
      return made;
    });
  }
  static bool right(const StoredTable<std::uint32_t>& table, std::size_t size = 5000) {
    if (table.size() != size) return false;
    for (std::uint32_t k = 0; k < size; ++k) {
      if (table[k] != k * k) return false;
    }
    return true;
  }
  int files() const { return static_cast<int>(std::distance(fs::directory_iterator(folder_), {})); }

  fs::path folder_ = fs::path(testing::TempDir()) / ("tables-" + std::to_string(::getpid()));
  int built_ = 0;
};

TEST_F(TableStore, builds_a_table_once) {
  for (int call = 0; call < 3; ++call) EXPECT_TRUE(right(squares()));
  EXPECT_EQ(built_, 1);
  EXPECT_EQ(files(), 1);
  for (const std::size_t size : {0, 1, 7, 33}) EXPECT_TRUE(right(squares(size), size));
}

TEST_F(TableStore, keeps_a_mapped_table_whose_file_is_replaced_or_removed) {
  squares();
  const auto mapped = squares();
  squares(10);
  EXPECT_TRUE(right(mapped));
  fs::remove_all(folder_);
  EXPECT_TRUE(right(mapped));
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

TEST_F(TableStore, builds_anew_what_a_file_does_not_hold) {
  squares();
  std::string whole;
  {
    std::ifstream stream(file(), std::ios::binary);
    whole.assign(std::istreambuf_iterator<char>(stream), {});
  }
  const auto changed = [&](std::size_t at) {
    std::string text = whole;
    text[at] = static_cast<char>(text[at] ^ 4);
    return text;
  };
  // Of the header: the kind of file, the layout, the size, the checksum, the name.
  std::vector<std::string> faults{"", "a foreign file", whole.substr(0, 64), whole + "more"};
  faults.push_back(whole.substr(0, whole.size() - 1));
  faults.push_back(whole.substr(0, whole.size() / 2) +
                   std::string(whole.size() - whole.size() / 2, '\0'));
  for (const std::size_t at : {0, 8, 16, 24, 32, 127, 128, 9000}) faults.push_back(changed(at));
  faults.push_back(changed(whole.size() - 1));
  for (const std::string& fault : faults) {
    write(file(), fault);
    built_ = 0;
    EXPECT_TRUE(right(squares())) << fault.size();
    EXPECT_EQ(built_, 1) << fault.size();
    EXPECT_TRUE(right(squares())) << fault.size();
    EXPECT_EQ(built_, 1) << fault.size();
  }
  EXPECT_EQ(files(), 1);
}

TEST_F(TableStore, works_where_nothing_can_be_written) {
  // Another kind of thing has the name of the file.
  fs::create_directories(file());
  EXPECT_TRUE(right(squares()));
  fs::remove(file());
  ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
  EXPECT_TRUE(right(squares()));
  EXPECT_EQ(files(), 1);
  // There is no folder, and none can be made.
  write(folder_ / "text", "text");
  for (const std::string& folder : {(folder_ / "text").string(), (folder_ / "text/a").string(),
                                    std::string("/proc/none"), std::string("/dev/null")}) {
    use(folder);
    EXPECT_TRUE(right(squares())) << folder;
  }
  use("off");
  EXPECT_TRUE(right(squares()));
}

TEST_F(TableStore, leaves_nothing_where_the_disk_is_full) {
  fs::create_directories(folder_);
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  const rlimit small{.rlim_cur = 1000, .rlim_max = old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto table = squares();
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, before);
  EXPECT_TRUE(right(table));
  EXPECT_EQ(files(), 0);
}

TEST_F(TableStore, is_written_by_many_processes_at_once) {
  std::vector<pid_t> children;
  for (int k = 0; k < 6; ++k) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      bool all = true;
      for (int round = 0; round < 50; ++round) {
        if (round % 7 == k) fs::remove(file());
        all = all && right(squares());
      }
      ::_exit(all ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_TRUE(right(squares()));
  EXPECT_EQ(files(), 1);
}

TEST_F(TableStore, lies_where_the_environment_says) {
  const auto folder_with = [](const char* own, const char* cache, const char* home) {
    const auto set = [](const char* name, const char* value) {
      value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
    };
    set("ZELTBRAIDWERK_CACHE", own);
    set("XDG_CACHE_HOME", cache);
    set("HOME", home);
    return table_folder();
  };
  EXPECT_EQ(folder_with("/a/b", "/c", "/h"), fs::path("/a/b"));
  EXPECT_EQ(folder_with("off", "/c", "/h"), std::nullopt);
  EXPECT_EQ(folder_with("", "/c", "/h"), fs::path("/c/zeltbraidwerk"));
  EXPECT_EQ(folder_with(nullptr, "/c", nullptr), fs::path("/c/zeltbraidwerk"));
#ifndef __APPLE__
  EXPECT_EQ(folder_with(nullptr, "relative", "/h"), fs::path("/h/.cache/zeltbraidwerk"));
#endif
  EXPECT_EQ(folder_with(nullptr, nullptr, nullptr), std::nullopt);
}

/// Digests of what a table says: built without files, built into one, and mapped from it.
TEST_F(TableStore, changes_no_table) {
  const auto digest = [](auto&& number) {
    std::mt19937_64 draw(5);
    std::uint64_t sum = 0;
    for (int k = 0; k < 20'000; ++k) sum = 31 * sum + static_cast<std::uint64_t>(number(draw));
    return sum;
  };
  const auto random_rows = [](auto& draw) {
    WindowRows rows = identity_rows_on(4);
    for (int k = 0; k < 12; ++k)
      rows = rows_after(window_gates[draw() % window_gates.size()], rows);
    return rows;
  };
  const std::vector<std::function<std::uint64_t()>> tables{
      [&] {
        const OperatorTable<4> table;
        return digest([&](auto& draw) { return table.find(random_rows(draw)).down; });
      },
      [&] {
        const PlacedTable<4> table(PlacedTable<4>::all_moves);
        return digest([&](auto& draw) { return table.residue(random_rows(draw)); });
      },
      [&] {
        const ClassTable<5> table;
        ClassFinder<5> class_of;
        return digest([&](auto& draw) {
          auto rows = FewWireRows<5>::identity();
          for (int k = 0; k < 8; ++k) rows = rows.after(rows.gates()[draw() % 90]);
          return table.distance(class_of(rows));
        });
      },
      [&] {
        const MapTable table(5, complete_graph(5), true);
        return digest([&](auto& draw) { return table.distance(draw() & ((1U << 25) - 1)); });
      },
      [&] {
        const ParityTable table(complete_graph(4), false);
        return digest([&](auto& draw) {
          const auto set = static_cast<SumSet>(draw() & 0xfee8);
          return table.distance(0x8421, set) + 64 * static_cast<int>(table.any_end(set));
        });
      }};
  for (const auto& table : tables) {
    use("off");
    const std::uint64_t without = table();
    use(folder_.string());
    EXPECT_EQ(table(), without);
    EXPECT_EQ(table(), without);
  }
  EXPECT_GE(files(), 6);
}

}  // namespace
