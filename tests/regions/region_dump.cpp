// How the library sees the image of a configuration region: region_dump 22|23 FILE, or region_dump default to write the default
// image of region 23, region_dump blank to write a blank image of region 22.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "regions/region22.h"
#include "regions/region23.h"
#include "vaskdfc/platform.h"
#include "vaskdfc/regions.h"

namespace {

using Image = std::vector<std::uint8_t>;

const char* reason(vaskdfc::SearchStatus status) {
  switch (status) {
    case vaskdfc::SearchStatus::kFound: return "found";
    case vaskdfc::SearchStatus::kTooShort: return "length exhausted";
    case vaskdfc::SearchStatus::kEnd: return "end marker";
    case vaskdfc::SearchStatus::kVersion: return "version";
    case vaskdfc::SearchStatus::kSignature: return "signature";
  }
  return "?";
}

void dump_region23(Image& image) {
  const bool is_valid = image.size() == DFC_REGION23_BYTES && vaskdfc::is_region23(image);
  std::printf("image: %s\n", is_valid ? "valid" : "replaced by the default image");
  for (const unsigned type : {0xA0u, 0xA1u, 0xA2u, 0xA3u}) {
    vaskdfc::SearchStatus status{};
    const std::uint8_t* const record = vaskdfc::searchRegion23(image, static_cast<std::uint8_t>(type), status);
    std::printf("%02X: ", type);
    if (record != nullptr) {
      std::printf("found at %td\n", record - image.data());
    } else {
      std::printf("none, %s (%d)\n", reason(status), static_cast<int>(status));
    }
  }
}

void dump_region22(const Image& image) {
  vaskdfc::Region22 region{};
  const bool is_whole = image.size() == sizeof(region);
  if (is_whole) std::memcpy(&region, image.data(), sizeof(region));
  std::printf("image: %s\n", is_whole && vaskdfc::is_region22(region) ? "valid" : "none");
}

void write(const Image& image) { std::cout.write(reinterpret_cast<const char*>(image.data()), std::ssize(image)); }

}  // namespace

// The library's code wants a platform, although images are read without one.
int vmk_MgmtUserInit(const void*, uint64_t, vmk_MgmtUserHandle*) { return -1; }
int vmk_MgmtUserDestroy(vmk_MgmtUserHandle) { return -1; }
int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle, uint64_t, uint64_t, uint32_t, ...) { return -1; }

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments == std::vector<std::string>{"default"}) {
    Image image(DFC_REGION23_BYTES);
    vaskdfc::initRegion23(image.data());
    write(image);
    return 0;
  }
  if (arguments == std::vector<std::string>{"blank"}) {
    Image image(sizeof(vaskdfc::Region22));
    std::memcpy(image.data(), &vaskdfc::kBlankRegion22, image.size());
    write(image);
    return 0;
  }
  const bool is_known = arguments.size() == 2 && (arguments[0] == "22" || arguments[0] == "23");
  std::ifstream file(is_known ? arguments[1] : std::string(), std::ios::binary);
  if (!file) {
    std::fputs("usage: region_dump 22|23 FILE, region_dump default, region_dump blank\n", stderr);
    return 2;
  }
  Image image{std::istreambuf_iterator<char>(file), {}};
  if (arguments[0] == "23") {
    dump_region23(image);
  } else {
    dump_region22(image);
  }
  return 0;
}
