#include "zeltbraidwerk/search/memory_limit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

#include "zeltbraidwerk/search/internal/memory.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double usual_share = 0.5;
constexpr double never_checked = 16e6;  // bytes, which there are always

bool is_limit(double value) {
  return value > 0;
}

double from_environment() {
  const char* text = std::getenv("ZELTBRAIDWERK_LIMIT_MEMORY");
  if (text == nullptr) return usual_share;
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  return end != text && *end == '\0' && is_limit(value) ? value : usual_share;
}

std::atomic<double>& setting() {
  static std::atomic<double> value = from_environment();
  return value;
}

/// Of a control group; its file has a number or a word such as "max".
double bytes_in(const char* path) {
  std::ifstream file(path);
  double bytes = 0;
  return file >> bytes ? bytes : unlimited;
}

/// The least of what does not change while the process runs.
double bytes_of_machine() {
  const double pages = static_cast<double>(sysconf(_SC_PHYS_PAGES));
  return std::min({pages * static_cast<double>(sysconf(_SC_PAGE_SIZE)),
                   bytes_in("/sys/fs/cgroup/memory.max"),
                   bytes_in("/sys/fs/cgroup/memory/memory.limit_in_bytes")});
}

double bytes_there() {
  static const double of_machine = bytes_of_machine();
  rlimit address_space{};
  if (getrlimit(RLIMIT_AS, &address_space) != 0 || address_space.rlim_cur == RLIM_INFINITY) {
    return of_machine;
  }
  return std::min(of_machine, static_cast<double>(address_space.rlim_cur));
}

/// To three digits, in the unit that fits.
std::string shown(double bytes) {
  std::array<char, 48> text{};
  const bool giga = bytes >= 1e9;
  std::snprintf(text.data(), text.size(), "%.3g %s", bytes / (giga ? 1e9 : 1e6),
                giga ? "GB" : "MB");
  return text.data();
}

}  // namespace

std::string too_large(const std::string& name, const std::string& got, double bytes) {
  return name + ": got " + got + ", which would take " + shown(bytes) + " of memory, wanted " +
         shown(synthesis::memory_limit()) +
         " at most; the limit is set by ZELTBRAIDWERK_LIMIT_MEMORY, limits.set(memory=...) in "
         "Python or set_memory_limit in C++";
}

void check_memory(const char* name, const std::string& got, double bytes) {
  if (bytes <= never_checked || bytes <= synthesis::memory_limit()) return;
  throw synthesis::TooLargeError(too_large(name, got, bytes));
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

using namespace zelt::braidwerk::internal;

double memory_limit() {
  const double set = setting();
  return set <= 1 ? set * bytes_there() : set;
}

void set_memory_limit(double limit) {
  if (!is_limit(limit)) {
    throw std::invalid_argument("limit: got " + std::to_string(limit) +
                                ", wanted a share up to 1, or a number of bytes");
  }
  setting() = limit;
}

double memory_limit_as_set() {
  return setting();
}

}  // namespace synthesis
