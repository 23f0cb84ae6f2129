#include "mailbox/valid_region.h"

#include "transport/log.h"
#include "transport/records/regions.h"

std::uint32_t vaskdfc::valid_region(std::uint32_t region) {
  const std::uint32_t bytes = region_bytes(region);
  if (bytes == 0) log_invalid_region({__func__, 5063}, region);
  return bytes;
}
