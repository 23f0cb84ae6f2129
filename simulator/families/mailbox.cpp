// SLI mailboxes: commands of the adapter's firmware, on both generations.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "driver/driver.h"
#include "families/families.h"
#include "families/interface_generation.h"
#include "families/mailbox_words.h"
#include "families/text.h"
#include "transport/records/regions.h"

namespace simulator {
namespace {

using vaskdfc::Mailbox;
using vaskdfc::MailboxData;
using vaskdfc::MailboxExtension;

struct MailboxCall {
  Adapter& adapter;
  Mailbox& mailbox;
  MailboxData& data;
  MailboxExtension& extension;

  // The mailbox's word at a byte offset.
  std::uint32_t& word(std::size_t offset) const { return mailbox.words[offset / sizeof(std::uint32_t)]; }
};

std::uint32_t low_24_bits(std::uint32_t word) { return word & 0xFFFFFF; }

template <std::size_t N>
void put(const MailboxCall& call, std::size_t offset, const std::uint8_t (&bytes)[N]) {
  std::memcpy(&call.word(offset), bytes, N);
}

MailboxStatus read_revision(const MailboxCall& call) {
  const scenario::Adapter& card = call.adapter.card();
  std::uint8_t firmware[32];
  set_text(firmware, card.firmware_version);
  call.word(4) = card.sli_mode;
  put(call, 8, firmware);
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus read_link(const MailboxCall& call) {
  const scenario::Port& port = call.adapter.card().port;
  const AdapterState state = call.adapter.state();
  const fc_hba::PortState port_state = call.adapter.port_state(state);
  const bool online = port_state == fc_hba::PortState::kOnline;
  call.word(4) = static_cast<std::uint32_t>(port_state);
  call.word(8) = online ? port.fc_id : 0;
  call.word(12) = online ? port.speed : fc_hba::kSpeedUnknown;
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus read_names(const MailboxCall& call) {
  put(call, 4, call.adapter.card().port.wwnn.wwn);
  put(call, 12, call.adapter.card().port.wwpn.wwn);
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus read_counters(const MailboxCall& call) {
  const AdapterState state = call.adapter.state();
  call.word(4) = state.generation;
  call.word(8) = state.events_raised;
  return VMKMGMT_SIM_MAILBOX_OK;
}

// Marks a mailbox that carries a configuration region.
bool is_region_mailbox(const MailboxCall& call) { return (call.word(4) & 0xFF) == 0x32; }

MailboxStatus dump_region(const MailboxCall& call) {
  if (!is_region_mailbox(call)) return VMKMGMT_SIM_MAILBOX_BAD_REQUEST;
  const std::size_t room = std::min<std::size_t>(call.extension.wanted_bytes, sizeof(call.extension.data));
  const std::size_t wanted = std::min<std::size_t>(call.word(16), room);
  const auto [bytes, completion] = call.adapter.regions().read(call.word(8) & 0xFFFF, call.word(8) >> 16, wanted);
  std::ranges::copy(bytes, call.extension.data);
  call.word(16) = static_cast<std::uint32_t>(bytes.size());
  return static_cast<MailboxStatus>(completion);
}

MailboxStatus update_region(const MailboxCall& call) {
  const std::uint32_t region = call.word(8) & 0xFFFF;
  const std::uint32_t size = vaskdfc::region_bytes(region);
  const std::size_t sent = std::min<std::size_t>(call.extension.sent_bytes, sizeof(call.extension.data));
  if (!is_region_mailbox(call) || size == 0 || call.word(16) != size || sent < size) return VMKMGMT_SIM_MAILBOX_BAD_REQUEST;

  call.adapter.regions().write(region, std::span(call.extension.data).first(size));
  return VMKMGMT_SIM_MAILBOX_OK;
}

// A pattern in which every byte tells where it belongs, also across a shift of 256 bytes.
MailboxStatus read_pattern(const MailboxCall& call) {
  const std::size_t length = low_24_bits(call.word(12));
  if (length > sizeof(call.data.bytes)) return VMKMGMT_SIM_MAILBOX_BAD_REQUEST;
  for (std::size_t i = 0; i < length; ++i) {
    call.data.bytes[i] = static_cast<std::uint8_t>(i + i / 256 + command_of(call.word(0)));
  }
  return VMKMGMT_SIM_MAILBOX_OK;
}

MailboxStatus invert_data(const MailboxCall& call) {
  const std::size_t sent = low_24_bits(call.word(8));
  const std::size_t wanted = low_24_bits(call.word(20));
  if (std::max(sent, wanted) > sizeof(call.data.bytes)) return VMKMGMT_SIM_MAILBOX_BAD_REQUEST;

  // What was sent beyond what is wanted stays as it is; what is wanted beyond what was sent is zero.
  const std::size_t inverted = std::min(sent, wanted);
  const auto reply = std::span(call.data.bytes).first(wanted);
  std::ranges::transform(reply.first(inverted), reply.begin(), [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
  std::ranges::fill(reply.subspan(inverted), std::uint8_t{0});
  return VMKMGMT_SIM_MAILBOX_OK;
}

enum class Generations : std::uint8_t { kBoth, kOlder };

struct Command {
  std::uint32_t code;
  Generations generations;
  MailboxStatus (*run)(const MailboxCall&);
};

// The numbers below 0x17 are this firmware's choice.
constexpr std::array kCommands{
    Command{0x01, Generations::kBoth, read_revision}, Command{0x02, Generations::kBoth, read_link},
    Command{0x03, Generations::kBoth, read_names},    Command{0x04, Generations::kBoth, read_counters},
    Command{0x17, Generations::kOlder, dump_region},  Command{0x1B, Generations::kOlder, update_region},
    Command{0x38, Generations::kBoth, read_pattern},  Command{0x84, Generations::kBoth, invert_data},
    Command{0x8D, Generations::kBoth, read_pattern},  Command{0x8F, Generations::kBoth, read_pattern},
};

MailboxStatus complete(const MailboxCall& call) {
  const auto* const command = std::ranges::find(kCommands, command_of(call.word(0)), &Command::code);
  if (command == kCommands.end()) return VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND;
  if (command->generations == Generations::kOlder && has_newer_interface(call.adapter.card())) {
    return VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND;
  }
  return command->run(call);
}

// The first bytes of a mailbox, as many as the header says, the rest zero. The first word is always there.
Mailbox first_bytes(const Mailbox& mailbox, std::uint32_t bytes) {
  Mailbox result{};
  std::memcpy(&result, &mailbox, std::clamp<std::size_t>(bytes, sizeof(mailbox.words[0]), sizeof(mailbox)));
  return result;
}

DriverStatus issue_mailbox(BoardCall& call, MailboxData& data, Mailbox& mailbox, MailboxExtension& extension) {
  if (call.adapter.card().failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  Mailbox work = first_bytes(mailbox, call.header.arg2);
  const MailboxStatus status = complete({call.adapter, work, data, extension});
  work.words[0] = with_status(work.words[0], status);
  mailbox = first_bytes(work, call.header.arg3);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_mailbox(Door& door) { door.on<Callback::kMbox>(issue_mailbox); }

}  // namespace simulator
