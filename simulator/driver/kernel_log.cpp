#include "driver/kernel_log.h"

#include <fmt/format.h>

#include <algorithm>

#include "scenario/escaped.h"

namespace simulator {
namespace {

// One message a line.
std::vector<std::string> lines(std::string_view text) {
  std::vector<std::string> result;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    result.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return result;
}

bool is_log(std::string_view text) {
  if (!text.empty() && text.back() != '\n') return false;
  return std::ranges::count(text, '\n') <= static_cast<std::ptrdiff_t>(KernelLog::kMessages) &&
         std::ranges::all_of(text, [](char letter) { return is_printable(letter) || letter == '\n'; });
}

KeptBytes::Form form() {
  return {.holds = is_log, .description = fmt::format("at most {} lines of printable ASCII", KernelLog::kMessages)};
}

}  // namespace

KernelLog::KernelLog(StateStore& store) : kept_(store, "kernel.log", "", form()) {}

void KernelLog::append(std::string_view message) {
  kept_.update([&](std::string& kept) {
    std::vector<std::string> messages = lines(kept);
    messages.push_back(escaped(message, [](char letter) { return is_printable(letter) && letter != '\\'; }));
    if (messages.size() > kMessages) messages.erase(messages.begin(), messages.end() - kMessages);
    kept = fmt::format("{}\n", fmt::join(messages, "\n"));
  });
}

std::vector<std::string> KernelLog::messages() const { return lines(kept_.load()); }

}  // namespace simulator
