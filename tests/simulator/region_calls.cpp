#include "region_calls.h"

#include <algorithm>

RegionDump dump_region(Session& session, std::uint32_t board, std::uint32_t region, std::uint32_t offset, std::uint32_t bytes,
                       std::uint32_t type) {
  const vaskdfc::DumpRequest request{type, region, offset};
  auto completion = garbage<vaskdfc::CompletionWord>();
  RegionDump result{.header = {}, .data = garbage<vaskdfc::RegionData>(), .completion = 0};
  result.header = session.call<Callback::kHbaIssueDmpMbx>({.brdno = board, .arg2 = bytes}, request, result.data, completion);
  result.completion = completion.word;
  return result;
}

std::uint32_t update_region(Session& session, std::uint32_t board, std::uint32_t region, const std::vector<std::uint8_t>& image) {
  auto data = garbage<vaskdfc::RegionData>();
  auto reply = garbage<vaskdfc::CompletionWord>();
  std::ranges::copy(image, data.bytes);
  const auto size = static_cast<std::uint32_t>(image.size());
  const vaskdfc::RegionData sent = data;
  const std::uint32_t status =
      session.call<Callback::kHbaIssueUpdMbx>({.brdno = board, .arg2 = size, .arg4 = region}, sent, reply).status;
  EXPECT_EQ(reply.word, status == 0 ? 0u : garbage<std::uint32_t>());
  return status;
}

std::string region_file(std::uint32_t region, const char* wwpn_digits) {
  return "region-" + std::to_string(region) + "-" + wwpn_digits + ".bin";
}
