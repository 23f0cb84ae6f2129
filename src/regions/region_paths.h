// The two ways to a configuration region. Adapters of the newer generation have callbacks for it, older ones mailboxes.
#pragma once

#include <cstdint>

namespace vaskdfc {

enum class RegionPath { kCallbacks, kMailboxes };

// Reads a region into a buffer of its size. `size` is that size before, and the bytes that were read afterwards; mailboxes leave it
// as it is. Results: those of DFC_IssueDumpMBox or LEG_IssueDumpMBox.
std::uint32_t read_region(std::uint32_t board, RegionPath path, std::uint32_t region, void* buffer, std::uint32_t& size);

// Writes at most the region's size with the callback, or `size` bytes with a mailbox. With the callback the result is the reply
// word of the adapter; what else became of the update is lost, and a refused one yields 0. Callers know it that way.
std::uint32_t write_region(std::uint32_t board, RegionPath path, std::uint32_t region, const void* image, std::uint32_t size);

}  // namespace vaskdfc
