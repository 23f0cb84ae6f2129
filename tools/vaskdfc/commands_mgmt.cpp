// Commands that pass management traffic through the driver: mgmt send, mgmt respond.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kSend = "mgmt send";
constexpr const char* kRespond = "mgmt respond";

struct Arguments {
  std::string adapter;
  std::string command;
  std::string request;
  std::string argument = "0";
  std::optional<std::string> file;
};

struct Request {
  dfc_mgmt_command command{};
  std::vector<std::uint8_t> bytes;
  std::uint32_t argument = 0;
};

Request request_of(const Arguments& arguments) {
  const auto command = parse_bytes(arguments.command, sizeof(dfc_mgmt_command));
  if (!command) {
    throw usage_failure(fmt::format("COMMAND: \"{}\" is no {} bytes", arguments.command, sizeof(dfc_mgmt_command)),
                        "16 hexadecimal digits, as in 0100000000000000");
  }
  Request request{.bytes = read_file(arguments.request, DFC_SERVICE_BYTES),
                  .argument = number_argument("--argument", arguments.argument)};
  std::ranges::copy(*command, request.command.bytes);
  return request;
}

std::vector<std::uint8_t> send_request(std::uint32_t adapter, const Request& request) {
  std::vector<std::uint8_t> reply(DFC_SERVICE_BYTES);
  std::uint32_t reply_bytes = 0;
  watch_driver_calls();
  const std::uint32_t result =
      SendMgmtCommand(adapter, &request.command, request.bytes.data(), static_cast<std::uint32_t>(request.bytes.size()),
                      reply.data(), &reply_bytes, request.argument);
  if (result != DFC_OK) {
    throw operation_failure("the management command was not carried out", adapter, "SendMgmtCommand", Results::kMgmt, result);
  }
  reply.resize(std::min<std::size_t>(reply_bytes, reply.size()));
  return reply;
}

void send(Context& context, const Arguments& arguments) {
  const Request request = request_of(arguments);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const std::string command = fmt::format("{:02x}", fmt::join(request.command.bytes, " "));
  if (!context.may_change(
          fmt::format("send the management command {} with {} bytes through adapter {}", command, request.bytes.size(), adapter))) {
    return;
  }
  const auto reply = send_request(adapter, request);
  auto fields = joined({{"adapter", "Adapter", number_cell(adapter)},
                        {"command", "Command", text_cell(command)},
                        {"bytes", "Bytes", number_cell(reply.size())}},
                       delivered_fields(arguments.file, reply));
  context.print({.command = kSend, .sections = {record_section("answer", "Answer", std::move(fields))}});
}

// --- mgmt respond

struct ResponseArguments {
  std::string adapter;
  std::string response;
  std::string argument = "0";
};

void respond(Context& context, const ResponseArguments& arguments) {
  const auto response = read_file(arguments.response, DFC_SERVICE_BYTES);
  const auto bytes = static_cast<std::uint32_t>(response.size());
  const std::uint32_t argument = number_argument("--argument", arguments.argument);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  if (!context.may_change(fmt::format("send a management response of {} bytes through adapter {}", bytes, adapter))) return;
  watch_driver_calls();
  const std::uint32_t result = SendMgmtResponse(adapter, response.data(), bytes, argument);
  if (result != DFC_OK) {
    throw operation_failure("the management response was not sent", adapter, "SendMgmtResponse", Results::kMgmt, result);
  }
  context.print({.command = kRespond,
                 .sections = {record_section("response", "Response",
                                             {{"adapter", "Adapter", number_cell(adapter)},
                                              {"argument", "Argument", number_cell(argument)},
                                              {"bytes", "Bytes", number_cell(bytes)}})}});
}

constexpr const char* kArgumentHelp = "A number that the driver gets besides; 0 unless it is given";

}  // namespace

void add_mgmt_commands(CommandLine& commands) {
  const std::vector<std::string> examples{"vaskdfc mgmt send 0 0100000000000000 request.bin --yes",
                                          "vaskdfc mgmt send 0 0100000000000000 request.bin --yes --file reply.bin"};
  commands.group("mgmt", "Management traffic, whose meaning is the driver's", examples);
  auto arguments = std::make_shared<Arguments>();
  const Command command =
      commands.add_for_adapter(kSend, "Send a management command and show its reply", examples, arguments, send);
  command.add_option("COMMAND", arguments->command, "What describes the command to the driver: 16 hexadecimal digits").required();
  command.add_option("REQUEST", arguments->request, "The file with the request").type_name("FILE").required();
  command.add_option("--argument", arguments->argument, kArgumentHelp).type_name("N");
  command.add_option("-f,--file", arguments->file, "Write the reply to this file").type_name("FILE");

  auto response = std::make_shared<ResponseArguments>();
  const Command responded = commands.add_for_adapter(kRespond, "Send a management response, which nothing answers",
                                                     {"vaskdfc mgmt respond 0 response.bin --yes"}, response, respond);
  responded.add_option("RESPONSE", response->response, "The file with the response").type_name("FILE").required();
  responded.add_option("--argument", response->argument, kArgumentHelp).type_name("N");
}

}  // namespace vaskdfc::tool
