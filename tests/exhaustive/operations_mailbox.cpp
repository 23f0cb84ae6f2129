// Mailboxes, configuration regions, FCoE, and what addresses the library as a whole.
#include <sys/time.h>

#include <algorithm>
#include <cstdlib>

#include "exhaustive/operation.h"
#include "support/host_memory.h"
#include "transport/mgmt_interface.h"
#include "vaskdfc.h"

namespace vaskdfc::test {
namespace {

// As many words as any operation looks at.
constexpr std::uint32_t kMailboxWords = 1024;
// Word counts up to here are tried, beyond what operations accept.
constexpr std::uint32_t kMostWords = 1100;
// What the wrappers wait between attempts, and how often they try: the second attempt of a busy driver succeeds.
constexpr std::uint32_t kDelay = 1;
constexpr std::uint32_t kAttempts = 2;

// A mailbox of an ordinary command, or of one that names memory of the application, which it then really has.
std::uint32_t* mailbox(Caller& c, std::uint32_t command, std::uint32_t word_1 = 0) {
  thread_local const HostMemory memory;
  constexpr std::uint32_t kLengths = 0xFF000FFF;
  std::array<std::uint32_t, kMailboxWords> words{};
  words[0] = c.number(command << 8);
  words[1] = c.number(word_1);
  for (std::size_t at = 2; at < DFC_MBOX_WORDS; ++at) words[at] = c.number(0);
  switch (words[0] >> 8 & 0xFF) {
    case 0x84:
      words[2] &= kLengths;
      words[3] = memory.address();
      words[5] &= kLengths;
      words[6] = memory.address();
      break;
    case 0x38:
    case 0x8D:
    case 0x8F:
      words[3] &= kLengths;
      words[4] = memory.address();
      break;
    default: break;
  }
  return c.record(words)->data();
}

constexpr std::uint32_t kRegionBytes = 4096;  // of the largest region

constexpr std::uint32_t kReadRevision = 0x11;
constexpr std::uint32_t kRunDiagnostics = 0x84;
constexpr std::uint32_t kSliConfig = 0x9B;
constexpr std::uint32_t kEmbedded = 1;

// Mailboxes that go wrong: a failed call has no result of its own but what is said here of three statuses.
Steps sends_mailbox(Result failure, Result busy, Result not_taken, Result other) {
  return fails(Callback::kMbox, failure, {{0xBAD0039, busy}, {0xBAD005A, not_taken}, {0xBAD0004, other}});
}

constexpr std::string_view kStatusInMailbox = "the status of a failure stands in the mailbox";

// Reading region 22 or 23, and writing it, on either generation. The results of a callback that was not reached tell what a dump
// that failed leads to.
Steps dumps(Result failure) { return sli_mode(failure) + fails(Callback::kHbaIssueDmpMbx, failure); }
// Deliberate: an update that fails is an update that the adapter completed with 0.
Steps updates() { return sli_mode(DFC_OK) + fails(Callback::kHbaIssueUpdMbx, DFC_OK); }
Steps dumps_older(std::uint32_t pieces, Result failure) {
  return repeated(pieces, sends_mailbox(failure, failure, failure, failure));
}
Steps updates_older() { return sends_mailbox(DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP); }
Steps adapter_type() { return {{.callback = Callback::kGetTrelDfcInfo, .platform = DFC_FAILED, .driver = Result::status()}}; }

// The image is the caller's from then on.
std::uint32_t region23(Caller& c, std::uint32_t sli_mode) {
  std::uint8_t*& image = *c.record<std::uint8_t*>(nullptr);
  std::uint32_t& size = *c.record<std::uint32_t>(0);
  const std::uint32_t result = GetRegion23(c.board(), &image, &size, sli_mode);
  std::copy_n(image, size, c.bytes(size));
  std::free(image);
  image = nullptr;  // addresses differ from run to run
  return result;
}

constexpr std::uint32_t kRegion22Pieces = 4;
constexpr std::uint32_t kRegion23Pieces = 8;

std::vector<Result> results(std::uint32_t count, Result result) { return std::vector<Result>(count, result); }
std::vector<Result> operator+(std::vector<Result> first, const std::vector<Result>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

std::vector<Operation> mailbox_operations() {
  constexpr std::uint32_t kWords = 32;
  constexpr std::uint32_t kBytes = 128;
  constexpr auto plain = [](Caller& c) {
    return IssueMbox(c.board(), mailbox(c, kReadRevision), c.number(kWords, kMostWords), c.number(kBytes));
  };
  constexpr auto with_host_buffers = [](Caller& c) {
    std::uint32_t* const words = mailbox(c, kRunDiagnostics);
    const std::uint32_t result = IssueMbox(c.board(), words, kWords, kBytes);
    words[3] = words[6] = 0;  // addresses differ from run to run
    return result;
  };
  const Steps refused = sli_mode(DFC_FAILED) + sends_mailbox(DFC_FAILED, DFC_FAILED, DFC_MBOX_NOT_TAKEN, DFC_FAILED);
  return {
      {.name = "IssueMbox",
       .call = plain,
       .generation = Generation::kSli3,
       .steps = refused,
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "IssueMbox",
       .call = with_host_buffers,
       .generation = Generation::kSli3,
       .steps = refused,
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "IssueMboxEx",
       .call =
           [](Caller& c) {
             return IssueMboxEx(c.board(), mailbox(c, kReadRevision), c.bytes(2048), static_cast<std::uint8_t>(c.number(5)),
                                c.number(16), c.number(16));
           },
       .steps = sends_mailbox(DFC_FAILED, DFC_FAILED, DFC_MBOX_NOT_TAKEN, DFC_FAILED),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "IssueExtendedSLIConfig",
       .call =
           [](Caller& c) {
             return IssueExtendedSLIConfig(c.board(), mailbox(c, kSliConfig), c.number(1), c.number(1), c.number(64));
           },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kMboxSliCfgExt, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "DFC_IssueMboxWithRetry",
       .call =
           [](Caller& c) {
             return DFC_IssueMboxWithRetry(c.board(), mailbox(c, kReadRevision), c.number(kWords, kMostWords),
                                           c.number(kBytes, kRegionBytes), c.number(kAttempts, 3), c.number(kDelay));
           },
       .steps = sends_mailbox(DFC_MBOX_GAVE_UP, Result::as_ever(), DFC_MBOX_NOT_TAKEN, DFC_MBOX_GAVE_UP),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "DFC_IssueMboxWithRetryV2",
       .call =
           [](Caller& c) {
             return DFC_IssueMboxWithRetryV2(c.board(), mailbox(c, kReadRevision), c.number(DFC_MBOX_WORDS, kMostWords),
                                             c.number(kAttempts, 3), c.number(kDelay));
           },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + sends_mailbox(DFC_MBOX_GAVE_UP, Result::as_ever(), DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "DFC_IssueMboxWithRetryV2",
       .call =
           [](Caller& c) {
             return DFC_IssueMboxWithRetryV2(c.board(), mailbox(c, kSliConfig), c.number(70, kMostWords), c.number(kAttempts, 3),
                                             c.number(kDelay));
           },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + sli_mode(DFC_FAILED) + fails(Callback::kMboxSliCfgExt, DFC_FAILED),
       .without_memory = {DFC_FAILED}},
      {.name = "DFC_IssueMboxWithRetryV2",
       .call =
           [](Caller& c) {
             return DFC_IssueMboxWithRetryV2(c.board(), mailbox(c, kSliConfig, kEmbedded), c.number(DFC_MBOX_WORDS, kMostWords),
                                             c.number(kAttempts, 3), c.number(kDelay));
           },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + sends_mailbox(DFC_MBOX_GAVE_UP, Result::as_ever(), DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "DFC_IssueMboxWithRetryEx",
       .call =
           [](Caller& c) {
             return DFC_IssueMboxWithRetryEx(c.board(), mailbox(c, kReadRevision), c.bytes(2048),
                                             static_cast<std::uint8_t>(c.number(5)), c.number(16), c.number(16),
                                             c.number(kAttempts, 3), c.number(kDelay));
           },
       .steps = sends_mailbox(DFC_MBOX_GAVE_UP, Result::as_ever(), DFC_MBOX_GAVE_UP, DFC_MBOX_GAVE_UP),
       .without_memory = {DFC_NO_MEMORY},
       .writes_on_failure = kStatusInMailbox},
      {.name = "DFC_IssueDumpMBox",
       .call =
           [](Caller& c) {
             const std::uint32_t room = c.number(DFC_REGION23_BYTES, kRegionBytes);
             return DFC_IssueDumpMBox(c.board(), c.number(DFC_DUMP_TYPE_REGION), c.number(0), c.number(23), c.number(0),
                                      c.bytes(room), c.record(room));
           },
       .generation = Generation::kSli4,
       .steps = dumps(DFC_FAILED),
       .without_memory = {DFC_FAILED},
       .writes_on_failure = "what came back is delivered all the same, and its length"},
      {.name = "LEG_IssueDumpMBox",
       .call =
           [](Caller& c) {
             return LEG_IssueDumpMBox(c.board(), c.bytes(kRegionBytes), c.record<std::uint32_t>(kRegionBytes), c.number(22));
           },
       .steps = repeated(kRegion22Pieces, sends_mailbox(DFC_MBOX_STATUS_FAILED, DFC_MBOX_STATUS_BUSY, DFC_MBOX_STATUS_FAILED,
                                                        DFC_MBOX_STATUS_DRIVER_BAD0004)),
       .without_memory = results(kRegion22Pieces, DFC_NO_MEMORY)},
      {.name = "DFC_IssueUpdateCfgMBox",
       .call =
           [](Caller& c) {
             return DFC_IssueUpdateCfgMBox(c.board(), c.number(DFC_UPDATE_TYPE_REGION), c.number(23), c.bytes(kRegionBytes),
                                           c.number(DFC_REGION23_BYTES, kRegionBytes), c.record<std::uint32_t>());
           },
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kHbaIssueUpdMbx, DFC_FAILED),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "DFC_ResetAdapter",
       .call = [](Caller& c) { return DFC_ResetAdapter(c.board(), c.number(DFC_RESET_TYPE_3)); },
       .steps = fails(Callback::kGetDfcRev, DFC_FAILED) + fails(Callback::kReset, DFC_FAILED)},
      {.name = "DFC_SetDumpEnv",
       .call = [](Caller& c) { return DFC_SetDumpEnv(c.board(), c.number(DFC_DUMP_MODE_INDUCE)); },
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kInduceDump, DFC_DUMP_NOT_INDUCED)},
      {.name = "DFC_SetDumpEnv",
       .call = [](Caller& c) { return DFC_SetDumpEnv(c.board(), c.number(DFC_MODE_WAITING)); },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + fails(Callback::kSetDiag, 0)},
      {.name = "DFC_GetDriverDumpRegion",
       .call =
           [](Caller& c) {
             return DFC_GetDriverDumpRegion(c.board(), c.number(1), c.bytes(DFC_DUMP_REGION_BYTES),
                                            c.record(c.number(DFC_DUMP_REGION_BYTES)));
           },
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) +
                fails(Callback::kGetDumpRegion, DFC_FAILED,
                      {{0xBAD0003, DFC_DUMP_REGION_BAD0003}, {0xBAD0007, DFC_UNSUPPORTED}, {0xBAD0014, DFC_DUMP_REGION_BAD0014}}),
       .writes_on_failure = "the length is what the driver said"},
  };
}

std::vector<Operation> region_operations() {
  constexpr auto get_22 = [](Caller& c) {
    return DFC_GetRegion22(c.board(), reinterpret_cast<dfc_region22_entry*>(c.bytes(DFC_REGION22_BYTES)),
                           c.record<std::uint32_t>());
  };
  constexpr auto set_22 = [](Caller& c) {
    return DFC_SetRegion22(c.board(), reinterpret_cast<const dfc_region22_entry*>(c.bytes(DFC_REGION22_BYTES)), c.number(3));
  };
  constexpr auto init_22 = [](Caller& c) { return DFC_InitR22(c.board()); };
  constexpr auto init_23 = [](Caller& c) { return DFC_InitR23(c.board()); };
  constexpr auto get_link_down = [](Caller& c) { return DFC_GetPersistLinkDown(c.board(), c.record<std::uint16_t>()); };
  constexpr auto set_link_down = [](Caller& c) {
    return DFC_SetPersistLinkDown(c.board(), static_cast<std::uint16_t>(c.number(1)));
  };
  const Steps two_modes = sli_mode(DFC_FAILED) + sli_mode(DFC_FAILED);
  const std::vector<Result> read_older = results(1, DFC_NO_MEMORY) + results(kRegion23Pieces, DFC_FAILED);
  return {
      {.name = "GetRegion23",
       .call = [](Caller& c) { return region23(c, 4); },
       .generation = Generation::kSli4,
       .steps = dumps(DFC_FAILED),
       .without_memory = {DFC_NO_MEMORY, DFC_FAILED}},
      {.name = "GetRegion23",
       .call = [](Caller& c) { return region23(c, 3); },
       .steps = dumps_older(kRegion23Pieces, DFC_FAILED),
       .without_memory = read_older},
      {.name = "LegacySetRegion23",
       .call = [](Caller& c) { return LegacySetRegion23(c.board(), c.bytes(DFC_REGION23_BYTES), DFC_REGION23_BYTES); },
       .steps = updates_older(),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "LegacySetRegion22",
       .call = [](Caller& c) { return LegacySetRegion22(c.board(), c.bytes(DFC_REGION22_BYTES), DFC_REGION22_BYTES); },
       .steps = updates_older(),
       .without_memory = {DFC_NO_MEMORY}},
      {.name = "DFC_InitR23",
       .call = init_23,
       .generation = Generation::kSli4,
       .steps = sli_mode(DFC_FAILED) + updates(),
       .without_memory = {DFC_NO_MEMORY, DFC_OK}},
      {.name = "DFC_InitR23",
       .call = init_23,
       .generation = Generation::kSli3,
       .steps = sli_mode(DFC_FAILED) + updates_older(),
       .without_memory = {DFC_NO_MEMORY, DFC_NO_MEMORY}},
      {.name = "DFC_InitR22",
       .call = init_22,
       .generation = Generation::kSli4,
       .steps = adapter_type() + adapter_type() + updates(),
       .without_memory = {DFC_NO_MEMORY, DFC_OK}},
      {.name = "DFC_InitR22",
       .call = init_22,
       .generation = Generation::kSli3,
       .steps = adapter_type() + updates_older(),
       .without_memory = {DFC_NO_MEMORY, DFC_NO_MEMORY}},
      {.name = "DFC_GetRegion22",
       .call = get_22,
       .generation = Generation::kSli4,
       .steps = adapter_type() + dumps(DFC_FAILED),
       .without_memory = {DFC_NO_MEMORY, DFC_FAILED}},
      {.name = "DFC_GetRegion22",
       .call = get_22,
       .generation = Generation::kSli3,
       .steps = adapter_type() + repeated(kRegion22Pieces, sends_mailbox(DFC_MBOX_STATUS_FAILED, DFC_MBOX_STATUS_BUSY,
                                                                         DFC_MBOX_STATUS_FAILED, DFC_MBOX_STATUS_DRIVER_BAD0004)),
       .without_memory = results(1 + kRegion22Pieces, DFC_NO_MEMORY)},
      {.name = "DFC_SetRegion22",
       .call = set_22,
       .generation = Generation::kSli4,
       .steps = adapter_type() + dumps(DFC_FAILED) + adapter_type() + updates(),
       .without_memory = {DFC_NO_MEMORY, DFC_FAILED, DFC_OK}},
      {.name = "DFC_SetRegion22",
       .call = set_22,
       .generation = Generation::kSli3,
       .steps = adapter_type() + dumps_older(kRegion22Pieces, DFC_FAILED) + updates_older(),
       .without_memory = results(1, DFC_NO_MEMORY) + results(kRegion22Pieces, DFC_FAILED) + results(1, DFC_NO_MEMORY)},
      {.name = "DFC_SetRegion14",
       .call = [](Caller& c) { return DFC_SetRegion14(c.board(), c.bytes(DFC_REGION14_BYTES)); },
       .generation = Generation::kSli4,
       .steps = adapter_type() + updates(),
       .without_memory = {DFC_OK}},
      {.name = "DFC_GetPersistLinkDown",
       .call = get_link_down,
       .generation = Generation::kSli4,
       .steps = two_modes + dumps(DFC_FAILED),
       .without_memory = {DFC_NO_MEMORY, DFC_FAILED}},
      {.name = "DFC_GetPersistLinkDown",
       .call = get_link_down,
       .generation = Generation::kSli3,
       .steps = two_modes + dumps_older(kRegion23Pieces, DFC_FAILED),
       .without_memory = read_older},
      {.name = "DFC_SetPersistLinkDown",
       .call = set_link_down,
       .generation = Generation::kSli4,
       .steps = two_modes + dumps(DFC_FAILED) + updates(),
       .without_memory = {DFC_NO_MEMORY, DFC_FAILED, DFC_OK}},
      {.name = "DFC_SetPersistLinkDown",
       .call = set_link_down,
       .generation = Generation::kSli3,
       .steps = two_modes + dumps_older(kRegion23Pieces, DFC_FAILED) + updates_older(),
       .without_memory = read_older + results(1, DFC_NO_MEMORY)},
  };
}

std::vector<Operation> fcoe_operations() {
  constexpr std::uint32_t kFcfs = 8;
  const Steps reads = sli_mode(DFC_FAILED) + dumps(DFC_FAILED);
  const std::vector<Result> without_memory_to_read{DFC_NO_MEMORY, DFC_FAILED};
  return {
      {.name = "DFC_FCoEGetFCFList",
       .call =
           [](Caller& c) {
             const std::uint32_t room = c.number(kFcfs, 64);
             return DFC_FCoEGetFCFList(c.board(), c.record(dfc_fcf_list{.numEntries = static_cast<std::uint16_t>(room)},
                                                           sizeof(dfc_fcf_list) + room * sizeof(fcf_entry)));
           },
       .generation = Generation::kSli4,
       // A failure ends the list.
       .steps = sli_mode(DFC_FAILED) + repeated(2, fails(Callback::kHbaGetFcfList, DFC_OK))},
      {.name = "DFC_FCoEGetParams",
       .call = [](Caller& c) { return DFC_FCoEGetParams(c.board(), c.record<dfc_fcoe_params>()); },
       .generation = Generation::kSli4,
       .steps = reads,
       .without_memory = without_memory_to_read},
      {.name = "DFC_FCoESetParams",
       .call = [](Caller& c) { return DFC_FCoESetParams(c.board(), c.record<dfc_fcoe_params>()); },
       .generation = Generation::kSli4,
       .steps = reads + updates(),
       .without_memory = without_memory_to_read + results(1, DFC_OK)},
      {.name = "DFC_FCoEGetFCFConnectList",
       .call = [](Caller& c) { return DFC_FCoEGetFCFConnectList(c.board(), c.record<dfc_fcf_conn_list>()); },
       .generation = Generation::kSli4,
       .steps = reads,
       .without_memory = without_memory_to_read},
      {.name = "DFC_FCoESetFCFConnectList",
       .call =
           [](Caller& c) {
             return DFC_FCoESetFCFConnectList(
                 c.board(), c.record(dfc_fcf_conn_list{.numEntries = static_cast<std::uint8_t>(c.number(3)), .maxEntries = 16}));
           },
       .generation = Generation::kSli4,
       .steps = reads + updates(),
       .without_memory = without_memory_to_read + results(1, DFC_OK)},
  };
}

}  // namespace vaskdfc::test
