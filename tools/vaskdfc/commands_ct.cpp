// Commands that ask the services of a fabric: nameserver, ct send, ct raw.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "command_line.h"
#include "common_transport.h"
#include "decode.h"
#include "fabric_services.h"
#include "raw_file.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string query;
  std::string key;
  std::string request;
  std::optional<std::string> file;
};

std::vector<std::uint8_t> port_key(std::uint32_t fc_id) {
  std::vector<std::uint8_t> key(4);
  put_number(std::span(key).subspan(1), fc_id);
  return key;
}

// --- nameserver

// GA_NXT names the port behind the one that was asked for, and begins again with the first after the last. A name server that does
// not count upwards would never end.
std::vector<NamedPort> walk(std::uint32_t adapter) {
  std::vector<NamedPort> ports;
  std::uint32_t after = 0;
  while (true) {
    const auto reply = ask_service(adapter, name_request(name_query("ga_nxt"), port_key(after)));
    const CtAnswer answer = understood_answer(adapter, reply);
    if (!answer.accepted) {
      if (ports.empty()) throw service_rejection(adapter, answer);
      return ports;
    }
    const auto port = parse_named_port(answer.payload);
    if (!port) {
      throw operation_failure(fmt::format("the answer about the port behind 0x{:06x} ends too early", after), adapter,
                              kServiceOperation, Results::kDfc, DFC_OK);
    }
    if (!ports.empty() && port->fc_id <= after) return ports;
    after = port->fc_id;
    ports.push_back(*port);
  }
}

Record record_of(const NamedPort& port) {
  return {fc_id_cell(port.fc_id),
          text_cell(port_type_name(port.type)),
          wwn_cell(port.port_wwn),
          wwn_cell(port.node_wwn),
          fc4_types_cell(std::span<const std::uint8_t, 32>(port.fc4_types)),
          text_cell(port.symbolic_port_name),
          text_cell(port.symbolic_node_name)};
}

Section ports_section(const std::vector<NamedPort>& ports) {
  Section section = table_section("ports", "Ports",
                                  {{"fc_id", "FC ID"},
                                   {"type", "TYPE"},
                                   {"port_wwn", "PORT WWN"},
                                   {"node_wwn", "NODE WWN"},
                                   {"fc4_types", "FC-4"},
                                   {"symbolic_port_name", "PORT NAME"},
                                   {"symbolic_node_name", "NODE NAME"}});
  for (const NamedPort& port : ports) section.records.push_back(record_of(port));
  return section;
}

void list_names(Context& context, const Arguments& arguments) {
  const Session session;
  const auto ports = walk(session.find(arguments.adapter));
  context.print({.command = "nameserver", .sections = {ports_section(ports)}});
}

// --- ct send

std::vector<std::uint8_t> key_of(const NameQuery& query, const std::string& spelling) {
  constexpr std::uint32_t kMostFcId = 0xFFFFFF;
  switch (query.key) {
    case NameQuery::Key::kPort: return port_key(number_argument("KEY", spelling, kMostFcId));
    case NameQuery::Key::kFc4Type: return {0, 0, 0, static_cast<std::uint8_t>(number_argument("KEY", spelling, UINT8_MAX))};
    case NameQuery::Key::kPortWwn:
    case NameQuery::Key::kNodeWwn: break;
  }
  const HbaWwn wwn = wwn_argument("KEY", spelling);
  return {std::begin(wwn.wwn), std::end(wwn.wwn)};
}

std::vector<std::string> values_in(const NameQuery& query, Bytes payload) {
  switch (query.reply) {
    case NameQuery::Reply::kObject: return {};
    case NameQuery::Reply::kPortWwn:
    case NameQuery::Reply::kNodeWwn: return {colon_text(part(payload, 0, sizeof(HbaWwn)))};
    case NameQuery::Reply::kSymbolicName: return {text_of(part(payload, 1, number_at<std::uint8_t>(payload, 0).value_or(0)))};
    case NameQuery::Reply::kPortIds: {
      std::vector<std::string> ids;
      for (const std::uint32_t id : parse_port_ids(payload)) ids.push_back(fc_id_cell(id).text);
      return ids;
    }
    case NameQuery::Reply::kFc4Types: break;
  }
  std::array<std::uint8_t, 32> types{};
  std::ranges::copy(part(payload, 0, types.size()), types.begin());
  return fc4_types_cell(types).value.get<std::vector<std::string>>();
}

void send(Context& context, const Arguments& arguments) {
  const NameQuery& query = name_query(arguments.query);
  const auto request = name_request(query, key_of(query, arguments.key));
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto reply = ask_service(adapter, request);
  const CtAnswer answer = understood_answer(adapter, reply);
  if (!answer.accepted) throw service_rejection(adapter, answer);
  Report report{.command = "ct send",
                .sections = {record_section("answer", "Answer",
                                            {{"adapter", "Adapter", number_cell(adapter)},
                                             {"query", "Query", text_cell(query.name)},
                                             {"what", "What", text_cell(query.what)},
                                             {"values", "Values", list_cell(values_in(query, answer.payload))},
                                             {"bytes", "Bytes", number_cell(reply.size())}})}};
  if (query.reply == NameQuery::Reply::kObject) {
    const auto port = parse_named_port(answer.payload);
    report.sections.push_back(ports_section(port ? std::vector{*port} : std::vector<NamedPort>{}));
  }
  context.print(report);
}

// --- ct raw

void raw(Context& context, const Arguments& arguments) {
  constexpr std::size_t kLeastBytes = 16;
  const auto request = read_file(arguments.request, DFC_SERVICE_BYTES);
  if (request.size() < kLeastBytes) {
    throw usage_failure(fmt::format("the file \"{}\" has {} bytes, but the preamble of a request {}", arguments.request,
                                    request.size(), kLeastBytes));
  }
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  if (!context.may_change(fmt::format("send a CT request of {} bytes through adapter {}", request.size(), adapter))) return;
  const auto reply = ask_service(adapter, request);
  const auto answer = parse_ct_answer(reply);
  auto fields = joined({{"adapter", "Adapter", number_cell(adapter)},
                        {"accepted", "Accepted", answer ? flag_cell(answer->accepted) : absent()},
                        {"rejection", "Rejection", answer && !answer->accepted ? text_cell(rejection_text(*answer)) : absent()},
                        {"bytes", "Bytes", number_cell(reply.size())}},
                       delivered_fields(arguments.file, reply));
  context.print({.command = "ct raw", .sections = {record_section("answer", "Answer", std::move(fields))}});
}

std::string queries_help() {
  std::string text = "One of these; KEY is what it is asked by:";
  for (const NameQuery& query : kNameQueries) text += fmt::format("\n{}: {}", query.name, query.what);
  return text;
}

}  // namespace

void add_ct_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("nameserver", "List all ports that are registered in the fabric", {"vaskdfc nameserver 0"}, arguments,
                           list_names);
  commands.group("ct", "Requests to the services of a fabric (Common Transport)",
                 {"vaskdfc ct send 0 gid_ft 8", "vaskdfc ct raw 0 request.bin --file reply.bin"});
  const Command sent =
      commands.add_for_adapter("ct send", "Ask the name server",
                               {"vaskdfc ct send 0 gid_ft 8", "vaskdfc ct send 0 gid_pn 50:5a:41:00:0c:00:20:01"}, arguments, send);
  sent.add_option("QUERY", arguments->query, queries_help()).type_name(names_of(kNameQueries, "|")).required();
  sent.add_option("KEY", arguments->key, "A port id, a WWN, or the number of an FC-4 type").required();
  const Command passed = commands.add_for_adapter("ct raw", "Send the CT request that a file holds, preamble and all",
                                                  {"vaskdfc ct raw 0 request.bin --yes --file reply.bin"}, arguments, raw);
  passed.add_option("REQUEST", arguments->request, "The file with the request").type_name("FILE").required();
  passed.add_option("-f,--file", arguments->file, "Write the reply to this file").type_name("FILE");
}

}  // namespace vaskdfc::tool
