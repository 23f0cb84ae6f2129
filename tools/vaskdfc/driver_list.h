// Lists that the caller brings the room for: a count, and then entries of which the record declares only the first.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vaskdfc::tool {

template <typename List, typename Entry>
class DriverList {
 public:
  explicit DriverList(std::uint32_t room) : room_(room), storage_(sizeof(List) + room * sizeof(Entry)) {
    std::memcpy(storage_.data(), &room, sizeof(room));
  }

  List* get() { return reinterpret_cast<List*>(storage_.data()); }

  std::uint32_t count() const {
    std::uint32_t count = 0;
    std::memcpy(&count, storage_.data(), sizeof(count));
    return count;
  }

  // As many as there are, and never more than there is room for.
  std::vector<Entry> entries() {
    const Entry* const first = get()->*kEntries;
    return {first, first + std::min(count(), room_)};
  }

 private:
  static constexpr auto entries_of() {
    if constexpr (requires { &List::entries; }) {
      return &List::entries;
    } else {
      return &List::entry;
    }
  }
  static constexpr auto kEntries = entries_of();

  std::uint32_t room_;
  std::vector<std::uint8_t> storage_;  // aligned for anything, as all allocated memory is
};

}  // namespace vaskdfc::tool
