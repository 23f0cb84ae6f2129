// The driver's own log, which keeps the newest messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "driver/kept_bytes.h"

namespace simulator {

class KernelLog {
 public:
  static constexpr std::size_t kMessages = 256;

  // The store must outlive the log. Throws StateError when what it holds is not a log.
  explicit KernelLog(StateStore& store);

  // Bytes that are not printable ASCII are kept as \xHH. Both throw StateError.
  void append(std::string_view message);
  std::vector<std::string> messages() const;

 private:
  KeptBytes kept_;
};

}  // namespace simulator
