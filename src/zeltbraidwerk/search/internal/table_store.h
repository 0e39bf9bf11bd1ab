#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// \file
/// Tables that take long to build are built once per machine: they are kept in files, which all
/// processes map into memory, read only, and share.
///
/// A file that cannot be read or written, or that holds anything but the table that is asked for,
/// is never an error: the table is built in memory, and written anew where that is possible. A file
/// appears whole or not at all, as it is written under another name and then renamed; what tears it
/// all the same, as a loss of power, its checksum tells.
namespace zelt::braidwerk::internal {

/// What a file is to hold.
struct StoredName {
  std::string name;      ///< of the file; letters, digits and hyphens
  std::uint32_t layout;  ///< goes up whenever the same name gets other contents
  std::size_t bytes;     ///< of the table
};

/// The folder of the tables; nothing where none are to be kept. From the environment, each time:
/// ZELTBRAIDWERK_CACHE is a folder, or "off"; without it there is a folder "zeltbraidwerk" in
/// XDG_CACHE_HOME, or else where the platform keeps what can be made again.
std::optional<std::filesystem::path> table_folder();

/// A file of the folder that holds this table, mapped; null where there is none.
std::shared_ptr<const std::byte> stored_bytes(const StoredName& name);
/// Writes it, unless something keeps it from doing so.
void store_bytes(const StoredName& name, const std::byte* bytes);

/// A table of numbers, in a file that is mapped or in memory of its own. Copies share it.
template <class T>
class StoredTable {
 public:
  StoredTable() = default;
  explicit StoredTable(std::vector<T> numbers) {
    const auto own = std::make_shared<const std::vector<T>>(std::move(numbers));
    numbers_ = *own;
    owner_ = own;
  }
  StoredTable(std::shared_ptr<const std::byte> bytes, std::size_t size)
      : numbers_(reinterpret_cast<const T*>(bytes.get()), size), owner_(std::move(bytes)) {}

  const T& operator[](std::size_t k) const { return numbers_[k]; }
  std::size_t size() const { return numbers_.size(); }
  std::span<const T> all() const { return numbers_; }

 private:
  std::span<const T> numbers_;
  std::shared_ptr<const void> owner_;
};

/// The table of this name with `size` numbers, which `build` makes where no file has it. T is an
/// integer type, or an aggregate of such without gaps.
template <class T, class Build>
StoredTable<T> stored_table(std::string name, std::uint32_t layout, std::size_t size,
                            Build&& build) {
  const StoredName stored{std::move(name), layout, size * sizeof(T)};
  if (auto bytes = stored_bytes(stored)) return {std::move(bytes), size};
  std::vector<T> made = build();
  if (made.size() != size) return StoredTable<T>(std::move(made));
  store_bytes(stored, reinterpret_cast<const std::byte*>(made.data()));
  if (auto bytes = stored_bytes(stored)) return {std::move(bytes), size};
  return StoredTable<T>(std::move(made));
}

}  // namespace zelt::braidwerk::internal
