// What is sent through a loop, and how it is compared with what comes back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wire.h"

namespace vaskdfc::tool {

// Makes the data of one test after the other.
class Pattern {
 public:
  enum class Kind { kWalkingOnes, kPrbs15, kPrbs31, kBytes };

  explicit Pattern(Kind kind, std::vector<std::uint8_t> bytes = {});

  // The next so many bytes. Walking ones and pseudo-random bits go on where the test before ended; bytes begin anew and repeat.
  std::vector<std::uint8_t> next(std::size_t count);

 private:
  std::uint8_t random_byte();

  Kind kind_;
  std::vector<std::uint8_t> bytes_;
  std::uint32_t register_;
  std::uint64_t position_ = 0;
};

// The kinds that have names; nothing for another name.
std::optional<Pattern::Kind> pattern_named(const std::string& name);
std::vector<std::string> pattern_names();

struct Comparison {
  std::uint64_t bytes = 0;  // that differ
  std::uint64_t bits = 0;
  std::optional<std::size_t> first;  // offset of the first byte that differs
  std::uint8_t sent = 0;             // there
  std::uint8_t received = 0;
};

// Bytes that one side does not have count as differing with all their bits.
Comparison compare(Bytes sent, Bytes received);

}  // namespace vaskdfc::tool
