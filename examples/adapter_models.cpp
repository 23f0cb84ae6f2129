// Lists the models of the adapters of this host. The C interface from C++: initialisation and shutdown become an object's life.
//
//   c++ -m32 -std=c++17 adapter_models.cpp -lvaskdfc -o adapter_models
//
// Exit code: 0 done; 2 there is no adapter, or no driver.
#include <vaskdfc.h>

#include <array>
#include <cstring>
#include <iostream>
#include <string>

class Library {
 public:
  Library() : count_(DFC_InitDiagEnv(boards_.data(), DFC_MAX_BOARDS)) {}
  ~Library() {
    if (count_ > 0) DFC_FreeDiagEnv();
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  std::uint32_t count() const { return count_; }

 private:
  std::array<dfc_brd_info, DFC_MAX_BOARDS> boards_{};
  std::uint32_t count_;
};

// A text of the driver's, which need not end within its field.
template <std::size_t N>
std::string text_of(const char (&field)[N]) {
  return {field, strnlen(field, N)};
}

int main() {
  const Library library;
  for (std::uint32_t board = 0; board < library.count(); ++board) {
    HbaAdapterAttributes adapter{};
    GetAdapterAttributes(board, &adapter);
    std::cout << board << ": " << text_of(adapter.Model) << "\n";
  }
  return library.count() > 0 ? 0 : 2;
}
