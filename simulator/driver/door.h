// The typed door through which families register what the driver does for a callback.
//
//   DriverStatus port_attributes(BoardCall& call, PortAttributesReply& reply) { ... }
//
//   door.on<Callback::kHbaPortAttributes>(port_attributes);
//
// A handler names its callback's records in the table's order: const for what only travels to the driver, not const for what
// the driver writes. Its first parameter says whom the call addresses: a BoardCall an adapter, which is looked up and there; a
// plain Call the driver as a whole. Another record, direction or count does not compile.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>

#include "transport/callbacks.h"
#include "vmkmgmt_sim.h"

namespace simulator {

using vaskdfc::Callback;
using vaskdfc::Callbacks;
using DriverStatus = vmkmgmt_sim_driver_status;

class Adapter;
class Driver;

struct Call {
  Driver& driver;
  dfc_mgmt_hdr& header;
  const std::string& interface_name;
};

struct BoardCall : Call {
  Adapter& adapter;
};

// A callback's parameters after the header, in the table's order; null where there is none.
using Payloads = std::array<void*, 3>;

class Door {
 public:
  using Handler = std::function<DriverStatus(Call&, const Payloads&)>;

  template <Callback kCallback, typename TheCall, typename... Records>
  void on(DriverStatus (*handler)(TheCall&, Records&...)) {
    using Row = Callbacks::At<kCallback>;
    static_assert(sizeof...(Records) == Row::kPayloads, "wrong number of records: see this callback's row in callbacks.h");
    if constexpr (sizeof...(Records) == Row::kPayloads) {
      static_assert(Row::template records_match<Records...>(), "wrong record: see this callback's row in callbacks.h");
      static_assert(directions_match<Row, Records...>(std::index_sequence_for<Records...>()),
                    "wrong direction: a record is const if, and only if, the callback's row in callbacks.h says In");
      handlers_[row_of(kCallback)] = [handler](Call& call, const Payloads& payloads) {
        return enter(handler, call, payloads, std::index_sequence_for<Records...>());
      };
    }
  }

  // "Not supported" for a callback that no family registered.
  DriverStatus enter(const vaskdfc::CallbackFacts& callback, Call& call, const Payloads& payloads) const {
    const Handler& handler = handlers_[index_of(Callbacks::kFacts, callback.id)];
    return handler ? handler(call, payloads) : VMKMGMT_SIM_DRIVER_NOT_SUPPORTED;
  }

 private:
  static constexpr std::size_t row_of(Callback callback) {
    return index_of(Callbacks::kFacts, static_cast<std::uint64_t>(callback));
  }

  static consteval bool is_in(std::uint32_t usage) { return usage == static_cast<std::uint32_t>(vaskdfc::Usage::kIn); }

  template <typename Row, typename... Records, std::size_t... kIndex>
  static consteval bool directions_match(std::index_sequence<kIndex...>) {
    return ((std::is_const_v<Records> == is_in(Row::kFacts.usages[kIndex + 1])) && ...);
  }

  template <typename TheCall, typename... Records, std::size_t... kIndex>
  static DriverStatus enter(DriverStatus (*handler)(TheCall&, Records&...), Call& call, const Payloads& payloads,
                            std::index_sequence<kIndex...>) {
    if constexpr (std::is_same_v<TheCall, BoardCall>) {
      Adapter* const adapter = find_adapter(call);
      if (adapter == nullptr) return VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD;
      BoardCall board_call{call, *adapter};
      return handler(board_call, *static_cast<Records*>(payloads[kIndex])...);
    } else {
      static_assert(std::is_same_v<TheCall, Call>, "a handler's first parameter is a Call& or a BoardCall&");
      return handler(call, *static_cast<Records*>(payloads[kIndex])...);
    }
  }

  // The adapter that a call addresses; null if there is none.
  static Adapter* find_adapter(const Call& call);

  std::array<Handler, Callbacks::kCount> handlers_;
};

}  // namespace simulator
