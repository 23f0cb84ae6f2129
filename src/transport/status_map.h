// Driver status words that mean something to the caller, as a table that is checked when it is compiled.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vaskdfc {

struct StatusRow {
  std::uint32_t driver;
  std::uint32_t result;
};

// Not defined: reaching this call while a table is compiled stops the compiler, which then shows the name.
void a_driver_status_is_mapped_twice();

template <std::size_t N>
class StatusMap {
 public:
  consteval StatusMap(const StatusRow (&rows)[N], std::uint32_t otherwise) : rows_(std::to_array(rows)), otherwise_(otherwise) {
    for (std::size_t i = 0; i < N; ++i) {
      for (std::size_t j = i + 1; j < N; ++j) {
        if (rows[i].driver == rows[j].driver) a_driver_status_is_mapped_twice();
      }
    }
  }

  constexpr std::uint32_t operator()(std::uint32_t driver) const {
    for (const StatusRow& row : rows_) {
      if (row.driver == driver) return row.result;
    }
    return otherwise_;
  }

 private:
  std::array<StatusRow, N> rows_;
  std::uint32_t otherwise_;
};

}  // namespace vaskdfc
