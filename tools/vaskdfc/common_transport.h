// Common Transport (CT) of FC-GS: requests to the services of a fabric, and what they answer.
#pragma once

#include <vaskdfc/hbaapi.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

// A query of the name server.
struct NameQuery {
  const char* name;  // as in "ga_nxt"
  const char* what;
  std::uint16_t command;
  enum class Key { kPort, kPortWwn, kNodeWwn, kFc4Type } key;
  enum class Reply { kObject, kPortIds, kPortWwn, kNodeWwn, kFc4Types, kSymbolicName } reply;
};
extern const std::array<NameQuery, 9> kNameQueries;

// The request for a query; the key as its bytes travel.
std::vector<std::uint8_t> name_request(const NameQuery& query, Bytes key);

// The preamble of an answer.
struct CtAnswer {
  bool accepted = false;
  std::uint8_t reason = 0;
  std::uint8_t explanation = 0;
  Bytes payload;
};
// Nothing for bytes that are neither an accept nor a reject.
std::optional<CtAnswer> parse_ct_answer(Bytes bytes);

// As in "unable to perform command request (9), port identifier not registered (1)".
std::string rejection_text(const CtAnswer& answer);

// What the name server knows of a port, as GA_NXT tells it.
struct NamedPort {
  std::uint32_t fc_id = 0;
  std::uint8_t type = 0;
  HbaWwn port_wwn{};
  HbaWwn node_wwn{};
  std::string symbolic_port_name;
  std::string symbolic_node_name;
  std::vector<std::uint8_t> fc4_types;  // 32 bytes
};
std::optional<NamedPort> parse_named_port(Bytes payload);

// The port ids of an answer, up to the one that says that it is the last.
std::vector<std::uint32_t> parse_port_ids(Bytes payload);

std::string port_type_name(std::uint8_t type);

}  // namespace vaskdfc::tool
