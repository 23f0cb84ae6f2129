#include "session.h"

#include <fmt/format.h>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

// What may name an adapter here, for people who named none of them.
std::string existing_adapters(std::uint32_t count) {
  std::string names;
  for (std::uint32_t adapter = 0; adapter < count; ++adapter) {
    HbaPortAttributes port{};
    const bool known = GetAdapterPortAttributes(adapter, 0, &port) == HBA_STATUS_OK;
    names += fmt::format("{}{}{}", adapter == 0 ? "" : ", ", adapter, known ? " (" + wwn_text(port.PortWWN) + ")" : "");
  }
  return names;
}

}  // namespace

Session::Session(Needs needs) {
  watch_driver_calls();
  count_ = DFC_InitDiagEnv(boards_.data(), DFC_MAX_BOARDS);
  // Discovery asks the driver for every board, so a library that made no call has not reached a driver.
  if (!last_driver_call()) {
    throw plain_failure(Exit::kNoAdapter, "no driver: the management interface cannot be opened",
                        "check that the driver is loaded and of this library's version");
  }
  if (count_ == 0 && needs == Needs::kAdapter) {
    DFC_FreeDiagEnv();
    throw plain_failure(Exit::kNoAdapter, "no adapter: the driver is there, but knows none that this library supports",
                        "check that the cards are installed");
  }
}

Session::~Session() { DFC_FreeDiagEnv(); }

std::uint32_t Session::find(const std::string& name) const {
  if (const auto wwn = parse_wwn(name)) {
    for (std::uint32_t adapter = 0; adapter < count_; ++adapter) {
      HbaPortAttributes port{};
      if (GetAdapterPortAttributes(adapter, 0, &port) == HBA_STATUS_OK && port.PortWWN == *wwn) return adapter;
    }
  } else if (const auto index = parse_number(name)) {
    if (*index < count_) return *index;
  } else {
    throw usage_failure(fmt::format("\"{}\" is neither an adapter's index nor a port WWN", name),
                        "name an adapter as in: 0, 10:00:00:11:22:33:44:55, 10-00-00-11-22-33-44-55, 0x1000001122334455");
  }
  throw plain_failure(Exit::kNoAdapter, fmt::format("there is no adapter {}", name), "there are: " + existing_adapters(count_));
}

std::uint32_t last_driver_board() { return last_driver_call()->header.brdno; }

HbaAdapterAttributes read_adapter(std::uint32_t adapter) {
  HbaAdapterAttributes attributes{};
  watch_driver_calls();
  const std::uint32_t result = GetAdapterAttributes(adapter, &attributes);
  // The result is a success whatever happens; only the call itself tells.
  if (last_failed_driver_call()) {
    throw operation_failure("the adapter attributes cannot be read", adapter, "GetAdapterAttributes", Results::kHba, result);
  }
  return attributes;
}

HbaPortAttributes read_port(std::uint32_t adapter) {
  HbaPortAttributes attributes{};
  watch_driver_calls();
  const std::uint32_t result = GetAdapterPortAttributes(adapter, 0, &attributes);
  if (result != HBA_STATUS_OK) {
    throw operation_failure("the port attributes cannot be read", adapter, "GetAdapterPortAttributes", Results::kHba, result);
  }
  return attributes;
}

dfc_drv_info read_driver(std::uint32_t adapter) {
  dfc_drv_info info{};
  watch_driver_calls();
  const std::uint32_t result = DFC_GetDrvInfo(adapter, &info);
  if (result != DFC_OK) {
    throw operation_failure("the driver information cannot be read", adapter, "DFC_GetDrvInfo", Results::kDfc, result);
  }
  return info;
}

}  // namespace vaskdfc::tool
