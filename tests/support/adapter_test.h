// The fixture of operations that first ask for an adapter's SLI mode: board index 3 stands for driver board 5.
#pragma once

#include <cstdint>
#include <string>

#include "support/library_test.h"
#include "transport/log.h"

namespace vaskdfc::test {

class AdapterTest : public LibraryTest {
 protected:
  static constexpr std::uint32_t kBoard = 3;
  static constexpr std::uint32_t kDriverBoard = 5;

  AdapterTest() { map_board(kBoard, kDriverBoard); }

  // Scripts the calls that tell the SLI mode, all of them successful or the first one failing.
  void expect_driver_info(std::uint32_t sli_mode, std::uint32_t feature_flags = 0);
  void expect_no_driver_info();

  // What those calls write into the log with all classes of lines.
  static std::string driver_info_lines();
};

// One line of the log, as every test sees it.
std::string log_line(const std::string& function, int line, const std::string& message);
std::string call_line(const std::string& function, int line, const std::string& callback);
std::string ok_line(const std::string& function, int line, const std::string& callback);
std::string error_line(const std::string& function, int line, const std::string& callback, const std::string& statuses);

}  // namespace vaskdfc::test
