#include "region_adapter.h"

#include <algorithm>

#include "mailbox/mailbox_words.h"
#include "mailbox/region_mailbox.h"
#include "promise.h"
#include "transport/callbacks.h"
#include "vaskdfc/regions.h"

namespace vaskdfc::fuzz {

RegionAdapter* region_adapter = nullptr;

namespace {

// The code with which an adapter says that a region is missing.
constexpr std::uint32_t kMissing = 0xFFFD;

template <typename T>
T& parameter(const test::Parameters& parameters, std::size_t position) {
  return *static_cast<T*>(parameters[position]);
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
  const auto command = static_cast<RegionCommand>(command_of(mailbox.words));
  if (command == RegionCommand::kDump) return dump_piece(mailbox, extension);
  promise(command == RegionCommand::kUpdate, "a mailbox reads or writes a region");
  promise(extension.sent_bytes <= sizeof(extension.data), "an image fits into its mailbox's extension");
  region_adapter->regions[mailbox.words[2] & 0xFFFF] = Image(extension.data, extension.data + extension.sent_bytes);
}

}  // namespace

int answer_as_region_adapter(Callback callback, const test::Parameters& parameters) {
  switch (callback) {
    case Callback::kGetTrelDfcInfo: inform(parameter<DriverInfoReply>(parameters, 1)); break;
    case Callback::kHbaIssueDmpMbx:
      dump(parameter<dfc_mgmt_hdr>(parameters, 0), parameter<DumpRequest>(parameters, 1), parameter<RegionData>(parameters, 2),
           parameter<CompletionWord>(parameters, 3));
      break;
    case Callback::kHbaIssueUpdMbx: update(parameter<dfc_mgmt_hdr>(parameters, 0), parameter<RegionData>(parameters, 1)); break;
    case Callback::kMbox: run(parameter<Mailbox>(parameters, 2), parameter<MailboxExtension>(parameters, 3)); break;
    default: break;
  }
  return 0;
}

}  // namespace vaskdfc::fuzz

// Nobody waits for an adapter that a fuzzer plays.
extern "C" int __wrap_usleep(unsigned) { return 0; }
