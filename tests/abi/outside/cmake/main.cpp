// Prints the models of all adapters of the host, with the library's version above them.
#include <vaskdfc.h>

#include <iostream>
#include <string>
#include <vector>

int main() {
  std::vector<char> version(DFC_LIB_VERSION_BYTES);
  const auto length = DFC_GetLibVer(version.data());
  std::cout << std::string(version.data(), length) << '\n';

  std::vector<dfc_brd_info> boards(DFC_MAX_BOARDS);
  const auto count = DFC_InitDiagEnv(boards.data(), DFC_MAX_BOARDS);
  for (uint32_t board = 0; board < count; ++board) {
    HbaAdapterAttributes adapter;
    GetAdapterAttributes(board, &adapter);
    std::cout << std::string(adapter.Model, sizeof(adapter.Model)).c_str() << '\n';
  }
  return DFC_FreeDiagEnv() == 0 ? 0 : 1;
}
