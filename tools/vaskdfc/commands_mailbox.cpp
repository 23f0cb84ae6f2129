// Commands that pass mailboxes through: mailbox send.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "command_line.h"
#include "decode.h"
#include "raw_file.h"
#include "region_access.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kCommand = "mailbox send";

// What the older generation takes and answers.
constexpr std::size_t kOlderWords = 32;
constexpr std::uint32_t kOlderReplyBytes = 128;

// An SLI_CONFIG mailbox may come back longer than it was sent.
constexpr std::size_t kRoomWords = 1024;
constexpr std::uint8_t kSliConfig = 0x9B;

// Commands that carry addresses of memory, which a command line cannot have.
constexpr std::array<std::uint8_t, 4> kAddressCommands{0x38, 0x84, 0x8D, 0x8F};

struct Arguments {
  std::string adapter;
  std::vector<std::string> words;
  std::optional<std::string> file;
  std::string retries = "1";
  std::string delay = "100";
};

using Words = std::vector<std::uint32_t>;

std::uint8_t command_of(std::span<const std::uint32_t> words) { return static_cast<std::uint8_t>(words[0] >> 8); }
std::uint16_t status_of(std::span<const std::uint32_t> words) { return static_cast<std::uint16_t>(words[0] >> 16); }

Words words_in_file(const std::string& path) {
  const auto bytes = read_file(path, DFC_MBOX_WORDS * sizeof(std::uint32_t));
  if (bytes.empty() || bytes.size() % sizeof(std::uint32_t) != 0) {
    throw usage_failure(fmt::format("the file \"{}\" has {} bytes, which are no whole 32-bit words", path, bytes.size()));
  }
  Words words(bytes.size() / sizeof(std::uint32_t));
  for (std::size_t i = 0; i < bytes.size(); ++i) words[i / 4] |= static_cast<std::uint32_t>(bytes[i]) << i % 4 * 8;
  return words;
}

Words given_words(const Arguments& arguments) {
  if (arguments.file.has_value() == !arguments.words.empty()) {
    throw usage_failure("either WORDs or --file FILE must be given", "a mailbox has 1 to 64 words of 32 bits");
  }
  if (arguments.file) return words_in_file(*arguments.file);
  if (arguments.words.size() > DFC_MBOX_WORDS) {
    throw usage_failure(
        fmt::format("{} words are too many for a mailbox, which has at most {}", arguments.words.size(), DFC_MBOX_WORDS));
  }
  Words words;
  for (const std::string& word : arguments.words) words.push_back(number_argument(fmt::format("WORD {}", words.size()), word));
  return words;
}

void refuse_what_needs_memory(const Words& words) {
  const std::uint8_t command = command_of(words);
  if (std::ranges::count(kAddressCommands, command) != 0) {
    throw usage_failure(fmt::format("command 0x{:02x} is not sent: its mailbox carries addresses of memory", command),
                        "use the library's mailbox functions from a program");
  }
  const bool is_embedded = words.size() > 1 && (words[1] & 1) != 0;
  if (command != kSliConfig || is_embedded) return;
  throw usage_failure("an SLI_CONFIG mailbox whose request is not embedded is not sent: it is longer than a plain mailbox");
}

// A mailbox on its way. Beyond the words that were given it is 0.
struct Mailbox {
  Words sent;
  std::array<std::uint32_t, kRoomWords> words{};
  std::uint32_t sli_mode = 0;
  std::optional<std::uint32_t> result;  // once it was sent

  bool is_newer() const { return sli_mode >= kNewerSliMode; }
  const char* operation() const { return is_newer() ? "DFC_IssueMboxWithRetryV2" : "DFC_IssueMboxWithRetry"; }
  bool is_completed() const { return result == DFC_OK && status_of(words) == 0; }
};

Mailbox mailbox_for(std::uint32_t sli_mode, const Words& given) {
  Mailbox mailbox{.sent = given, .sli_mode = sli_mode};
  if (!mailbox.is_newer() && given.size() > kOlderWords) {
    throw usage_failure(
        fmt::format("{} words are too many: an adapter of SLI mode {} takes at most {}", given.size(), sli_mode, kOlderWords));
  }
  if (mailbox.is_newer()) mailbox.sent.resize(DFC_MBOX_WORDS);
  std::ranges::copy(mailbox.sent, mailbox.words.begin());
  return mailbox;
}

void send(std::uint32_t adapter, Mailbox& mailbox, std::uint32_t retries, std::uint32_t delay) {
  const auto count = static_cast<std::uint32_t>(mailbox.sent.size());
  std::uint32_t* const words = mailbox.words.data();
  watch_driver_calls();
  mailbox.result = mailbox.is_newer() ? DFC_IssueMboxWithRetryV2(adapter, words, count, retries, delay)
                                      : DFC_IssueMboxWithRetry(adapter, words, count, kOlderReplyBytes, retries, delay);
}

std::string status_text(std::uint16_t status) {
  switch (status) {
    case 0: return "completed";
    case DFC_MBOX_STATUS_FAILED: return "the library's: the call failed or a limit was exceeded";
    case DFC_MBOX_STATUS_BUSY: return "the library's: the driver is busy";
    case DFC_MBOX_STATUS_DRIVER_BAD0004: return "the library's: driver status 0xbad0004";
    default: return fmt::format("the adapter's: 0x{:04x}", status);
  }
}

Cell words_cell(std::span<const std::uint32_t> words) {
  std::vector<std::string> texts;
  for (const std::uint32_t word : words) texts.push_back(fmt::format("0x{:08x}", word));
  return {texts, fmt::format("{}", fmt::join(texts, " "))};
}

// As many words come back as were sent.
Section words_section(const Mailbox& mailbox) {
  constexpr std::size_t kWordsPerLine = 4;
  Section section = table_section("words", "Words", {{"offset", "OFFSET"}, {"sent", "SENT"}, {"received", "RECEIVED"}});
  for (std::size_t at = 0; at < mailbox.sent.size(); at += kWordsPerLine) {
    const std::size_t count = std::min(kWordsPerLine, mailbox.sent.size() - at);
    section.records.push_back({number_cell(at * sizeof(std::uint32_t)), words_cell(std::span(mailbox.sent).subspan(at, count)),
                               mailbox.result ? words_cell(std::span(mailbox.words).subspan(at, count)) : absent()});
  }
  return section;
}

Section mailbox_section(std::uint32_t adapter, const Mailbox& mailbox) {
  const auto answer = [&](auto make_cell) { return mailbox.result ? make_cell() : absent(); };
  const std::uint16_t status = status_of(mailbox.words);
  return record_section("mailbox", "Mailbox",
                        {{"adapter", "Adapter", number_cell(adapter)},
                         {"sli_mode", "SLI mode", number_cell(mailbox.sli_mode)},
                         {"command", "Command", text_cell(fmt::format("0x{:02x}", command_of(mailbox.sent)))},
                         {"sent", "Sent", flag_cell(mailbox.result.has_value())},
                         {"status", "Status", answer([&] { return number_cell(status); })},
                         {"status_meaning", "Status meaning", answer([&] { return text_cell(status_text(status)); })},
                         {"result", "Result", answer([&] { return number_cell(*mailbox.result); })},
                         {"result_name", "Result name", answer([&] {
                            const std::string name = result_name(Results::kMailbox, *mailbox.result);
                            return name.empty() ? absent() : text_cell(name);
                          })}});
}

// The wrappers of the library sleep between attempts.
void tell_when_busy(const Context& context, std::uint32_t adapter) {
  const auto attempts = std::make_shared<std::uint32_t>(0);
  on_driver_call([&context, adapter, attempts](const DriverCall& call) {
    if (call.header.status != kDriverBusy) return;
    context.remark(fmt::format("adapter {}: the driver was busy at attempt {}", adapter, ++*attempts));
  });
}

void run(Context& context, const Arguments& arguments) {
  const Words given = given_words(arguments);
  refuse_what_needs_memory(given);
  const std::uint32_t retries = number_argument("--retries", arguments.retries);
  const std::uint32_t delay = number_argument("--delay", arguments.delay);
  if (retries == 0) throw usage_failure("--retries: at least 1, which counts the first attempt as well");

  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Mailbox mailbox = mailbox_for(read_driver(adapter).sli_mode, given);
  const std::string intent = fmt::format("send a mailbox with command 0x{:02x} to adapter {}", command_of(given), adapter);
  if (context.may_change(intent)) {
    tell_when_busy(context, adapter);
    send(adapter, mailbox, retries, delay);
  }
  context.print({.command = kCommand, .sections = {mailbox_section(adapter, mailbox), words_section(mailbox)}});
  if (!mailbox.result || mailbox.is_completed()) return;
  throw operation_failure(
      fmt::format("the mailbox was not completed: status {}, {}", status_of(mailbox.words), status_text(status_of(mailbox.words))),
      adapter, mailbox.operation(), Results::kMailbox, *mailbox.result);
}

}  // namespace

void add_mailbox_commands(CommandLine& commands) {
  const std::vector<std::string> examples{"vaskdfc mailbox send 0 0x200", "vaskdfc mailbox send 3 0x200 0 0 0",
                                          "vaskdfc mailbox send 3 --file mailbox.bin --dry-run",
                                          "vaskdfc mailbox send 0 0x200 --retries 5 --delay 1000 --yes"};
  commands.group("mailbox", "Send mailboxes to an adapter", examples);
  auto arguments = std::make_shared<Arguments>();
  const Command command =
      commands.add_for_adapter(kCommand, "Send a mailbox and show it as it was completed", examples, arguments, run);
  command.add_option("WORD", arguments->words, "Words of the mailbox, 32 bits each; the command is bits 8 to 15 of the first");
  command.add_option("-f,--file", arguments->file, "Take the mailbox from a file of little-endian words, at most 256 bytes")
      .type_name("FILE");
  command.add_option("--retries", arguments->retries, "How often a busy driver is asked, 1 if left out").type_name("N");
  command.add_option("--delay", arguments->delay, "Milliseconds between attempts, rounded up to seconds; 100 if left out")
      .type_name("MS");
}

}  // namespace vaskdfc::tool
