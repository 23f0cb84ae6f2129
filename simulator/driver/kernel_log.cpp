#include "driver/kernel_log.h"

#include <fmt/format.h>

#include <algorithm>

namespace simulator {
namespace {

constexpr const char* kName = "kernel.log";

std::string printable(std::string_view message) {
  std::string text;
  for (const char letter : message) {
    const bool plain = letter >= ' ' && letter <= '~' && letter != '\\';
    text += plain ? std::string(1, letter) : fmt::format("\\x{:02X}", static_cast<unsigned char>(letter));
  }
  return text;
}

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

}  // namespace

void KernelLog::append(std::string_view message) {
  store_.update(kName, [&](const std::optional<std::string>& present) {
    std::vector<std::string> kept = lines(present.value_or(""));
    kept.push_back(printable(message));
    if (kept.size() > kMessages) kept.erase(kept.begin(), kept.end() - kMessages);
    return fmt::format("{}\n", fmt::join(kept, "\n"));
  });
}

std::vector<std::string> KernelLog::messages() const { return lines(store_.load(kName).value_or("")); }

}  // namespace simulator
