// Under which names the store keeps what belongs to an adapter: its port's WWN follows it to another board number or scenario.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "scenario/scenario.h"

namespace simulator {

inline std::string stored_name(std::string_view what, const scenario::Adapter& card, std::string_view suffix) {
  return fmt::format("{}-{:02x}.{}", what, fmt::join(card.port.wwpn.wwn, ""), suffix);
}

}  // namespace simulator
