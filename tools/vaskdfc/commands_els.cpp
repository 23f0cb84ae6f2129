// Commands that ask other ports by extended link services: els send.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <optional>

#include "command_line.h"
#include "decode.h"
#include "fabric_services.h"
#include "link_services.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kCommand = "els send";
constexpr const char* kOperation = "DFC_SendELSCmd";
constexpr std::size_t kWord = 4;

struct Arguments {
  std::string adapter;
  std::string port;
  std::vector<std::string> request;
  std::optional<std::string> request_file;
  std::optional<std::string> file;
};

// Whom the driver is to ask: a port WWN or, where that is zero, an FC id. The layout is its own.
struct Destination {
  HbaWwn wwn{};
  std::uint32_t fc_id = 0;
  std::uint32_t not_used = 0;
};

std::string destination_text(const Destination& destination) {
  return destination.wwn == HbaWwn{} ? fc_id_cell(destination.fc_id).text : wwn_text(destination.wwn);
}

Destination destination_of(const std::string& spelling) {
  constexpr std::uint32_t kMostFcId = 0xFFFFFF;
  if (const auto wwn = parse_wwn(spelling)) return {.wwn = *wwn};
  if (const auto fc_id = parse_number(spelling, kMostFcId)) return {.fc_id = *fc_id};
  throw usage_failure(fmt::format("PORT: \"{}\" is neither a WWN nor an FC id", spelling),
                      "\"vaskdfc nameserver ADAPTER\" shows the ports of the fabric");
}

// --- Requests: some by name, any as bytes

struct Request {
  enum class Kind { kEcho, kLinkErrors, kIdentification, kRaw } kind;
  std::vector<std::uint8_t> bytes;
};

struct NamedRequest {
  const char* name;
  Request::Kind kind;
  const char* what;
};
constexpr std::array kNamedRequests{NamedRequest{"echo", Request::Kind::kEcho, "whether it answers, with the bytes that were sent"},
                                    NamedRequest{"rls", Request::Kind::kLinkErrors, "the link errors that it has counted"},
                                    NamedRequest{"rnid", Request::Kind::kIdentification, "its node identification"}};

const NamedRequest* find_named(const std::vector<std::string>& words) {
  if (words.size() != 1) return nullptr;
  const auto found = std::ranges::find_if(kNamedRequests, [&](const NamedRequest& named) { return named.name == words.front(); });
  return found == kNamedRequests.end() ? nullptr : &*found;
}

std::vector<std::uint8_t> bytes_of(const std::vector<std::string>& words) {
  std::vector<std::uint8_t> bytes;
  for (const std::string& word : words) {
    const auto found = parse_bytes(word, kWord);
    if (!found) {
      throw usage_failure(fmt::format("REQUEST: \"{}\" is neither a request by its name nor a word of 8 hexadecimal digits", word),
                          "\"vaskdfc els send --help\" lists the names");
    }
    bytes.insert(bytes.end(), found->begin(), found->end());
  }
  if (bytes.size() <= DFC_ELS_BYTES) return bytes;
  throw usage_failure(fmt::format("REQUEST: more than {} bytes", DFC_ELS_BYTES));
}

// The bytes of a request by its name are made once it is known whom it goes to.
Request request_of(const Arguments& arguments) {
  if (arguments.request_file.has_value() == !arguments.request.empty()) {
    throw usage_failure("either REQUEST or --request FILE must be given", "\"vaskdfc els send --help\" shows examples");
  }
  if (const NamedRequest* const named = find_named(arguments.request)) return {named->kind, {}};
  const auto bytes = arguments.request_file ? read_file(*arguments.request_file, DFC_ELS_BYTES) : bytes_of(arguments.request);
  if (bytes.size() >= kWord) return {Request::Kind::kRaw, bytes};
  throw usage_failure(
      fmt::format("the file \"{}\" has {} bytes, but a request at least {}", *arguments.request_file, bytes.size(), kWord));
}

// A port is asked for the counters of one of its ports, by FC id.
std::uint32_t fc_id_of(std::uint32_t adapter, const Destination& destination) {
  return destination.wwn == HbaWwn{} ? destination.fc_id : registered_fc_id(adapter, destination.wwn);
}

std::vector<std::uint8_t> echo_data() {
  constexpr std::size_t kBytes = 64;
  std::vector<std::uint8_t> data(kBytes);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i);
  return data;
}

std::vector<std::uint8_t> bytes_for(std::uint32_t adapter, const Destination& destination, const Request& request) {
  switch (request.kind) {
    case Request::Kind::kEcho: return echo_request(echo_data());
    case Request::Kind::kLinkErrors: return link_errors_request(fc_id_of(adapter, destination));
    case Request::Kind::kIdentification: return identification_request();
    case Request::Kind::kRaw: break;
  }
  return request.bytes;
}

// --- The exchange

std::vector<std::uint8_t> ask(std::uint32_t adapter, const Destination& destination, Bytes request) {
  const auto descriptor = std::bit_cast<dfc_els_descriptor>(destination);
  std::vector<std::uint8_t> reply(DFC_ELS_BYTES);
  std::uint32_t reply_bytes = 0;
  watch_driver_calls();
  const std::uint32_t result =
      DFC_SendELSCmd(adapter, &descriptor, request.data(), static_cast<std::uint32_t>(request.size()), reply.data(), &reply_bytes);
  if (result != DFC_OK) {
    throw operation_failure(fmt::format("{} cannot be asked", destination_text(destination)), adapter, kOperation, Results::kEls,
                            result);
  }
  reply.resize(std::min<std::size_t>(reply_bytes, reply.size()));
  return reply;
}

// A request by its name must be accepted; what becomes of another is for the user to judge.
Bytes expect_accepted(std::uint32_t adapter, const Destination& destination, Bytes reply) {
  const auto answer = parse_link_answer(reply);
  if (answer && answer->accepted) return answer->payload;
  const std::string why = answer ? "rejected the request: " + rejection_text(*answer) : "gave no answer of a link service";
  throw with_hint(
      operation_failure(fmt::format("{} {}", destination_text(destination), why), adapter, kOperation, Results::kEls, DFC_OK),
      "not every port answers every request; \"vaskdfc els send ADAPTER PORT echo\" tells whether it answers at all");
}

std::optional<Section> named_section(Request::Kind kind, Bytes payload) {
  switch (kind) {
    case Request::Kind::kEcho:
      return record_section("echo", "Echo", {{"same", "Same bytes", flag_cell(std::ranges::equal(payload, echo_data()))}});
    case Request::Kind::kLinkErrors: return record_section("link_errors", "Link errors", link_error_fields(payload));
    case Request::Kind::kIdentification: return record_section("identification", "Identification", identification_fields(payload));
    case Request::Kind::kRaw: break;
  }
  return std::nullopt;
}

Section answer_section(std::uint32_t adapter, const Destination& destination, Bytes reply, const std::optional<std::string>& file) {
  const auto answer = parse_link_answer(reply);
  return record_section(
      "answer", "Answer",
      joined({{"adapter", "Adapter", number_cell(adapter)},
              {"port", "Port", text_cell(destination_text(destination))},
              {"accepted", "Accepted", answer ? flag_cell(answer->accepted) : absent()},
              {"rejection", "Rejection", answer && !answer->accepted ? text_cell(rejection_text(*answer)) : absent()},
              {"bytes", "Bytes", number_cell(reply.size())}},
             delivered_fields(file, reply)));
}

void send(Context& context, const Arguments& arguments) {
  const Destination destination = destination_of(arguments.port);
  const Request request = request_of(arguments);
  const bool is_raw = request.kind == Request::Kind::kRaw;
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const std::string what = fmt::format("send {} to {} through adapter {}",
                                       is_raw ? fmt::format("a link service of {} bytes", request.bytes.size())
                                              : fmt::format("the request {}", arguments.request.front()),
                                       destination_text(destination), adapter);
  if (!(is_raw ? context.may_change(what) : context.may_send(what))) return;
  const auto reply = ask(adapter, destination, bytes_for(adapter, destination, request));
  const auto named = is_raw ? std::nullopt : named_section(request.kind, expect_accepted(adapter, destination, reply));
  Report report{.command = kCommand, .sections = {answer_section(adapter, destination, reply, arguments.file)}};
  if (named) report.sections.push_back(*named);
  context.print(report);
}

std::string requests_help() {
  std::string text = "Words of 8 hexadecimal digits, the first of which is the service's, or one of these:";
  for (const NamedRequest& named : kNamedRequests) text += fmt::format("\n{}: {}", named.name, named.what);
  return text;
}

}  // namespace

void add_els_commands(CommandLine& commands) {
  const std::vector<std::string> examples{"vaskdfc els send 0 50:5a:41:00:0c:00:20:01 echo", "vaskdfc els send 0 0x010200 rls",
                                          "vaskdfc els send 0 0x010200 0f000000 00010200 --yes"};
  commands.group("els", "Requests to other ports (Extended Link Services)", examples);
  auto arguments = std::make_shared<Arguments>();
  const Command command = commands.add_for_adapter(kCommand, "Ask another port", examples, arguments, send);
  command.add_option("PORT", arguments->port, "Port WWN, or FC id").required();
  command.add_option("REQUEST", arguments->request, requests_help()).type_name(names_of(kNamedRequests, "|") + "|WORD");
  command.add_option("--request", arguments->request_file, "Send the bytes of this file").type_name("FILE");
  command.add_option("-f,--file", arguments->file, "Write the reply to this file").type_name("FILE");
}

}  // namespace vaskdfc::tool
