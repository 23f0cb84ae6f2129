#include "support/library_test.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <sstream>

#include "transport/board_table.h"
#include "transport/log.h"
#include "transport/mgmt_interface.h"

namespace vaskdfc::test {

LibraryTest::LibraryTest() {
  c_library = {};
  std::string folder = std::filesystem::temp_directory_path() / "vaskdfc-test-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) std::abort();
  c_library.scratch = folder;
  std::filesystem::create_directory(c_library.scratch / "log");

  dfc_brdno.fill(0);
  dfc_state.fill(0);
  dfc_rststatistics.fill({});
  dfc_refresh_timer.fill(0);
  dftrel_brdCnt = 0;
  trel_mgmt_handle = nullptr;
  refcnt = 0;
  LogLevel = 0;
  scripted_driver = &driver;
}

LibraryTest::~LibraryTest() {
  scripted_driver = nullptr;
  if (fLogger != nullptr) std::fclose(fLogger);
  fLogger = nullptr;
  std::filesystem::remove_all(c_library.scratch);
}

void LibraryTest::start_log(std::uint32_t mask) {
  fLogger = std::fopen((c_library.scratch / "log/libvaskdfc.log").c_str(), "a+");
  ASSERT_NE(fLogger, nullptr);
  LogLevel = mask;
}

std::string LibraryTest::file(std::string_view name) const {
  std::ostringstream text;
  std::ifstream stream(c_library.scratch / name);
  if (stream) text << stream.rdbuf();
  return text.str();
}

void LibraryTest::write_file(std::string_view name, std::string_view text) const {
  std::ofstream(c_library.scratch / name) << text;
}

void LibraryTest::map_board(std::uint32_t board, std::uint32_t driver_board) { dfc_brdno[board] = driver_board; }

void LibraryTest::expect_discovery(const std::map<std::uint32_t, dfc_initbrds_rsp>& replies) {
  for (std::uint32_t probe = 0; probe < DFC_MAX_BOARDS; ++probe) {
    ExpectedCall call{.callback = Callback::kInitBrds, .sent = {.brdno = probe}};
    if (const auto found = replies.find(probe); found != replies.end()) {
      call.payload[0] = bytes_of(found->second);
    } else {
      call.driver_status = 0x0BAD0001;
    }
    driver.expect(std::move(call));
  }
}

dfc_initbrds_rsp supported_board(std::int32_t condition) {
  std::array<std::uint8_t, sizeof(dfc_initbrds_rsp)> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0x80});
  auto reply = std::bit_cast<dfc_initbrds_rsp>(bytes);
  reply.pci_id = 0x56025A41;
  reply.condition = static_cast<std::uint32_t>(condition);
  return reply;
}

}  // namespace vaskdfc::test
