// Requests to the services of a fabric through an adapter.
#pragma once

#include <vaskdfc/hbaapi.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common_transport.h"
#include "failure.h"

namespace vaskdfc::tool {

// The library's function that sends the requests.
inline constexpr const char* kServiceOperation = "SendCTPassThru";

// What comes back. A Failure where the request could not be sent.
std::vector<std::uint8_t> ask_service(std::uint32_t adapter, Bytes request);

// The reply as an answer; a Failure where it is none.
CtAnswer understood_answer(std::uint32_t adapter, Bytes reply);

// What to say of a request that was rejected.
Failure service_rejection(std::uint32_t adapter, const CtAnswer& answer);

// The query of this name. A Failure with exit code 2 lists those that there are.
const NameQuery& name_query(const std::string& name);

// Under which FC id the name server knows a port. A Failure where it does not.
std::uint32_t registered_fc_id(std::uint32_t adapter, const HbaWwn& port);

}  // namespace vaskdfc::tool
