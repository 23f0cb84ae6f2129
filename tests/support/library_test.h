// The fixture of every unit test of the library: a fresh library, a scripted driver, a folder in place of /scratch.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/c_library.h"
#include "support/scripted_driver.h"
#include "vaskdfc/transport.h"

namespace vaskdfc::test {

class LibraryTest : public ::testing::Test {
 protected:
  LibraryTest();
  ~LibraryTest() override;
  void TearDown() override { driver.expect_script_used(); }

  // Opens the log with all classes of lines (or those of the mask), without an initialisation.
  void start_log(std::uint32_t mask = 0xF);
  // The log as it stands.
  std::string log() const { return file("log/libvaskdfc.log"); }

  // A file below /scratch.
  std::string file(std::string_view name) const;
  void write_file(std::string_view name, std::string_view text) const;

  // Lets a board index stand for a driver board number, as discovery would.
  void map_board(std::uint32_t board, std::uint32_t driver_board);

  // Scripts one discovery: these driver board numbers answer with these replies, all others fail.
  void expect_discovery(const std::map<std::uint32_t, dfc_initbrds_rsp>& replies);

  ScriptedDriver driver;
};

// A driver board of the supported family, every descriptive byte of it different.
dfc_initbrds_rsp supported_board(std::int32_t condition = 0);

}  // namespace vaskdfc::test
