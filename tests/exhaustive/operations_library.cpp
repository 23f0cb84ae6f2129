// Start and stop, states, the calendar, and entry points without a function.
#include <sys/time.h>

#include "exhaustive/operation.h"
#include "vaskdfc.h"

namespace vaskdfc::test {
namespace {

// Board numbers are probed one by one; one that fails is one adapter less.
constexpr std::uint32_t kProbes = DFC_MAX_BOARDS;

}  // namespace

std::vector<Operation> transport_operations() {
  return {
      {.name = "DFC_InitDiagEnv",
       .call =
           [](Caller& c) {
             const std::uint32_t count = DFC_InitDiagEnv(
                 reinterpret_cast<dfc_brd_info*>(c.bytes(DFC_MAX_BOARDS * sizeof(dfc_brd_info))), c.number(DFC_MAX_BOARDS));
             DFC_FreeDiagEnv();
             return count;
           },
       .scope = Scope::kLibrary,
       .steps = repeated(kProbes, fails(Callback::kInitBrds, kProbes - 1)),
       .writes_on_failure = "the other adapters are described"},
      {.name = "InitDiagEnv",
       .call =
           [](Caller& c) {
             const std::uint32_t count =
                 InitDiagEnv(reinterpret_cast<dfc_brd_info_short*>(c.bytes(DFC_MAX_BOARDS * sizeof(dfc_brd_info_short))));
             FreeDiagEnv();
             return count;
           },
       .scope = Scope::kLibrary,
       .steps = repeated(kProbes, fails(Callback::kInitBrds, kProbes - 1)),
       .writes_on_failure = "the other adapters are described"},
      {.name = "DFC_FreeDiagEnv", .call = [](Caller&) { return DFC_FreeDiagEnv(); }, .scope = Scope::kLibrary},
      {.name = "FreeDiagEnv", .call = [](Caller&) { return FreeDiagEnv(); }, .scope = Scope::kLibrary},
      {.name = "SetBrdEnv",
       .call = [](Caller& c) { return SetBrdEnv(c.board(), c.number(1)); },
       .steps = fails(Callback::kSetDiag, 0)},
      {.name = "SetBrdEnv",
       .call = [](Caller& c) { return SetBrdEnv(c.board(), DFC_MODE_WAITING); },
       .steps = repeated(2, fails(Callback::kSetDiag, 0))},
      {.name = "SetDiagEnv",
       .call = [](Caller& c) { return SetDiagEnv(c.number(1)); },
       .scope = Scope::kLibrary,
       .steps = repeated(DFC_MAX_BOARDS, fails(Callback::kSetDiag, 0))},
      {.name = "trel_GetTimeOfDay",
       .call =
           [](Caller& c) {
             const timeval time{.tv_sec = static_cast<std::int32_t>(c.number(1700000000)), .tv_usec = 0};
             const std::uint32_t size = c.number(20, 64);
             return static_cast<std::uint32_t>(trel_GetTimeOfDay(&time, reinterpret_cast<char*>(c.bytes(size)), size));
           }},
      {.name = "trel_isLeap", .call = [](Caller& c) { return trel_isLeap(c.number(2000)); }},
  };
}

std::vector<Operation> unimplemented_operations() {
  constexpr std::size_t kBytes = 64;
  return {
      {.name = "AddBind", .call = [](Caller& c) { return AddBind(c.board(), c.bytes(kBytes)); }},
      {.name = "DelBind", .call = [](Caller& c) { return DelBind(c.board(), c.bytes(kBytes)); }},
      {.name = "DFC_SendHaldeCommand",
       .call =
           [](Caller& c) {
             return DFC_SendHaldeCommand(c.board(), c.bytes(kBytes), kBytes, c.bytes(kBytes), c.record<std::uint32_t>());
           }},
      {.name = "DFC_VPCreate", .call = [](Caller& c) { return DFC_VPCreate(c.board(), c.bytes(kBytes), c.record<HbaWwn>()); }},
      {.name = "DFC_VPDelete", .call = [](Caller& c) { return DFC_VPDelete(c.board(), c.wwn()); }},
      {.name = "DFC_VPDeleteV2", .call = [](Caller& c) { return DFC_VPDeleteV2(c.board(), c.wwn(), c.number(0)); }},
      {.name = "DFC_GetFcpTargetMappingByWWN",
       .call = [](Caller& c) { return DFC_GetFcpTargetMappingByWWN(c.board(), c.wwn(), c.bytes(kBytes)); }},
      {.name = "DFC_GetAuthConfig",
       .call = [](Caller& c) { return DFC_GetAuthConfig(c.board(), c.bytes(kBytes), c.bytes(kBytes)); }},
      {.name = "DFC_SetAuthConfig",
       .call = [](Caller& c) { return DFC_SetAuthConfig(c.board(), c.bytes(kBytes), c.bytes(kBytes)); }},
      {.name = "DFC_DeleteAuthConfig", .call = [](Caller& c) { return DFC_DeleteAuthConfig(c.board(), c.bytes(kBytes)); }},
      {.name = "DFC_GetAuthPassword",
       .call = [](Caller& c) { return DFC_GetAuthPassword(c.board(), c.bytes(kBytes), c.bytes(kBytes)); }},
      {.name = "DFC_SetAuthPassword",
       .call = [](Caller& c) { return DFC_SetAuthPassword(c.board(), c.bytes(kBytes), c.bytes(kBytes)); }},
      {.name = "DFC_InitiateAuthentication",
       .call = [](Caller& c) { return DFC_InitiateAuthentication(c.board(), c.bytes(kBytes)); }},
      {.name = "DFC_EnableAuthentication", .call = [](Caller& c) { return DFC_EnableAuthentication(c.board()); }},
      {.name = "DFC_DisableAuthentication", .call = [](Caller& c) { return DFC_DisableAuthentication(c.board()); }},
      {.name = "DFC_GetAuthStatus",
       .call = [](Caller& c) { return DFC_GetAuthStatus(c.board(), c.bytes(kBytes), c.bytes(kBytes)); }},
      {.name = "DFC_GetAuthConfigList",
       .call = [](Caller& c) { return DFC_GetAuthConfigList(c.board(), c.bytes(kBytes), c.record<std::uint32_t>()); }},
  };
}

}  // namespace vaskdfc::test
