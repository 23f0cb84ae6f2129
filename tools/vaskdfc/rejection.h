// Why a request was rejected: a reason and its explanation, of which link services and fabric services have tables of their own.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace vaskdfc::tool {

using CodeName = std::pair<std::uint8_t, const char*>;

// As in "unable to perform command request (9), port identifier not registered (1)". The tables hold what the kind of service
// does not share with the other.
std::string rejection_text(std::uint8_t reason, std::span<const CodeName> reasons, std::uint8_t explanation,
                           std::span<const CodeName> explanations);

}  // namespace vaskdfc::tool
