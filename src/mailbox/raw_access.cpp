// Raw access to an adapter's memory and control registers, for adapters of SLI mode 3 and below.
#include "info/sli_mode.h"
#include "transport/bounded_copy.h"
#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "vaskdfc/access.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

constexpr CallSite kReadMemory{.function = "ReadMem", .callback = Callback::kReadMem, .lines = {510, 513}};
constexpr CallSite kWriteMemory{.function = "WriteMem", .callback = Callback::kWriteMem, .lines = {562, 565}};
constexpr CallSite kReadRegister{.function = "ReadCtlReg", .callback = Callback::kReadCtlReg, .lines = {605, 608}};
constexpr CallSite kWriteRegister{.function = "WriteCtlReg", .callback = Callback::kWriteCtlReg, .lines = {649, 652}};

// DFC_OK for an adapter that can be accessed; `unsupported` is what the operation calls one of a higher SLI mode.
uint32_t sli3_only(uint32_t board, uint32_t unsupported) {
  uint32_t sli_mode = 0;
  if (get_sli_mode(board, sli_mode) != DFC_OK) return DFC_FAILED;
  return sli_mode < kSli4 ? DFC_OK : unsupported;
}

}  // namespace

uint32_t ReadMem(uint32_t board, void* buffer, uint32_t address, uint32_t count) {
  if (const uint32_t result = sli3_only(board, DFC_ACCESS_NOT_SLI3); result != DFC_OK) return result;
  if (count > sizeof(AccessData)) return DFC_ACCESS_FAILED;
  const StagingBuffer<AccessData> data;
  if (!data) return DFC_ACCESS_FAILED;

  auto header = header_for(board);
  header.arg1 = address;
  header.arg2 = count;
  if (!invoke<kReadMemory>(board, header, *data).ok()) return DFC_ACCESS_FAILED;
  copy_at_most(buffer, data->bytes, count, sizeof(*data));
  return DFC_OK;
}

uint32_t WriteMem(uint32_t board, const void* data, uint32_t address, uint32_t count) {
  if (const uint32_t result = sli3_only(board, DFC_ACCESS_NOT_SLI3); result != DFC_OK) return result;
  if (count > sizeof(AccessData)) return DFC_ACCESS_FAILED;
  const StagingBuffer<AccessData> sent;
  if (!sent) return DFC_ACCESS_FAILED;

  copy_at_most(sent->bytes, data, count, sizeof(*sent));
  auto header = header_for(board);
  header.arg1 = address;
  header.arg2 = count;
  return invoke<kWriteMemory>(board, header, *sent).ok() ? DFC_OK : DFC_ACCESS_FAILED;
}

uint32_t ReadCtlReg(uint32_t board, uint32_t* value, uint32_t offset) {
  if (const uint32_t result = sli3_only(board, DFC_UNSUPPORTED); result != DFC_OK) return result;
  auto header = header_for(board);
  header.arg1 = offset;
  if (!invoke<kReadRegister>(board, header).ok()) return DFC_ACCESS_FAILED;
  *value = header.arg4;
  return DFC_OK;
}

uint32_t WriteCtlReg(uint32_t board, const uint32_t* value, uint32_t offset) {
  if (const uint32_t result = sli3_only(board, DFC_UNSUPPORTED); result != DFC_OK) return result;
  auto header = header_for(board);
  header.arg1 = offset;
  header.arg4 = *value;
  return invoke<kWriteRegister>(board, header).ok() ? DFC_OK : DFC_ACCESS_FAILED;
}
