#include "fabric_services.h"

#include <fmt/format.h>
#include <vaskdfc/fabric.h>
#include <vaskdfc/result.h>

#include <algorithm>

#include "command_line.h"

namespace vaskdfc::tool {

std::vector<std::uint8_t> ask_service(std::uint32_t adapter, Bytes request) {
  std::vector<std::uint8_t> reply(DFC_SERVICE_BYTES);
  std::uint32_t reply_bytes = DFC_SERVICE_BYTES;
  watch_driver_calls();
  const std::uint32_t result =
      SendCTPassThru(adapter, request.data(), static_cast<std::uint32_t>(request.size()), reply.data(), &reply_bytes);
  if (result != DFC_OK) throw operation_failure("the fabric cannot be asked", adapter, kServiceOperation, Results::kDfc, result);
  reply.resize(std::min<std::size_t>(reply_bytes, reply.size()));
  return reply;
}

CtAnswer understood_answer(std::uint32_t adapter, Bytes reply) {
  if (const auto answer = parse_ct_answer(reply)) return *answer;
  throw operation_failure(fmt::format("{} bytes came back, which are no answer of a fabric service", reply.size()), adapter,
                          kServiceOperation, Results::kDfc, DFC_OK);
}

Failure service_rejection(std::uint32_t adapter, const CtAnswer& answer) {
  return with_hint(operation_failure(fmt::format("the fabric rejected the request: {}", rejection_text(answer)), adapter,
                                     kServiceOperation, Results::kDfc, DFC_OK),
                   "\"vaskdfc nameserver ADAPTER\" shows what is registered");
}

const NameQuery& name_query(const std::string& name) {
  const auto found = std::ranges::find_if(kNameQueries, [&](const NameQuery& query) { return query.name == name; });
  if (found != kNameQueries.end()) return *found;
  throw usage_failure(fmt::format("QUERY: \"{}\" is none of {}", name, names_of(kNameQueries, ", ")));
}

std::uint32_t registered_fc_id(std::uint32_t adapter, const HbaWwn& port) {
  const auto reply = ask_service(adapter, name_request(name_query("gid_pn"), port.wwn));
  const CtAnswer answer = understood_answer(adapter, reply);
  const auto ids = parse_port_ids(answer.payload);
  if (!answer.accepted || ids.empty()) throw service_rejection(adapter, answer);
  return ids.front();
}

}  // namespace vaskdfc::tool
