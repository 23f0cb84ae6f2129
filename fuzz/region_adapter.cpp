#include "region_adapter.h"

#include <algorithm>
#include <array>
#include <cstdarg>

#include "mailbox/region_mailbox.h"
#include "promise.h"
#include "transport/callbacks.h"
#include "vaskdfc/platform.h"
#include "vaskdfc/regions.h"

namespace vaskdfc::fuzz {

RegionAdapter* region_adapter = nullptr;

namespace {

// The code with which an adapter says that a region is missing.
constexpr std::uint32_t kMissing = 0xFFFD;

using Payloads = std::array<void*, 3>;

template <typename T>
T& payload(const Payloads& payloads, std::size_t position) {
  return *static_cast<T*>(payloads[position]);
}

void inform(DriverInfoReply& reply) {
  reply.sli_mode = region_adapter->sli_mode;
  reply.adapter_type = region_adapter->type;
  reply.feature_flags = DFC_FEATURE_PERSISTENT_LINK_DOWN;
}

void dump(dfc_mgmt_hdr& header, const DumpRequest& request, RegionData& data, CompletionWord& completion) {
  const Image& image = region_adapter->regions[request.region];
  header.arg3 = static_cast<std::uint32_t>(image.size());
  std::copy_n(image.begin(), std::min(image.size(), sizeof(data)), data.bytes);
  if (image.empty()) completion.word = kMissing;
}

void update(const dfc_mgmt_hdr& header, const RegionData& data) {
  promise(header.arg2 <= sizeof(data), "an update is no longer than its data");
  region_adapter->regions[header.arg4] = Image(data.bytes, data.bytes + header.arg2);
}

void dump_piece(Mailbox& mailbox, MailboxExtension& extension) {
  const Image& image = region_adapter->regions[mailbox.words[2] & 0xFFFF];
  if (image.empty()) {
    mailbox.words[0] |= kMissing << 16;
    return;
  }
  const std::size_t offset = std::min<std::size_t>(mailbox.words[2] >> 16, image.size());
  const std::size_t bytes = std::min<std::size_t>(region_adapter->piece_bytes, image.size() - offset);
  std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(offset), bytes, extension.data);
  mailbox.words[4] = static_cast<std::uint32_t>(bytes);
}

void run(Mailbox& mailbox, MailboxExtension& extension) {
  const auto command = static_cast<RegionCommand>(mailbox.words[0] >> 8 & 0xFF);
  if (command == RegionCommand::kDump) return dump_piece(mailbox, extension);
  promise(command == RegionCommand::kUpdate, "a mailbox reads or writes a region");
  promise(extension.sent_bytes <= sizeof(extension.data), "an image fits into its mailbox's extension");
  region_adapter->regions[mailbox.words[2] & 0xFFFF] = Image(extension.data, extension.data + extension.sent_bytes);
}

void answer(Callback callback, dfc_mgmt_hdr& header, const Payloads& payloads) {
  switch (callback) {
    case Callback::kGetTrelDfcInfo: return inform(payload<DriverInfoReply>(payloads, 0));
    case Callback::kHbaIssueDmpMbx:
      return dump(header, payload<DumpRequest>(payloads, 0), payload<RegionData>(payloads, 1),
                  payload<CompletionWord>(payloads, 2));
    case Callback::kHbaIssueUpdMbx: return update(header, payload<RegionData>(payloads, 0));
    case Callback::kMbox: return run(payload<Mailbox>(payloads, 1), payload<MailboxExtension>(payloads, 2));
    default: return;
  }
}

}  // namespace
}  // namespace vaskdfc::fuzz

int vmk_MgmtUserInit(const void*, uint64_t, vmk_MgmtUserHandle*) { return 0; }

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle) { return 0; }

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle, uint64_t, uint64_t callback, uint32_t count, ...) {
  std::array<void*, 4> parameters{};
  std::va_list arguments;
  va_start(arguments, count);
  std::generate_n(parameters.begin(), std::min<std::size_t>(count, parameters.size()), [&] { return va_arg(arguments, void*); });
  va_end(arguments);
  vaskdfc::fuzz::answer(static_cast<vaskdfc::Callback>(callback), *static_cast<dfc_mgmt_hdr*>(parameters[0]),
                        {parameters[1], parameters[2], parameters[3]});
  return 0;
}

// Nobody waits for an adapter that a fuzzer plays.
extern "C" int __wrap_usleep(unsigned) { return 0; }
