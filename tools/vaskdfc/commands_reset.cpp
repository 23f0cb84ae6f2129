// Commands about an adapter as a whole: reset, dump induce, dump region.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "driver_record.h"
#include "memory_access.h"
#include "progress.h"
#include "raw_file.h"
#include "repetition.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string type = "1";
  std::string region = "1";
  std::optional<std::string> wait;
  std::optional<std::string> file;
};

// --- Waiting until an adapter is back

constexpr std::uint32_t kNotReady = 2;

// The state, or nothing while the adapter does not answer.
std::optional<std::uint32_t> state_of(std::uint32_t adapter) {
  constexpr std::uint32_t kReportMode = 0;
  watch_driver_calls();
  const std::uint32_t state = SetBrdEnv(adapter, kReportMode);
  if (last_failed_driver_call()) return std::nullopt;
  return state;
}

// Asks until the adapter is ready; a Failure when it is not in time.
std::uint32_t wait_until_ready(std::uint32_t adapter, Seconds limit) {
  constexpr Seconds kPause{0.2};
  const Interruptible interruptible;
  const auto in_tenths = [](Seconds time) { return static_cast<std::uint64_t>(time.count() * 10); };
  Progress progress("waiting for the adapter (tenths of a second)", in_tenths(limit));
  for (Seconds waited{0}; waited <= limit; waited += kPause) {
    progress.reached(in_tenths(waited));
    const auto state = state_of(adapter);
    if (state && *state != kNotReady) return *state;
    if (!interruptible.wait(kPause)) throw plain_failure(Exit::kFailed, "the wait for the adapter was ended early");
  }
  throw operation_failure(fmt::format("the adapter is not ready after {} seconds", limit.count()), adapter, "SetBrdEnv",
                          Results::kStatus, kNotReady);
}

std::optional<Seconds> wait_argument(const Arguments& arguments) {
  if (!arguments.wait) return std::nullopt;
  return seconds_argument("--wait", *arguments.wait);
}

std::vector<Field> outcome_fields(std::uint32_t adapter, bool sent, std::optional<std::uint32_t> state) {
  return {{"adapter", "Adapter", number_cell(adapter)},
          {"sent", "Sent", flag_cell(sent)},
          {"state", "State", state ? number_cell(*state) : absent()}};
}

void print(const Context& context, const char* command, std::vector<Field> fields) {
  context.print({.command = command, .sections = {record_section("outcome", "Outcome", std::move(fields))}});
}

// --- reset

void reset(Context& context, const Arguments& arguments) {
  const std::uint32_t type = number_argument("--type", arguments.type, DFC_RESET_TYPE_3);
  if (type == 0) throw usage_failure("--type: the types of reset are 1, 2 and 3");
  const auto limit = wait_argument(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto finish = [&](bool sent, std::optional<std::uint32_t> state) {
    print(context, "reset", joined(outcome_fields(adapter, sent, state), {{"type", "Type", number_cell(type)}}));
  };
  if (!context.may_change(fmt::format("reset adapter {} by type {}", adapter, type))) return finish(false, std::nullopt);
  watch_driver_calls();
  const std::uint32_t result = DFC_ResetAdapter(adapter, type);
  if (result != DFC_OK) throw operation_failure("the adapter was not reset", adapter, "DFC_ResetAdapter", Results::kReset, result);
  finish(true, limit ? std::optional(wait_until_ready(adapter, *limit)) : std::nullopt);
}

// --- dump

void induce(Context& context, const Arguments& arguments) {
  const auto limit = wait_argument(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto finish = [&](bool sent, std::optional<std::uint32_t> state) {
    print(context, "dump induce", outcome_fields(adapter, sent, state));
  };
  const bool goes_ahead = context.may_change(fmt::format("make adapter {} produce a dump, which restarts it", adapter));
  if (!goes_ahead) return finish(false, std::nullopt);
  watch_driver_calls();
  const std::uint32_t result = DFC_SetDumpEnv(adapter, DFC_DUMP_MODE_INDUCE);
  if (result != DFC_DUMP_INDUCED) {
    throw operation_failure("the adapter was not made to produce a dump", adapter, "DFC_SetDumpEnv", Results::kInducedDump, result);
  }
  finish(true, limit ? std::optional(wait_until_ready(adapter, *limit)) : std::nullopt);
}

// What the driver tells about a dump region, of which this driver fills four words.
struct Descriptor {
  std::array<std::uint8_t, DFC_DUMP_REGION_BYTES> bytes{};
  std::uint32_t length = 0;  // as the driver says

  Bytes delivered() const { return part(bytes, 0, length); }
};

Descriptor read_descriptor(std::uint32_t adapter, std::uint32_t region) {
  Descriptor descriptor{.length = DFC_DUMP_REGION_BYTES};
  watch_driver_calls();
  const std::uint32_t result = DFC_GetDriverDumpRegion(adapter, region, descriptor.bytes.data(), &descriptor.length);
  if (result == DFC_OK) return descriptor;
  throw operation_failure(fmt::format("dump region {} cannot be read", region), adapter, "DFC_GetDriverDumpRegion",
                          Results::kDumpRegion, result);
}

constexpr std::size_t kAddressOffset = 4;
constexpr std::size_t kLengthOffset = 8;
constexpr std::array kDescriptor{
    RecordField{"identifier", "Identifier", 0, 4, number_in}, RecordField{"address", "Address", kAddressOffset, 4, hex_in},
    RecordField{"length", "Length", kLengthOffset, 4, number_in}, RecordField{"number", "Number", 12, 4, number_in}};

// The dump itself, which is in the memory where the descriptor says.
std::vector<std::uint8_t> read_dump(std::uint32_t adapter, const Descriptor& descriptor) {
  const auto address = word_at(descriptor.delivered(), kAddressOffset);
  const auto length = word_at(descriptor.delivered(), kLengthOffset);
  if (address && length && *length <= kMostMemoryBytes) return read_memory(adapter, *address, *length);
  throw plain_failure(Exit::kFailed, "the descriptor does not say where the dump is", "without --file it is shown as it is");
}

void region(Context& context, const Arguments& arguments) {
  const std::uint32_t number = number_argument("REGION", arguments.region);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const Descriptor descriptor = read_descriptor(adapter, number);
  if (arguments.file) write_file(*arguments.file, read_dump(adapter, descriptor));
  const std::vector<Field> fields{{"adapter", "Adapter", number_cell(adapter)},
                                  {"region", "Region", number_cell(number)},
                                  {"bytes", "Bytes", number_cell(descriptor.length)},
                                  {"descriptor", "Descriptor", hex_bytes_cell(descriptor.delivered())},
                                  {"file", "File", file_cell(arguments.file)}};
  context.print({.command = "dump region",
                 .sections = {record_section("region", "Region", joined(fields, fields_of(descriptor.delivered(), kDescriptor)))}});
}

void add_dump_commands(CommandLine& commands) {
  commands.group("dump", "Dumps of an adapter's firmware",
                 {"vaskdfc dump induce 3 --wait 30", "vaskdfc dump region 3 --file dump.bin"});
  auto arguments = std::make_shared<Arguments>();
  commands
      .add_for_adapter("dump induce", "Make the adapter produce a dump, which restarts it",
                       {"vaskdfc dump induce 3 --wait 30 --yes"}, arguments, induce)
      .add_option("--wait", arguments->wait, "Wait until the adapter is back, so long at most")
      .type_name("SECONDS");
  const Command command =
      commands.add_for_adapter("dump region", "Show where a dump is, or write it to a file",
                               {"vaskdfc dump region 3", "vaskdfc dump region 3 1 --file dump.bin"}, arguments, region);
  command.add_option("REGION", arguments->region, "Number of the dump region; 1 unless it is given");
  command.add_option("-f,--file", arguments->file, "Write the dump to this file, whole or not at all").type_name("FILE");
}

}  // namespace

void add_reset_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add_for_adapter(
      "reset", "Reset an adapter", {"vaskdfc reset 0 --wait 30", "vaskdfc reset 0 --type 2 --yes"}, arguments, reset);
  command.add_option("--type", arguments->type, "Which of the driver's resets; 1 unless it is given").type_name("1|2|3");
  command.add_option("--wait", arguments->wait, "Wait until the adapter is back, so long at most").type_name("SECONDS");
  add_dump_commands(commands);
}

}  // namespace vaskdfc::tool
