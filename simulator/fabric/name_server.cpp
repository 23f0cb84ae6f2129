#include "fabric/name_server.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

#include "scsi/big_endian.h"

namespace simulator::fabric {
namespace {

using scenario::Port;

constexpr std::uint32_t kDirectoryAddress = 0xFFFFFC;
constexpr std::uint8_t kDirectoryService = 0xFC;
constexpr std::uint8_t kNameServer = 0x02;

constexpr std::uint16_t kReject = 0x8001;
constexpr std::uint16_t kAccept = 0x8002;

// Reason codes and, for those that are unable to perform, the name server's explanations.
constexpr std::uint8_t kInvalidVersion = 0x02;
constexpr std::uint8_t kInvalidSize = 0x04;
constexpr std::uint8_t kUnableToPerform = 0x09;
constexpr std::uint8_t kNotSupported = 0x0B;
constexpr std::uint8_t kServerNotAvailable = 0x0D;
constexpr std::uint8_t kNoSuchPortId = 0x01;
constexpr std::uint8_t kNoSuchPortName = 0x02;
constexpr std::uint8_t kNoSuchFc4Type = 0x07;

struct Refusal {
  std::uint8_t reason;
  std::uint8_t explanation = 0;
};

struct Reply {
  std::optional<Refusal> refusal;
  Bytes payload;
};

Reply refuse(std::uint8_t reason, std::uint8_t explanation = 0) { return {.refusal = Refusal{reason, explanation}, .payload = {}}; }
Reply accept(Bytes payload) { return {.refusal = std::nullopt, .payload = std::move(payload)}; }

using Request = std::span<const std::uint8_t>;  // without its preamble
using Members = std::span<const Member>;

void put(Bytes& bytes, std::span<const std::uint8_t> part) { bytes.insert(bytes.end(), part.begin(), part.end()); }

// A byte of something else, then the 24 bits of the FC id.
void put_id(Bytes& bytes, std::uint8_t first, std::uint32_t id) {
  put(bytes,
      std::array{first, static_cast<std::uint8_t>(id >> 16), static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id)});
}

// A length, the text, and zeros up to 256 bytes in all.
void put_name(Bytes& bytes, const std::string& text) {
  const std::size_t end = bytes.size() + 256;
  bytes.push_back(static_cast<std::uint8_t>(text.size()));
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.resize(end);
}

std::uint32_t id_of(Request request) { return big_endian<std::uint32_t>(request, 0) & 0xFFFFFF; }

const Port* find(Members members, std::uint32_t id) {
  const auto found = std::ranges::find(members, id, [](const Member& member) { return member.port->fc_id; });
  return found == members.end() ? nullptr : found->port;
}

Bytes all_about(const Port& port) {
  constexpr std::uint8_t kNPort = 0x01;
  Bytes bytes;
  put_id(bytes, kNPort, port.fc_id);
  put(bytes, port.wwpn.wwn);
  put_name(bytes, port.symbolic_name);
  put(bytes, port.wwnn.wwn);
  put_name(bytes, "");
  bytes.resize(bytes.size() + 8 + 16);  // initial process associator, the node's IP address
  put(bytes, std::array<std::uint8_t, 4>{0, 0, 0, fc_hba::kClass3});
  put(bytes, port.fc4_types);
  bytes.resize(bytes.size() + 16 + 8 + 4);  // the port's IP address, fabric port name, hard address
  return bytes;
}

// After the last port comes the first.
Reply next(Request request, Members members) {
  if (members.empty()) return refuse(kUnableToPerform, kNoSuchPortId);
  const auto later = std::ranges::upper_bound(members, id_of(request), {}, [](const Member& member) { return member.port->fc_id; });
  return accept(all_about(*(later == members.end() ? members.begin() : later)->port));
}

Reply about_port(Request request, Members members, const std::function<void(Bytes&, const Port&)>& tell) {
  const Port* const port = find(members, id_of(request));
  if (port == nullptr) return refuse(kUnableToPerform, kNoSuchPortId);
  Bytes bytes;
  tell(bytes, *port);
  return accept(std::move(bytes));
}

Reply port_name(Request request, Members members) {
  return about_port(request, members, [](Bytes& bytes, const Port& port) { put(bytes, port.wwpn.wwn); });
}

Reply node_name(Request request, Members members) {
  return about_port(request, members, [](Bytes& bytes, const Port& port) { put(bytes, port.wwnn.wwn); });
}

Reply fc4_types(Request request, Members members) {
  return about_port(request, members, [](Bytes& bytes, const Port& port) { put(bytes, port.fc4_types); });
}

Reply symbolic_name(Request request, Members members) {
  return about_port(request, members, [](Bytes& bytes, const Port& port) { put_name(bytes, port.symbolic_name); });
}

Reply id_by_name(Request request, Members members) {
  const auto has_name = [&](const Member& member) { return std::ranges::equal(member.port->wwpn.wwn, request.first(8)); };
  const auto found = std::ranges::find_if(members, has_name);
  if (found == members.end()) return refuse(kUnableToPerform, kNoSuchPortName);
  Bytes bytes;
  put_id(bytes, 0, found->port->fc_id);
  return accept(std::move(bytes));
}

// Bytes 1 and 2 narrow the search to a domain and an area; byte 3 is the type.
bool matches(Request request, const Port& port) {
  const std::uint8_t type = request[3];
  if (request[1] != 0 && request[1] != port.fc_id >> 16) return false;
  if (request[2] != 0 && request[2] != (port.fc_id >> 8 & 0xFF)) return false;
  return (port.fc4_types[fc_hba::fc4_byte(type)] & fc_hba::fc4_bit(type)) != 0;
}

Reply ports_by_type(Request request, Members members, bool with_names) {
  constexpr std::uint8_t kLast = 0x80;
  Bytes bytes;
  std::size_t last = 0;
  for (const Member& member : members) {
    if (!matches(request, *member.port)) continue;
    last = bytes.size();
    put_id(bytes, 0, member.port->fc_id);
    if (!with_names) continue;
    bytes.resize(bytes.size() + 4);
    put(bytes, member.port->wwpn.wwn);
  }
  if (bytes.empty()) return refuse(kUnableToPerform, kNoSuchFc4Type);
  bytes[last] = kLast;
  return accept(std::move(bytes));
}

Reply ids_by_type(Request request, Members members) { return ports_by_type(request, members, false); }
Reply names_by_type(Request request, Members members) { return ports_by_type(request, members, true); }

struct Query {
  std::uint16_t code;
  std::size_t bytes;  // after the preamble
  Reply (*answer)(Request, Members);
};

constexpr std::array kQueries{
    Query{0x0100, 4, next},          Query{0x0112, 4, port_name},  Query{0x0113, 4, node_name},   Query{0x0117, 4, fc4_types},
    Query{0x0118, 4, symbolic_name}, Query{0x0121, 8, id_by_name}, Query{0x0171, 4, ids_by_type}, Query{0x0172, 4, names_by_type},
};

Reply reply_to(std::uint32_t destination, std::span<const std::uint8_t> request, Members members) {
  constexpr std::uint8_t kRevision = 0x01;
  if (request[0] != kRevision) return refuse(kInvalidVersion);
  if (destination != kDirectoryAddress || request[4] != kDirectoryService || request[5] != kNameServer)
    return refuse(kServerNotAvailable);
  const auto query = std::ranges::find(kQueries, big_endian<std::uint16_t>(request, 8), &Query::code);
  if (query == kQueries.end()) return refuse(kNotSupported);
  if (request.size() < kPreambleBytes + query->bytes) return refuse(kInvalidSize);
  return query->answer(request.subspan(kPreambleBytes), members);
}

}  // namespace

// Sizes in the preamble count words: what the requester takes at most (0: all), and what it does not get.
Bytes answer_ct(std::uint32_t destination, std::span<const std::uint8_t> request, std::span<const Member> members) {
  Reply reply = reply_to(destination, request, members);
  Bytes answer(request.begin(), request.begin() + kPreambleBytes);
  std::fill(answer.begin() + 8, answer.end(), std::uint8_t{0});
  put_big_endian(answer, 8, reply.refusal ? kReject : kAccept);
  if (reply.refusal) {
    answer[13] = reply.refusal->reason;
    answer[14] = reply.refusal->explanation;
    return answer;
  }
  const std::size_t most = std::size_t{big_endian<std::uint16_t>(request, 10)} * 4;
  if (most > 0 && reply.payload.size() > most) {
    put_big_endian(answer, 10, static_cast<std::uint16_t>((reply.payload.size() - most) / 4));
    reply.payload.resize(most);
  }
  put(answer, reply.payload);
  return answer;
}

}  // namespace simulator::fabric
