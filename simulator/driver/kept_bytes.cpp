#include "driver/kept_bytes.h"

#include <fmt/format.h>

#include <utility>

namespace simulator {

KeptBytes::Form KeptBytes::of_size(std::size_t bytes) {
  return {.holds = [=](std::string_view content) { return content.size() == bytes; },
          .description = fmt::format("{} bytes", bytes)};
}

KeptBytes::KeptBytes(StateStore& store, std::string name, std::string initial, Form form)
    : store_(store), name_(std::move(name)), initial_(std::move(initial)), form_(std::move(form)) {
  load();
}

std::string KeptBytes::present(const std::optional<std::string>& stored) const {
  if (!stored) return initial_;
  if (!form_.holds(*stored)) throw StateError::damaged(store_.describe(name_), "the whole file", form_.description);
  return *stored;
}

std::string KeptBytes::load() const { return present(store_.load(name_)); }

void KeptBytes::update(const std::function<void(std::string&)>& change) {
  store_.update(name_, [&](const std::optional<std::string>& stored) {
    std::string content = present(stored);
    change(content);
    return content;
  });
}

}  // namespace simulator
