#include "scenario/parameters.h"

#include <algorithm>
#include <array>

namespace simulator::scenario {
namespace {

constexpr std::uint32_t kAnyWord = 0xFFFFFFFF;
constexpr bool kRestart = true;
constexpr bool kAtOnce = false;

// What every adapter has.
constexpr std::array kCommon{
    Parameter{"log_mask", "what the driver logs: a bit for each subject", 0, kAnyWord, 0, kAtOnce},
    Parameter{kTopologyParameter, "0 automatic, 1 arbitrated loop, 2 point to point", 0, 2, 0, kRestart},
    Parameter{kLinkSpeedParameter, "speed of the link in Gb/s, 0 automatic", 0, 32, 0, kRestart},
    Parameter{"lun_queue_depth", "commands at a time to one logical unit", 1, 512, 30, kAtOnce},
    Parameter{"target_queue_depth", "commands at a time to one remote port", 1, 65535, 65535, kAtOnce},
    Parameter{"adapter_queue_depth", "commands at a time on the adapter", 32, 8192, 4096, kRestart},
    Parameter{"port_loss_timeout", "seconds until a remote port that left is given up", 1, 255, 10, kAtOnce},
    Parameter{"link_loss_timeout", "seconds until I/O fails after the link went down", 0, 255, 30, kAtOnce},
    Parameter{"verify_by_adisc", "1: known ports are verified by ADISC, not by PLOGI", 0, 1, 0, kAtOnce},
    Parameter{"fcp_class", "class of service for FCP", 2, 3, 3, kRestart},
    Parameter{"fdmi", "registration with the fabric: 0 none, 1 adapter, 2 adapter and host", 0, 2, 0, kRestart},
    Parameter{"scan_descending", "1: remote ports are numbered from the highest FC id down", 0, 1, 1, kRestart},
    Parameter{"max_luns", "logical units that are looked for behind a remote port", 1, 65535, 256, kRestart},
    Parameter{"scatter_segments", "pieces of memory in one command", 64, 4096, 64, kRestart},
    Parameter{"interrupt_mode", "0 INTx, 1 MSI, 2 MSI-X", 0, 2, 2, kRestart},
    Parameter{"heartbeat", "1: the firmware is asked for a sign of life", 0, 1, 0, kAtOnce},
};

constexpr std::array kOlder{
    Parameter{"interrupt_delay", "milliseconds that completions wait for company", 0, 63, 0, kRestart},
    Parameter{"interrupt_count", "completions that do not wait for more", 1, 255, 1, kRestart},
};

constexpr std::array kNewer{
    Parameter{"io_queues", "queues for I/O, each with an interrupt", 1, 32, 4, kRestart},
    Parameter{"virtual_ports", "1: virtual ports may be made", 0, 1, 1, kRestart},
    Parameter{kOasParameter, "1: OAS rules are carried out and may be changed", 0, 1, 1, kAtOnce},
};

template <std::size_t N>
constexpr auto with_common(const std::array<Parameter, N>& own) {
  std::array<Parameter, kCommon.size() + N> result;
  std::ranges::copy(own, std::ranges::copy(kCommon, result.begin()).out);
  return result;
}

constexpr std::array kOlderTable = with_common(kOlder);
constexpr std::array kNewerTable = with_common(kNewer);

constexpr bool is_sound(const Parameter& parameter) {
  return parameter.minimum <= parameter.initial && parameter.initial <= parameter.maximum;
}
static_assert(std::ranges::all_of(kOlderTable, is_sound) && std::ranges::all_of(kNewerTable, is_sound));

}  // namespace

std::span<const Parameter> parameters_of(std::uint32_t sli_mode) {
  if (sli_mode >= 4) return kNewerTable;
  return kOlderTable;
}

const Parameter* find_parameter(std::uint32_t sli_mode, std::string_view name) {
  const auto table = parameters_of(sli_mode);
  const auto found = std::ranges::find(table, name, &Parameter::name);
  return found == table.end() ? nullptr : &*found;
}

}  // namespace simulator::scenario
