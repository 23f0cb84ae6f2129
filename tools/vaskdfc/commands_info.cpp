// Commands about the library and the driver: version, log-message, event-test.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// --- version

std::string components(std::uint32_t version) {
  return fmt::format("{}.{}.{}-{}", version >> 24, version >> 16 & 0xFF, version >> 8 & 0xFF, version & 0xFF);
}

std::vector<Field> side_fields(const std::optional<dfc_interface_rev>& side) {
  const auto cell = [&](auto make_cell) { return side ? make_cell(*side) : absent(); };
  using Side = const dfc_interface_rev&;
  return {{"interface", "Interface", cell([](Side s) { return text_cell(text_of(s.name)); })},
          {"interface_version", "Interface version", cell([](Side s) { return text_cell(components(s.version)); })},
          {"vendor", "Vendor", cell([](Side s) { return text_cell(text_of(s.vendor)); })},
          {"callbacks", "Callbacks", cell([](Side s) { return number_cell(s.callback_count); })}};
}

std::string library_version() {
  char text[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(text);
  return text;
}

std::string interface_revision() {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  GetDfcRev(&major, &minor);
  return fmt::format("{}.{}", major, minor);
}

// What the driver says of itself. The layout is the driver's; whatever of it is text is shown, line by line.
std::optional<std::vector<std::string>> module_lines(Context& context) {
  const auto information = std::make_unique<dfc_module_info>();
  watch_driver_calls();
  const std::uint32_t result = ModInfo(information.get());
  if (result == 0) return lines_of(information->bytes);
  context.report_failure(
      operation_failure("the module information cannot be read", std::nullopt, "ModInfo", Results::kStatus, result));
  return std::nullopt;
}

void version(Context& context) {
  std::optional<Session> session;
  try {
    session.emplace(Session::Needs::kDriver);
  } catch (const Failure& failure) {
    context.report_failure(failure);  // the tool and the library have versions all the same
  }
  dfc_interface_rev driver{};
  dfc_interface_rev library{};
  watch_driver_calls();
  const std::uint32_t result = CallVer(&driver, &library);
  if (session && result != 0) {
    context.report_failure(
        operation_failure("the driver's revision cannot be read", std::nullopt, "CallVer", Results::kStatus, result));
  }
  const auto module = session ? module_lines(context) : std::nullopt;

  std::vector<Field> library_fields{{"version", "Version", text_cell(library_version())},
                                    {"revision", "Interface revision", text_cell(interface_revision())}};
  std::ranges::move(side_fields(library), std::back_inserter(library_fields));
  std::vector<Field> driver_fields = side_fields(result == 0 ? std::optional(driver) : std::nullopt);
  driver_fields.push_back({"module", "Module information", module ? list_cell(*module) : absent()});
  context.print({.command = "version",
                 .sections = {record_section("tool", "Tool", {{"version", "Version", text_cell(VASKDFC_TOOL_VERSION)}}),
                              record_section("library", "Library", std::move(library_fields)),
                              record_section("driver", "Driver", std::move(driver_fields))}});
}

// --- log-message

void log_message(const Context& context, const std::string& text) {
  dfc_kernel_message message{};
  // The last byte stays 0: drivers take the message for a text.
  if (text.size() >= sizeof(message.text)) {
    throw usage_failure(fmt::format("TEXT has {} bytes, at most {} fit a message", text.size(), sizeof(message.text) - 1),
                        "shorten the text, or send it in several messages");
  }
  std::ranges::copy(text, message.text);

  const Session session(Session::Needs::kDriver);
  const bool sends = context.may_send(fmt::format("write \"{}\" into the driver's log", text));
  if (sends) {
    watch_driver_calls();
    const std::uint32_t result = LogMsg(&message);
    if (result != 0) throw operation_failure("the message cannot be logged", std::nullopt, "LogMsg", Results::kStatus, result);
  }
  context.print(
      {.command = "log-message",
       .sections = {record_section("message", "Message",
                                   {{"text", "Text", text_cell(text_of(message.text))}, {"sent", "Sent", flag_cell(sends)}})}});
}

// --- event-test

struct EventArguments {
  std::string adapter;
  std::string first = "0";
  std::string second = "0";
};

void event_test(Context& context, const EventArguments& arguments) {
  const std::uint32_t first = number_argument("FIRST", arguments.first);
  const std::uint32_t second = number_argument("SECOND", arguments.second);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const bool sends =
      context.may_send(fmt::format("raise a test event with values {} and {} on adapter {}", first, second, adapter));
  if (sends) {
    watch_driver_calls();
    const std::uint32_t result = EventTest(adapter, first, second);
    if (result != 0) throw operation_failure("the test event cannot be raised", adapter, "EventTest", Results::kStatus, result);
  }
  context.print({.command = "event-test",
                 .sections = {record_section("event", "Event",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"first", "First value", number_cell(first)},
                                              {"second", "Second value", number_cell(second)},
                                              {"sent", "Sent", flag_cell(sends)}})}});
}

}  // namespace

void add_info_commands(CommandLine& commands) {
  commands.add("version", "Show the versions of tool, library, interface and driver",
               {"vaskdfc version", "vaskdfc version -o json"}, version);

  auto text = std::make_shared<std::string>();
  commands
      .add("log-message", "Write a message into the driver's log", {"vaskdfc log-message 'cable 7 replaced'"},
           [text](const Context& context) { log_message(context, *text); })
      .add_option("TEXT", *text, "Message, at most 63 bytes")
      .required();

  auto arguments = std::make_shared<EventArguments>();
  const Command command = commands.add_for_adapter("event-test", "Ask the driver to raise a test event",
                                                   {"vaskdfc event-test 0", "vaskdfc event-test 0 7 0x20"}, arguments, event_test);
  command.add_option("FIRST", arguments->first, "First test value, 0 if left out");
  command.add_option("SECOND", arguments->second, "Second test value, 0 if left out");
}

}  // namespace vaskdfc::tool
