#include "support/region_test.h"

#include <algorithm>
#include <map>

namespace vaskdfc::test {
namespace {

const std::map<std::uint32_t, std::uint32_t> kRegionBytes{{14, 1000}, {22, 512}, {23, 1024}};

Image padded(Image image, std::size_t bytes) {
  image.resize(bytes, 0);
  return image;
}

}  // namespace

Image default_region23() {
  Image image(1024, 0);
  image = with_bytes(image, 0, {'R', 'G', '2', '3', 1, 0, 0, 0});
  image = with_bytes(image, 8, {0xA0, 2, 1, 1, 0x0E, 0xFC, 0, 0, 0, 0, 0, 0});
  image = with_bytes(image, 20, {0xA1, 0x50, 0, 0});
  image = with_bytes(image, 344, {0xA2, 2, 0x20, 0, 1, 0, 1, 0, 0xFF, 0, 0, 0});
  return with_bytes(image, 356, {0xFF, 0, 0});
}

Image first_bytes(Image image, std::size_t bytes) {
  image.resize(bytes);
  return image;
}

Image with_bytes(Image image, std::size_t offset, const ByteVector& bytes) {
  std::ranges::copy(bytes, image.begin() + static_cast<std::ptrdiff_t>(offset));
  return image;
}

void RegionTest::expect_adapter_type(std::uint32_t type, std::uint32_t platform_status, std::uint32_t driver_status) {
  const DriverInfoReply reply{.adapter_type = type};
  driver.expect({.callback = Callback::kGetTrelDfcInfo,
                 .sent = {.brdno = kDriverBoard},
                 .platform_status = platform_status,
                 .driver_status = driver_status,
                 .payload = {bytes_of(reply)}});
}

void RegionTest::expect_dump(std::uint32_t region, const Image& image, std::uint32_t completion) {
  expect_driver_info(4);
  driver.expect({.callback = Callback::kHbaIssueDmpMbx,
                 .sent = {.brdno = kDriverBoard, .arg2 = kRegionBytes.at(region)},
                 .sent_payload = {bytes_of(DumpRequest{.type = 2, .region = region})},
                 .arg3 = static_cast<std::uint32_t>(image.size()),
                 .payload = {{}, image, bytes_of(CompletionWord{completion})}});
}

void RegionTest::expect_update(std::uint32_t region, const Image& image, std::uint32_t reply_word, std::uint32_t driver_status) {
  expect_driver_info(4);
  driver.expect({.callback = Callback::kHbaIssueUpdMbx,
                 .sent = {.brdno = kDriverBoard, .arg2 = kRegionBytes.at(region), .arg4 = region},
                 .sent_payload = {padded(image, sizeof(RegionData))},
                 .driver_status = driver_status,
                 .payload = {{}, bytes_of(CompletionWord{reply_word})}});
}

void RegionTest::expect_legacy_dump(std::uint32_t region, const Image& image, std::uint32_t mailbox_status) {
  constexpr std::size_t kPiece = 128;
  for (std::size_t offset = 0; offset < std::max<std::size_t>(image.size(), 1); offset += kPiece) {
    const auto bytes = static_cast<std::uint32_t>(std::min(kPiece, image.size() - offset));
    const Mailbox sent{{0x00001700, 0x32, region | static_cast<std::uint32_t>(offset) << 16, 0, kPiece}};
    Mailbox reply = sent;
    reply.words[0] |= mailbox_status << 16;
    reply.words[4] = bytes;
    MailboxExtension extension{};
    std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(offset), bytes, extension.data);
    driver.expect({.callback = Callback::kMbox,
                   .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
                   .sent_payload = {{}, bytes_of(sent)},
                   .payload = {{}, bytes_of(reply), bytes_of(extension)}});
  }
}

void RegionTest::expect_legacy_update(std::uint32_t region, const Image& image, std::uint32_t driver_status) {
  const auto size = static_cast<std::uint32_t>(image.size());
  const Mailbox sent{{0x00001B00, 0x32, region | size << 16, 0, size}};
  MailboxExtension extension{.flag = 5};
  extension.sent_bytes = size;
  std::ranges::copy(image, extension.data);
  driver.expect({.callback = Callback::kMbox,
                 .sent = {.brdno = kDriverBoard, .arg2 = 128, .arg3 = 256},
                 .sent_payload = {{}, bytes_of(sent), bytes_of(extension)},
                 .driver_status = driver_status,
                 .payload = {{}, bytes_of(sent)}});
}

}  // namespace vaskdfc::test
