#include "zeltbraidwerk/search/internal/table_store.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <system_error>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#define ZELTBRAIDWERK_KEEPS_TABLES 1
#endif

namespace zelt::braidwerk::internal {
namespace {

namespace fs = std::filesystem;

/// Before the bytes of the table in its file. All numbers in the order of bytes of the machine,
/// which `magic` tells.
struct Header {
  std::uint64_t magic = 0x31656c6261747a62;  // "bztable1" read as a number of the least byte first
  std::uint64_t layout = 0;
  std::uint64_t bytes = 0;
  std::uint64_t checksum = 0;   ///< of the table
  std::array<char, 96> name{};  ///< filled up with zeros
  bool operator==(const Header&) const = default;
};
static_assert(sizeof(Header) == 128, "the table after it is aligned");

/// Four sums side by side, so that a table of 32 MB takes milliseconds.
std::uint64_t checksum_of(const std::byte* bytes, std::size_t size) {
  constexpr std::uint64_t factor = 0x9e3779b97f4a7c15;
  std::array<std::uint64_t, 4> sums{1, 2, 3, 4};
  const auto add = [&](std::size_t lane, const std::byte* from, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, count);
    sums[lane] = std::rotl((sums[lane] ^ word) * factor, 29);
  };
  std::size_t at = 0;
  for (; at + 32 <= size; at += 32) {
    for (std::size_t lane = 0; lane < 4; ++lane) add(lane, bytes + at + 8 * lane, 8);
  }
  for (; at < size; at += 8) add(0, bytes + at, std::min<std::size_t>(8, size - at));
  std::uint64_t sum = size;
  for (const std::uint64_t lane : sums) sum = std::rotl((sum ^ lane) * factor, 31);
  return sum;
}

Header header_of(const StoredName& name, std::uint64_t checksum) {
  Header header;
  header.layout = name.layout;
  header.bytes = name.bytes;
  header.checksum = checksum;
  name.name.copy(header.name.data(), header.name.size() - 1);
  return header;
}

std::optional<fs::path> folder_in(const char* variable, const char* below) {
  const char* const value = std::getenv(variable);
  if (value == nullptr || !fs::path(value).is_absolute()) return std::nullopt;
  return fs::path(value) / below;
}

#ifdef ZELTBRAIDWERK_KEEPS_TABLES

fs::path file_of(const fs::path& folder, const StoredName& name) {
  return folder / (name.name + "-" + std::to_string(name.layout) + ".table");
}

/// A file that is open; -1: none.
class File {
 public:
  File(const fs::path& path, int flags, mode_t mode = 0)
      : number_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(); }

  int number() const { return number_; }
  bool close() {
    const int number = std::exchange(number_, -1);
    return number >= 0 && ::close(number) == 0;
  }
  bool write(const void* from, std::size_t size) const {
    const char* at = static_cast<const char*>(from);
    while (size > 0) {
      const ssize_t written = ::write(number_, at, size);
      if (written <= 0) return false;
      at += written;
      size -= static_cast<std::size_t>(written);
    }
    return true;
  }

 private:
  int number_;
};

bool write_file(const fs::path& path, const Header& header, const std::byte* bytes) {
  File file(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  return file.number() >= 0 && file.write(&header, sizeof(header)) &&
         file.write(bytes, static_cast<std::size_t>(header.bytes)) && file.close();
}

#endif

}  // namespace

std::optional<fs::path> table_folder() {
  const char* const given = std::getenv("ZELTBRAIDWERK_CACHE");
  if (given != nullptr && *given != '\0') {
    if (std::string(given) == "off") return std::nullopt;
    return fs::path(given);
  }
  if (auto folder = folder_in("XDG_CACHE_HOME", "zeltbraidwerk")) return folder;
#ifdef __APPLE__
  return folder_in("HOME", "Library/Caches/zeltbraidwerk");
#else
  return folder_in("HOME", ".cache/zeltbraidwerk");
#endif
}

#ifdef ZELTBRAIDWERK_KEEPS_TABLES

std::shared_ptr<const std::byte> stored_bytes(const StoredName& name) {
  const auto folder = table_folder();
  if (!folder) return nullptr;
  // What is no plain file might make the process wait.
  const File file(file_of(*folder, name), O_RDONLY | O_NONBLOCK);
  struct stat status{};
  const std::size_t size = sizeof(Header) + name.bytes;
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
      static_cast<std::size_t>(status.st_size) != size) {
    return nullptr;
  }
  void* const mapped = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, file.number(), 0);
  if (mapped == MAP_FAILED) return nullptr;
  const std::shared_ptr<void> owner(mapped, [size](void* at) { ::munmap(at, size); });
  Header found;
  std::memcpy(&found, mapped, sizeof(found));
  const std::byte* const bytes = static_cast<const std::byte*>(mapped) + sizeof(Header);
  if (found != header_of(name, found.checksum)) return nullptr;
  if (found.checksum != checksum_of(bytes, name.bytes)) return nullptr;
  return {owner, bytes};
}

void store_bytes(const StoredName& name, const std::byte* bytes) {
  const auto folder = table_folder();
  if (!folder) return;
  std::error_code error;
  fs::create_directories(*folder, error);
  const fs::path path = file_of(*folder, name);
  fs::path part = path;
  part += "." + std::to_string(::getpid()) + ".part";
  const bool whole = write_file(part, header_of(name, checksum_of(bytes, name.bytes)), bytes);
  if (whole) fs::rename(part, path, error);
  if (!whole || error) fs::remove(part, error);
}

#else

std::shared_ptr<const std::byte> stored_bytes(const StoredName&) {
  return nullptr;
}
void store_bytes(const StoredName&, const std::byte*) {}

#endif

}  // namespace zelt::braidwerk::internal
