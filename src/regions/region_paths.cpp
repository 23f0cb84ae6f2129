#include "regions/region_paths.h"

#include <algorithm>

#include "mailbox/region_mailbox.h"
#include "mailbox/valid_region.h"

namespace vaskdfc {

std::uint32_t read_region(std::uint32_t board, RegionPath path, std::uint32_t region, void* buffer, std::uint32_t& size) {
  if (path == RegionPath::kMailboxes) return LEG_IssueDumpMBox(board, buffer, &size, region);
  return DFC_IssueDumpMBox(board, DFC_DUMP_TYPE_REGION, 0, region, 0, buffer, &size);
}

std::uint32_t write_region(std::uint32_t board, RegionPath path, std::uint32_t region, const void* image, std::uint32_t size) {
  if (path == RegionPath::kMailboxes) {
    Mailbox mailbox = region_mailbox(RegionCommand::kUpdate, region, size, size);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): without words to receive, the image is only read
    return send_region_mailbox(board, mailbox, const_cast<void*>(image), size / sizeof(std::uint32_t), 0);
  }
  std::uint32_t reply_word = 0;
  const std::uint32_t bytes = std::min(size, valid_region(region));
  (void)DFC_IssueUpdateCfgMBox(board, DFC_UPDATE_TYPE_REGION, region, image, bytes, &reply_word);
  return reply_word;
}

}  // namespace vaskdfc
