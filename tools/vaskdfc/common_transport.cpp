#include "common_transport.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "code_names.h"
#include "decode.h"
#include "rejection.h"

namespace vaskdfc::tool {
namespace {

constexpr std::size_t kPreamble = 16;
constexpr std::uint8_t kRevision = 1;
constexpr std::uint8_t kDirectoryService = 0xFC;
constexpr std::uint8_t kNameServer = 0x02;
constexpr std::uint16_t kReject = 0x8001;
constexpr std::uint16_t kAccept = 0x8002;

constexpr std::array kReasons{CodeName{0x02, "invalid version level"}, CodeName{0x04, "invalid CT_IU size"},
                              CodeName{0x0D, "server not available"}, CodeName{0x0E, "session could not be established"}};
constexpr std::array kExplanations{
    CodeName{0x01, "port identifier not registered"},    CodeName{0x02, "port name not registered"},
    CodeName{0x03, "node name not registered"},          CodeName{0x07, "FC-4 types not registered"},
    CodeName{0x08, "symbolic port name not registered"}, CodeName{0x09, "symbolic node name not registered"},
    CodeName{0x0A, "port type not registered"},          CodeName{0x10, "access denied"},
    CodeName{0x11, "unacceptable port identifier"},      CodeName{0x12, "database empty"}};
constexpr std::array kPortTypes{CodeName{0x00, "unidentified"}, CodeName{0x01, "N_Port"}, CodeName{0x02, "NL_Port"},
                                CodeName{0x7F, "Nx_Port"},      CodeName{0x81, "F_Port"}, CodeName{0x82, "FL_Port"},
                                CodeName{0x84, "E_Port"},       CodeName{0x85, "B_Port"}};

HbaWwn wwn_at(Bytes bytes, std::size_t at) {
  HbaWwn wwn{};
  std::ranges::copy(part(bytes, at, sizeof(wwn.wwn)), wwn.wwn);
  return wwn;
}

// A text with its length in the byte before it.
std::string counted_text(Bytes bytes, std::size_t at) {
  return text_of(part(bytes, at + 1, number_at<std::uint8_t>(bytes, at).value_or(0)));
}

}  // namespace

using Key = NameQuery::Key;
using Reply = NameQuery::Reply;

const std::array<NameQuery, 9> kNameQueries{{
    {"ga_nxt", "all about the port behind a port id", 0x0100, Key::kPort, Reply::kObject},
    {"gpn_id", "port name of a port id", 0x0112, Key::kPort, Reply::kPortWwn},
    {"gnn_id", "node name of a port id", 0x0113, Key::kPort, Reply::kNodeWwn},
    {"gft_id", "FC-4 types of a port id", 0x0117, Key::kPort, Reply::kFc4Types},
    {"gspn_id", "symbolic port name of a port id", 0x0118, Key::kPort, Reply::kSymbolicName},
    {"gid_pn", "port id of a port name", 0x0121, Key::kPortWwn, Reply::kPortIds},
    {"gid_nn", "port ids of a node name", 0x0131, Key::kNodeWwn, Reply::kPortIds},
    {"gsnn_nn", "symbolic node name of a node name", 0x0139, Key::kNodeWwn, Reply::kSymbolicName},
    {"gid_ft", "port ids of an FC-4 type", 0x0171, Key::kFc4Type, Reply::kPortIds},
}};

std::vector<std::uint8_t> name_request(const NameQuery& query, Bytes key) {
  std::vector<std::uint8_t> request(kPreamble);
  request[0] = kRevision;
  request[4] = kDirectoryService;
  request[5] = kNameServer;
  put_number(std::span(request).subspan(8, 2), query.command);
  request.insert(request.end(), key.begin(), key.end());
  return request;
}

std::optional<CtAnswer> parse_ct_answer(Bytes bytes) {
  if (bytes.size() < kPreamble) return std::nullopt;
  const std::uint16_t code = number_at<std::uint16_t>(bytes, 8).value_or(0);
  if (code != kAccept && code != kReject) return std::nullopt;
  return CtAnswer{code == kAccept, bytes[13], bytes[14], part(bytes, kPreamble)};
}

std::string rejection_text(const CtAnswer& answer) {
  return rejection_text(answer.reason, kReasons, answer.explanation, kExplanations);
}

// FC-GS: port type and id, port name, symbolic port name of 256 bytes, node name, symbolic node name of 256 bytes, process
// associator, IP address, classes of service, FC-4 types.
std::optional<NamedPort> parse_named_port(Bytes payload) {
  constexpr std::size_t kPortName = 4;
  constexpr std::size_t kSymbolicPortName = 12;
  constexpr std::size_t kNodeName = 268;
  constexpr std::size_t kSymbolicNodeName = 276;
  constexpr std::size_t kFc4Types = 560;
  constexpr std::size_t kFc4Bytes = 32;
  if (payload.size() < kFc4Types + kFc4Bytes) return std::nullopt;
  const Bytes types = part(payload, kFc4Types, kFc4Bytes);
  return NamedPort{.fc_id = *number_at(payload, 1, 3),
                   .type = payload[0],
                   .port_wwn = wwn_at(payload, kPortName),
                   .node_wwn = wwn_at(payload, kNodeName),
                   .symbolic_port_name = counted_text(payload, kSymbolicPortName),
                   .symbolic_node_name = counted_text(payload, kSymbolicNodeName),
                   .fc4_types = {types.begin(), types.end()}};
}

std::vector<std::uint32_t> parse_port_ids(Bytes payload) {
  constexpr std::uint8_t kLast = 0x80;
  std::vector<std::uint32_t> ids;
  for (; payload.size() >= 4; payload = part(payload, 4)) {
    ids.push_back(*number_at(payload, 1, 3));
    if ((payload[0] & kLast) != 0) break;
  }
  return ids;
}

std::string port_type_name(std::uint8_t type) { return name_in(kPortTypes, type, fmt::format("0x{:02x}", type)); }

}  // namespace vaskdfc::tool
