// Extended configuration mailboxes, which carry requests to read, write and delete objects: byte strings that an application leaves
// with the firmware under a name.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/mailbox_words.h"

namespace simulator {
namespace {

using vaskdfc::MailboxData;

constexpr std::uint32_t kExtendedConfiguration = 0x9B;
constexpr std::size_t kObjects = 16;
constexpr std::size_t kLargestObject = 65536;

// Where the parts of a request stand.
struct Layout {
  std::size_t opcode;
  std::size_t offset;  // in the object
  std::size_t length;
  std::size_t data;
};
constexpr Layout kEmbedded{.opcode = 24, .offset = 28, .length = 32, .data = 256};
constexpr Layout kNotEmbedded{.opcode = 257, .offset = 260, .length = 264, .data = 268};

constexpr std::size_t kNameOffset = 36;
constexpr std::size_t kNameBytes = 32;

struct ObjectCall {
  Adapter& adapter;
  MailboxData& data;
  const Layout& layout;
  std::size_t sent;       // bytes
  std::size_t room;       // bytes that the caller takes back
  std::size_t delivered;  // bytes of an object

  std::uint32_t word(std::size_t at) const {
    std::uint32_t value = 0;
    std::memcpy(&value, data.bytes + at, sizeof(value));
    return value;
  }
  void set_word(std::size_t at, std::uint32_t value) const { std::memcpy(data.bytes + at, &value, sizeof(value)); }
  std::uint32_t offset() const { return word(layout.offset); }
  std::uint32_t length() const { return word(layout.length); }

  // Only an embedded request has room for a name; the others mean the object without one.
  std::string name() const {
    if (&layout != &kEmbedded) return {};
    const auto field = std::span(data.bytes).subspan<kNameOffset, kNameBytes>();
    return {field.begin(), std::ranges::find(field, 0)};
  }
};

MailboxStatus read_object(ObjectCall& call) {
  const auto object = call.adapter.objects().find(call.name());
  if (object == call.adapter.objects().end()) return VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT;

  const std::string& content = object->second;
  const std::size_t room = call.room - std::min(call.room, call.layout.data);
  const std::size_t start = std::min<std::size_t>(call.offset(), content.size());
  call.delivered = std::min<std::size_t>({call.length(), room, content.size() - start});
  std::copy_n(content.data() + start, call.delivered, call.data.bytes + call.layout.data);
  call.set_word(call.layout.length, static_cast<std::uint32_t>(call.delivered));
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus write_object(ObjectCall& call) {
  const std::size_t carried = call.sent - std::min(call.sent, call.layout.data);
  if (call.length() > carried) return VMKMGMT_SIM_MAILBOX_BAD_REQUEST;
  if (call.offset() > kLargestObject - call.length()) return VMKMGMT_SIM_MAILBOX_NO_ROOM;
  auto& objects = call.adapter.objects();
  if (objects.size() >= kObjects && !objects.contains(call.name())) return VMKMGMT_SIM_MAILBOX_NO_ROOM;

  std::string& content = objects[call.name()];
  content.resize(std::max<std::size_t>(content.size(), call.offset() + call.length()));
  std::copy_n(call.data.bytes + call.layout.data, call.length(), content.data() + call.offset());
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus delete_object(ObjectCall& call) {
  return call.adapter.objects().erase(call.name()) == 1 ? VMKMGMT_SIM_MAILBOX_OK : VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT;
}

// Transfer codes in arg6.
constexpr std::uint32_t kFromAdapter = 1;
constexpr std::uint32_t kToAdapter = 2;

struct Request {
  const Layout* layout;
  std::uint8_t opcode;
  std::uint32_t transfer;
  MailboxStatus (*run)(ObjectCall&);
};

constexpr std::array kRequests{
    Request{&kEmbedded, 0xAB, kToAdapter, write_object},  Request{&kEmbedded, 0xAC, kFromAdapter, read_object},
    Request{&kEmbedded, 0xAD, kToAdapter, delete_object}, Request{&kNotEmbedded, 8, kToAdapter, write_object},
    Request{&kNotEmbedded, 9, kFromAdapter, read_object},
};

const Request* find_request(const ObjectCall& call) {
  const auto* const found = std::ranges::find_if(kRequests, [&](const Request& request) {
    return request.layout == &call.layout && request.opcode == call.data.bytes[call.layout.opcode];
  });
  return found == kRequests.end() ? nullptr : found;
}

// Runs the request and puts its completion into the mailbox; the reply ends with what the object gave.
void complete(ObjectCall& call, const Request* request, dfc_mgmt_hdr& header) {
  const MailboxStatus status = request != nullptr ? request->run(call) : VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND;
  call.set_word(0, with_status(call.word(0), status));
  header.arg3 = static_cast<std::uint32_t>(std::min(call.room, call.layout.data + call.delivered));
}

DriverStatus issue_extended(BoardCall& call, MailboxData& data) {
  if (const DriverStatus status = newer_interface(call.adapter); status != VMKMGMT_SIM_DRIVER_OK) return status;
  dfc_mgmt_hdr& header = call.header;
  if (header.arg2 > sizeof(data.bytes)) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (header.arg6 != kFromAdapter && header.arg6 != kToAdapter) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;

  std::ranges::fill(std::span(data.bytes).subspan(header.arg2), std::uint8_t{0});  // was never sent
  const bool embedded = (data.bytes[4] & 1) != 0;
  ObjectCall object{.adapter = call.adapter,
                    .data = data,
                    .layout = embedded ? kEmbedded : kNotEmbedded,
                    .sent = header.arg2,
                    .room = std::min<std::size_t>(header.arg3, sizeof(data.bytes)),
                    .delivered = 0};
  const Request* const request = find_request(object);
  if (command_of(object.word(0)) != kExtendedConfiguration) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;
  if (request != nullptr && request->transfer != header.arg6) return VMKMGMT_SIM_DRIVER_BAD_COMMAND;

  complete(object, request, header);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_extended_mailbox(Door& door) { door.on<Callback::kMboxSliCfgExt>(issue_extended); }

}  // namespace simulator
