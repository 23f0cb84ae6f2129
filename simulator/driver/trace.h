// The trace: one JSON line for every callback.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "driver/descriptor.h"
#include "transport/callbacks.h"

namespace simulator {

class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct TraceEntry {
  const vaskdfc::CallbackFacts& callback;
  const dfc_mgmt_hdr& sent;
  const dfc_mgmt_hdr& answered;
  std::uint32_t platform_status;
  std::chrono::microseconds duration;
};

class Trace {
 public:
  // Appends to a file. Throws TraceError.
  explicit Trace(const std::string& path);

  // Each line is one write, so that lines of several threads and processes do not mix. One that a full disk or a kill has cut short
  // stays as it is, and the next begins on a line of its own. Throws TraceError.
  void write(const TraceEntry& entry);

 private:
  std::string path_;
  Descriptor file_;
  bool ends_in_mid_line_;
};

}  // namespace simulator
