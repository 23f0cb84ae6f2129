// The C library's border, replaced where a test is linked: clock, sleep, memory, names of process and host, and where the
// library's files are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vaskdfc::test {

struct CLibrary {
  std::int32_t seconds = 1700000000;  // 2023-11-14T22:13:20
  int process_id = 4711;
  long thread_id = 4712;
  std::string host_name = "host-17";
  std::vector<std::string> sleeps;        // what the library asked for, such as "sleep 1" and "usleep 1000"
  std::size_t refused_bytes = 0;          // allocations of exactly this size fail; 0: none do
  std::size_t allocations = 0;            // made so far, refused ones included
  std::size_t refused_allocation = 0;     // the allocation with this number fails, counted from 1; 0: none does
  std::ptrdiff_t live_allocations = 0;    // made and not released
  std::filesystem::path scratch;          // stands for /scratch
  std::vector<std::string> opened_files;  // path and mode, in order
};

// What the replaced functions answer and record. Every test starts with fresh values.
extern CLibrary c_library;

}  // namespace vaskdfc::test
