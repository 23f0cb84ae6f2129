// Calls operations of the built library as an application does that opens it when it runs, and keeps a record of their names.
#pragma once

#include <gtest/gtest.h>
#include <vaskdfc.h>

#include <array>
#include <cstring>
#include <string>

void* exported(const char* name);

// OPERATION(GetDfcRev)(&major, &minor) calls, *OPERATION(EventMissedCount) reads what the library exports under this name.
#define OPERATION(name) reinterpret_cast<decltype(name)*>(exported(#name))

// The adapters of the built-in scenario.
inline constexpr std::uint32_t kConverged = 0;  // FCoE, SLI mode 4
inline constexpr std::uint32_t kVirtual = 1;    // with virtual ports, SLI mode 4
inline constexpr std::uint32_t kPlugged = 2;    // without a cable but with a loopback plug, SLI mode 4
inline constexpr std::uint32_t kOlder = 3;      // SLI mode 3
inline constexpr std::uint32_t kAdapters = 5;

inline constexpr HbaWwn kConvergedPort{{0x10, 0x00, 0x00, 0x5a, 0x41, 0x56, 0x02, 0x01}};
inline constexpr HbaWwn kVirtualPort{{0x10, 0x01, 0x00, 0x5a, 0x41, 0x56, 0x03, 0x10}};
inline constexpr HbaWwn kArrayPort{{0x50, 0x5a, 0x41, 0x00, 0x0c, 0x00, 0x10, 0x01}};  // of the fabric of the converged adapter
inline constexpr HbaWwn kArrayNode{{0x50, 0x5a, 0x41, 0x00, 0x0c, 0x00, 0x10, 0x00}};

inline std::string name_text(const HbaWwn& name) { return {name.wwn, name.wwn + sizeof(name.wwn)}; }

template <typename Record>
std::uint32_t word_at(const Record& record, std::size_t offset) {
  std::uint32_t word;
  std::memcpy(&word, reinterpret_cast<const char*>(&record) + offset, sizeof(word));
  return word;
}

// A test that uses the library.
class Operations : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};
