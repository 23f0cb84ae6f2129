// Images of configuration regions: any bytes as regions 14, 22 and 23 of adapters of both generations, and every operation that
// reads or writes them.
#include "regions/region23.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "promise.h"
#include "region_adapter.h"
#include "regions/region22.h"
#include "transport/records/mailbox.h"
#include "transport/records/regions.h"
#include "vaskdfc.h"

namespace vaskdfc::fuzz {
namespace {

constexpr std::uint32_t kBoard = 0;

// Those that have operations of their own, and one of the largest: numbers and sizes in bytes.
constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 4> kStoredRegions{
    {{14, region_bytes(14)}, {22, region_bytes(22)}, {23, region_bytes(23)}, {160, region_bytes(160)}}};

Image resized(Image image, std::size_t bytes) {
  image.resize(bytes);
  return image;
}

// A region as it is read: with zeros behind what the adapter delivered. Only the newer generation tells how much that was.
struct Read {
  Image image;
  bool is_whole;
};

Read as_read(const Image& image, std::size_t bytes, bool by_callback) {
  return {resized(image, bytes), by_callback ? image.size() >= bytes : !image.empty()};
}

void search(Image image) {
  for (unsigned type = 0; type <= UINT8_MAX; ++type) {
    SearchStatus status{};
    const auto wanted = static_cast<std::uint8_t>(type);
    const std::uint8_t* const record = searchRegion23(image, wanted, status);
    promise((record != nullptr) == (status == SearchStatus::kFound), "a search without a record says why");
    if (record == nullptr) continue;
    promise(record >= image.data() && record < image.data() + image.size(), "a record lies in its image");
    promise(*record == wanted, "a record has the type that was searched");
  }
}

Image read23(const RegionAdapter& adapter) {
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  promise(GetRegion23(kBoard, &bytes, &size, adapter.sli_mode) == DFC_OK, "region 23 can be read, whatever it holds");
  promise(size == DFC_REGION23_BYTES, "an image of region 23 is whole");
  Image image(bytes, bytes + size);
  std::free(bytes);
  return image;
}

void get23(RegionAdapter& adapter, const Image& stored) {
  Read read = as_read(stored, DFC_REGION23_BYTES, adapter.is_newer());
  if (!read.is_whole || !is_region23(read.image)) initRegion23(read.image.data());
  promise(read23(adapter) == read.image, "region 23 is read as it is, or with the default image over it");
  promise(adapter.regions[23] == stored, "reading changes nothing");
}

void init(RegionAdapter& adapter) {
  promise(DFC_InitR23(kBoard) == DFC_OK, "region 23 can be reset");
  Image image(DFC_REGION23_BYTES);
  initRegion23(image.data());
  promise(adapter.regions[23] == image, "a reset region 23 holds the default image");
  promise(read23(adapter) == image, "the default image is valid");
  promise(DFC_InitR22(kBoard) == DFC_OK, "region 22 can be reset");
  promise(adapter.regions[22].size() == DFC_REGION22_BYTES, "a reset region 22 is whole");
}

using Entries = std::vector<dfc_region22_entry>;

Image bytes_of(const Entries& entries) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(entries.data());
  return {first, first + entries.size() * sizeof(dfc_region22_entry)};
}

// The entries of region 22, nothing where there is no image.
std::optional<Image> get22() {
  Entries entries(DFC_REGION22_ENTRIES);
  std::uint32_t count = 0;
  if (DFC_GetRegion22(kBoard, entries.data(), &count) != DFC_OK) return std::nullopt;
  promise(count == entries.size(), "all entries are delivered");
  return bytes_of(entries);
}

// The second half of the last entry lies beyond the image.
Image entries_in(const Image& image) {
  return resized({image.begin() + offsetof(Region22, entries), image.end()}, DFC_REGION22_ENTRIES * sizeof(dfc_region22_entry));
}

void change22(RegionAdapter& adapter, const Image& stored) {
  const Read read = as_read(stored, DFC_REGION22_BYTES, adapter.type == kFcoeType);
  const bool is_valid = read.is_whole && std::ranges::equal(std::span(read.image).first(4), kBlankRegion22.signature);
  const auto before = get22();
  promise(before.has_value() == is_valid, "region 22 is read where it holds an image");
  promise(!before || *before == entries_in(read.image), "entries are those of the image");

  Entries entries(stored.size() % (DFC_REGION22_ENTRIES + 8));
  std::uint8_t next = 1;
  for (dfc_region22_entry& entry : entries) std::ranges::fill(entry.bytes, next++);
  promise(DFC_SetRegion22(kBoard, entries.data(), static_cast<std::uint32_t>(entries.size())) == DFC_OK,
          "entries can be written, whatever was there");

  const Image written = bytes_of(entries);
  Image expected = before.value_or(Image(DFC_REGION22_ENTRIES * sizeof(dfc_region22_entry)));
  const std::size_t in_image = std::min(written.size(), sizeof(Region22::entries));
  std::copy_n(written.begin(), in_image, expected.begin());
  promise(get22() == expected, "the entries that were written are read back, and the others are kept");
}

void set14(RegionAdapter& adapter, const Image& stored) {
  const Image data = resized(stored, DFC_REGION14_BYTES);
  const std::uint32_t result = DFC_SetRegion14(kBoard, data.data());
  if (adapter.type != kFcoeType) {
    promise(result == DFC_UNSUPPORTED && adapter.regions[14] == stored, "only FCoE adapters have region 14");
    return;
  }
  promise(result == DFC_OK && adapter.regions[14] == data, "region 14 is written as it is");
}

// The record's second byte is the length of its data, so that a record of another version changes the chain when it is written.
void change_params() {
  dfc_fcoe_params before{};
  if (DFC_FCoEGetParams(kBoard, &before) != DFC_OK) return;
  for (const std::uint8_t has_vlan : {std::uint8_t{0}, std::uint8_t{1}}) {
    dfc_fcoe_params wanted = before;
    wanted.fcMap[0] ^= 0xFF;
    wanted.vlanValid = has_vlan;
    wanted.vlanId = has_vlan == 1 ? 0xABC : 0;
    promise(DFC_FCoESetParams(kBoard, &wanted) == DFC_OK, "parameters that can be read can be written");
    dfc_fcoe_params after = before;
    promise(DFC_FCoEGetParams(kBoard, &after) == DFC_OK, "written parameters can be read");
    promise(std::ranges::equal(after.fcMap, wanted.fcMap) && after.vlanValid == has_vlan && after.vlanId == wanted.vlanId,
            "parameters are read back");
  }
}

// Nothing where it cannot be read.
std::optional<dfc_fcf_conn_list> connect_list() {
  dfc_fcf_conn_list list{.numEntries = DFC_FCF_CONNECT_ENTRIES};
  if (DFC_FCoEGetFCFConnectList(kBoard, &list) != DFC_OK) return std::nullopt;
  promise(list.numEntries <= DFC_FCF_CONNECT_ENTRIES, "a list that fits has no more entries than there is room for");
  return list;
}

void change_connect_list(std::uint8_t seed) {
  if (!connect_list()) return;
  dfc_fcf_conn_list wanted{.numEntries = static_cast<std::uint8_t>(seed % (DFC_FCF_CONNECT_ENTRIES + 1))};
  for (std::uint8_t i = 0; i < wanted.numEntries; ++i) {
    wanted.entries[i] = {.flags = 0x3F, .vlan_id = static_cast<std::uint16_t>(seed << 8 | i)};
    std::ranges::fill(wanted.entries[i].names, seed);
  }
  promise(DFC_FCoESetFCFConnectList(kBoard, &wanted) == DFC_OK, "a connect list that can be read can be written");
  const auto list = connect_list();
  promise(list && list->numEntries == wanted.numEntries, "a connect list that was written can be read");
  for (std::uint8_t i = 0; i < list->numEntries; ++i) {
    promise(list->entries[i].flags == wanted.entries[i].flags && list->entries[i].vlan_id == wanted.entries[i].vlan_id &&
                std::ranges::equal(list->entries[i].names, wanted.entries[i].names),
            "entries of the connect list are read back");
  }
}

// A list that brings no room is told how many entries there are.
void count_connect_list() {
  constexpr std::size_t kHead = offsetof(dfc_fcf_conn_list, entries);
  Image room(kHead);
  auto* const list = reinterpret_cast<dfc_fcf_conn_list*>(room.data());
  (void)DFC_FCoEGetFCFConnectList(kBoard, list);
}

void change_link_down() {
  std::uint16_t value = 2;
  if (DFC_GetPersistLinkDown(kBoard, &value) != DFC_OK) {
    promise(value == 2, "a setting that cannot be read leaves the caller's value");
    return;
  }
  for (const std::uint16_t wanted : {std::uint16_t{1}, std::uint16_t{0}}) {
    promise(DFC_SetPersistLinkDown(kBoard, wanted) == DFC_OK, "a setting that can be read can be written");
    promise(DFC_GetPersistLinkDown(kBoard, &value) == DFC_OK && value == wanted, "the setting is read back");
  }
}

// Into buffers of just the room that the caller tells.
void dump(const RegionAdapter& adapter, const Image& stored) {
  for (const auto& [region, bytes] : kStoredRegions) {
    const std::uint32_t room = bytes / 2 + 1;
    const std::uint32_t offset = room / 3;
    Image buffer(room);
    std::uint32_t length = room;
    const std::uint32_t result = DFC_IssueDumpMBox(kBoard, DFC_DUMP_TYPE_REGION, 0, region, offset, buffer.data(), &length);
    promise(adapter.is_newer() || result == DFC_UNSUPPORTED, "older adapters have no dump callback");
    promise(length <= room, "a dump tells no more than the caller has room for");
    if (result != DFC_OK || length == 0) continue;
    promise(std::ranges::equal(std::span(buffer).first(length), std::span(stored).subspan(offset, length)),
            "a dump delivers the region");
  }
  for (const auto& [region, bytes] : kStoredRegions) {
    Image buffer(bytes);
    std::uint32_t length = bytes;
    (void)LEG_IssueDumpMBox(kBoard, buffer.data(), &length, region);
  }
}

void exercise(RegionAdapter adapter, const Image& image) {
  region_adapter = &adapter;
  for (const auto& [region, bytes] : kStoredRegions) adapter.regions[region] = image;
  dump(adapter, image);
  get23(adapter, image);
  change22(adapter, image);
  set14(adapter, image);
  change_params();
  change_connect_list(image.empty() ? 0 : image.back());
  count_connect_list();
  change_link_down();
  init(adapter);
}

}  // namespace
}  // namespace vaskdfc::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vaskdfc::fuzz;
  vaskdfc::test::answer = answer_as_region_adapter;
  const Image image(data, data + std::min(size, sizeof(vaskdfc::RegionData)));
  search(image);
  // As many bytes of an image a mailbox as are asked for, or fewer; not so few that gathering them takes long.
  const std::uint32_t piece_bytes = 128 - image.size() % 96;
  exercise({.sli_mode = 3, .type = kFcType, .piece_bytes = piece_bytes}, image);
  exercise({.sli_mode = 4, .type = kFcType, .piece_bytes = piece_bytes}, image);
  exercise({.sli_mode = 4, .type = kFcoeType, .piece_bytes = piece_bytes}, image);
  return 0;
}
