#include "link_services.h"

#include <fmt/format.h>
#include <vaskdfc/hbaapi.h>

#include <algorithm>
#include <array>

#include "decode.h"
#include "rejection.h"

namespace vaskdfc::tool {
namespace {

constexpr std::size_t kWord = 4;

enum class Service : std::uint8_t { kReject = 0x01, kAccept = 0x02, kReadLinkErrors = 0x0F, kEcho = 0x10, kIdentify = 0x78 };

constexpr std::uint8_t kGeneralTopology = 0xDF;

constexpr std::array kReasons{CodeName{0x0E, "command already in progress"}};
constexpr std::array kExplanations{CodeName{0x01, "service parameters: options"},
                                   CodeName{0x03, "service parameters: initiator control"},
                                   CodeName{0x05, "service parameters: recipient control"},
                                   CodeName{0x07, "service parameters: receive data field size"},
                                   CodeName{0x09, "service parameters: concurrent sequences"},
                                   CodeName{0x0B, "service parameters: credit"},
                                   CodeName{0x0D, "invalid port name"},
                                   CodeName{0x0E, "invalid node name"},
                                   CodeName{0x0F, "invalid common service parameters"},
                                   CodeName{0x15, "invalid originator port id"},
                                   CodeName{0x17, "invalid combination of exchange ids"},
                                   CodeName{0x19, "command already in progress"},
                                   CodeName{0x1E, "login required"},
                                   CodeName{0x1F, "invalid port id"},
                                   CodeName{0x29, "insufficient resources"},
                                   CodeName{0x2A, "unable to supply requested data"},
                                   CodeName{0x2C, "request not supported"},
                                   CodeName{0x2D, "invalid payload length"}};

std::vector<std::uint8_t> request_of(Service service, Bytes payload) {
  std::vector<std::uint8_t> request{static_cast<std::uint8_t>(service), 0, 0, 0};
  request.insert(request.end(), payload.begin(), payload.end());
  return request;
}

Cell number_or_absent(const std::optional<std::uint32_t>& number) { return number ? number_cell(*number) : absent(); }

}  // namespace

std::vector<std::uint8_t> echo_request(Bytes data) { return request_of(Service::kEcho, data); }

std::vector<std::uint8_t> link_errors_request(std::uint32_t fc_id) {
  std::array<std::uint8_t, kWord> payload{};
  put_number(payload, fc_id);
  return request_of(Service::kReadLinkErrors, payload);
}

std::vector<std::uint8_t> identification_request() {
  return request_of(Service::kIdentify, std::array<std::uint8_t, kWord>{kGeneralTopology});
}

std::optional<LinkAnswer> parse_link_answer(Bytes bytes) {
  const auto code = number_at<std::uint8_t>(bytes, 0);
  if (!code || bytes.size() < kWord) return std::nullopt;
  const Bytes payload = part(bytes, kWord);
  if (*code == static_cast<std::uint8_t>(Service::kAccept)) return LinkAnswer{.accepted = true, .payload = payload};
  if (*code != static_cast<std::uint8_t>(Service::kReject) || payload.size() < kWord) return std::nullopt;
  return LinkAnswer{.reason = payload[1], .explanation = payload[2], .payload = payload};
}

std::string rejection_text(const LinkAnswer& answer) {
  return rejection_text(answer.reason, kReasons, answer.explanation, kExplanations);
}

std::vector<Field> link_error_fields(Bytes payload) {
  constexpr std::array<std::pair<const char*, const char*>, 6> kCounters{{{"link_failures", "Link failures"},
                                                                          {"losses_of_sync", "Losses of synchronization"},
                                                                          {"losses_of_signal", "Losses of signal"},
                                                                          {"protocol_errors", "Primitive sequence protocol errors"},
                                                                          {"invalid_words", "Invalid transmission words"},
                                                                          {"invalid_crcs", "Invalid CRCs"}}};
  std::vector<Field> fields;
  for (const auto& [key, title] : kCounters) {
    fields.push_back({key, title, number_or_absent(number_at(payload, fields.size() * kWord))});
  }
  return fields;
}

// A format, the lengths of what follows, names, and what the format says.
std::vector<Field> identification_fields(Bytes payload) {
  const auto format = number_at<std::uint8_t>(payload, 0);
  const std::size_t common_bytes = number_at<std::uint8_t>(payload, 1).value_or(0);
  const Bytes common = part(payload, kWord, common_bytes);
  const Bytes topology = format == kGeneralTopology ? part(payload, kWord + common_bytes) : Bytes{};
  const auto name = [&](std::size_t at) {
    const Bytes wwn = part(common, at, sizeof(HbaWwn));
    return wwn.size() == sizeof(HbaWwn) ? text_cell(colon_text(wwn)) : absent();
  };
  const auto topology_number = [&](std::size_t at, std::size_t width) { return number_or_absent(number_at(topology, at, width)); };
  const Bytes address = part(topology, 32, 16);
  return {{"format", "Format", format ? text_cell(fmt::format("0x{:02x}", *format)) : absent()},
          {"port_wwn", "Port WWN", name(0)},
          {"node_wwn", "Node WWN", name(sizeof(HbaWwn))},
          {"unit_type", "Unit type", topology_number(16, 4)},
          {"port_number", "Port number", topology_number(20, 4)},
          {"attached_nodes", "Attached nodes", topology_number(24, 4)},
          {"ip_version", "IP version", topology_number(29, 1)},
          {"udp_port", "UDP port", topology_number(30, 2)},
          {"ip_address", "IP address", address.empty() ? absent() : hex_bytes_cell(address)},
          {"discovery_flags", "Discovery flags", topology_number(50, 2)}};
}

}  // namespace vaskdfc::tool
