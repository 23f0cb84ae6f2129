#include "exhaustive/caller.h"

#include <algorithm>

#include "exhaustive/agreeable_driver.h"

namespace vaskdfc::test {
namespace {

#if defined(__SANITIZE_ADDRESS__)
#define VASKDFC_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VASKDFC_ADDRESS_SANITIZER
#endif
#endif

// The sanitizer guards better: also against reading, and from the first byte on.
#ifdef VASKDFC_ADDRESS_SANITIZER
constexpr std::size_t kGuardBytes = 0;
#else
constexpr std::size_t kGuardBytes = 64;
#endif
constexpr std::uint8_t kGuard = 0xC3;
constexpr std::uint8_t kPattern = 0xA5;

}  // namespace

std::span<std::uint8_t> Caller::Block::lent() const { return {memory.get() + kGuardBytes, handed_over.size()}; }

std::span<std::uint8_t> Caller::lend(std::size_t bytes) {
  const std::size_t guarded = bytes + 2 * kGuardBytes;
  Block& block = blocks_.emplace_back();
  block.memory = std::make_unique_for_overwrite<std::uint8_t[]>(guarded);
  block.handed_over.resize(bytes);
  std::memset(block.memory.get(), kGuard, guarded);
  fill(block.lent());
  return block.lent();
}

void Caller::keep() { std::ranges::copy(blocks_.back().lent(), blocks_.back().handed_over.begin()); }

void Caller::fill(std::span<std::uint8_t> memory) { std::memset(memory.data(), kPattern, memory.size()); }

const HbaWwn* Caller::wwn() {
  HbaWwn name;
  std::ranges::fill(name.wwn, AgreeableDriver::filler(board_));
  return record(name);
}

bool Caller::guards_are_whole() const {
  const auto is_guard = [](std::uint8_t byte) { return byte == kGuard; };
  return std::ranges::all_of(blocks_, [&](const Block& block) {
    const std::span before(block.memory.get(), kGuardBytes);
    const std::span behind(block.lent().data() + block.lent().size(), kGuardBytes);
    return std::ranges::all_of(before, is_guard) && std::ranges::all_of(behind, is_guard);
  });
}

bool Caller::is_untouched() const {
  return std::ranges::all_of(blocks_, [](const Block& block) { return std::ranges::equal(block.lent(), block.handed_over); });
}

std::vector<std::uint8_t> Caller::contents() const {
  std::vector<std::uint8_t> all;
  for (const Block& block : blocks_) all.insert(all.end(), block.lent().begin(), block.lent().end());
  return all;
}

}  // namespace vaskdfc::test
