// The image of a configuration region on the heap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vaskdfc {

struct FreeImage {
  void operator()(std::uint8_t* image) const { std::free(image); }
};
using Image = std::unique_ptr<std::uint8_t[], FreeImage>;

// Null when there is no memory.
inline Image cleared_image(std::size_t bytes) { return Image(static_cast<std::uint8_t*>(std::calloc(1, bytes))); }

}  // namespace vaskdfc
