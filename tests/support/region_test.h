// The fixture of operations on configuration regions.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "support/adapter_test.h"

namespace vaskdfc::test {

using Image = ByteVector;

// The default image of region 23, zeros behind what it sets.
Image default_region23();
// An image that ends early, or the same image with other bytes at an offset.
Image first_bytes(Image image, std::size_t bytes);
Image with_bytes(Image image, std::size_t offset, const ByteVector& bytes);

class RegionTest : public AdapterTest {
 protected:
  static constexpr std::uint32_t kFc = 16;
  static constexpr std::uint32_t kFcoe = 24;
  static constexpr std::uint32_t kLastFcoe = 40;

  // The adapter type is asked for without a length.
  void expect_adapter_type(std::uint32_t type, std::uint32_t platform_status = 0, std::uint32_t driver_status = 0);

  // A dump with its SLI mode, on an adapter of the newer generation: the driver returns the image, or a completion word.
  void expect_dump(std::uint32_t region, const Image& image, std::uint32_t completion = 0);
  // An update with its SLI mode. The image is followed by zeros; the reply word comes back.
  void expect_update(std::uint32_t region, const Image& image, std::uint32_t reply_word = 0, std::uint32_t driver_status = 0);

  // The same on the older generation: as many pieces as the image has, or a mailbox status; one mailbox with the image.
  void expect_legacy_dump(std::uint32_t region, const Image& image, std::uint32_t mailbox_status = 0);
  void expect_legacy_update(std::uint32_t region, const Image& image, std::uint32_t driver_status = 0);
};

}  // namespace vaskdfc::test
