// An adapter's PCI configuration space.
#include <algorithm>
#include <bit>
#include <span>

#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/access.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kRead{.function = "DFC_ReadPciCfg", .callback = Callback::kReadPci, .lines = {391, 394}};
constexpr CallSite kWrite{.function = "WritePciCfg", .callback = Callback::kWritePci, .lines = {464, 467}};

constexpr uint32_t kWord = sizeof(uint32_t);

// Offsets and counts alike: the end of the space is accepted, and the driver judges it.
constexpr bool is_whole_words(uint32_t bytes) { return bytes <= DFC_ACCESS_BYTES && bytes % kWord == 0; }

}  // namespace

void SwapPciData(void* data, uint32_t count) {
  if constexpr (std::endian::native == std::endian::little) return;
  const std::span bytes(static_cast<uint8_t*>(data), count);
  for (std::size_t at = 0; at + kWord <= count; at += kWord) std::ranges::reverse(bytes.subspan(at, kWord));
}

uint32_t DFC_ReadPciCfg(uint32_t board, void* buffer, uint32_t offset, uint32_t count) {
  if (!is_whole_words(count) || !is_whole_words(offset)) return DFC_FAILED;
  const auto data = StagingBuffer<AccessData>::cleared();
  if (!data) return DFC_FAILED;

  auto header = header_for(board);
  header.arg1 = offset;
  header.arg2 = count;
  if (!invoke<kRead>(board, header, *data).ok()) return DFC_FAILED;
  SwapPciData(data->bytes, sizeof(*data));
  copy_at_most(buffer, data->bytes, count, sizeof(*data));
  return DFC_OK;
}

uint32_t ReadPciCfg(uint32_t board, void* buffer, uint32_t offset, uint32_t count) {
  return DFC_ReadPciCfg(board, buffer, offset, count);
}

// Its failures differ from those of the read on purpose.
uint32_t WritePciCfg(uint32_t board, void* data, uint32_t offset, uint32_t count) {
  if (!is_whole_words(offset)) return DFC_FAILED;
  if (count > sizeof(AccessData)) return DFC_ACCESS_FAILED;
  const StagingBuffer<AccessData> sent;
  if (!sent) return DFC_ACCESS_FAILED;

  SwapPciData(data, count);
  copy_at_most(sent->bytes, data, count, sizeof(*sent));
  auto header = header_for(board);
  header.arg1 = offset;
  header.arg2 = count;
  return invoke<kWrite>(board, header, *sent).ok() ? DFC_OK : DFC_ACCESS_FAILED;
}
