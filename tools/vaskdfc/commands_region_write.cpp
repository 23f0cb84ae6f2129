// Commands that write configuration regions: region init, region write.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "change_report.h"
#include "command_line.h"
#include "raw_file.h"
#include "region_access.h"
#include "region_fields.h"
#include "region_image.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

// Whether region 22 is written by a mailbox is a matter of the adapter's type, not of its generation.
constexpr Results kRegion22Results = Results::kMailbox;

using Image = std::vector<std::uint8_t>;

struct Arguments {
  std::string adapter;
  std::string region;
  std::string file;
};

std::optional<Image> read_image(std::uint32_t adapter, std::uint32_t region) {
  RegionRead read = read_region_or_missing(adapter, region);
  if (read.state == RegionRead::State::kMissing) return std::nullopt;
  return std::move(read.bytes);
}

template <typename Parse>
auto parsed(const std::optional<Image>& image, Parse parse) -> std::optional<decltype(parse(*image))> {
  if (!image) return std::nullopt;
  return parse(*image);
}

std::vector<Field> read_fields(std::uint32_t adapter, std::uint32_t region) {
  const auto image = read_image(adapter, region);
  switch (region) {
    case 14: return region14_fields(image);
    case 22: return region22_fields(parsed(image, parse_region22));
    default: return region23_fields(parsed(image, parse_region23));
  }
}

// The parts of a setting that all writes of a region have in common.
Setting setting_of(const char* command, std::uint32_t adapter, std::uint32_t region, std::string intent) {
  return {.command = command,
          .adapter = adapter,
          .intent = std::move(intent),
          .place = fmt::format("region {}", region),
          .operation = "",
          .results = Results::kRegion,
          .read = [=] { return read_fields(adapter, region); },
          .write = nullptr};
}

// --- region init

void init(Context& context, const Arguments& arguments) {
  const std::uint32_t region = region_argument(arguments.region, {22, 23});
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Setting setting = setting_of("region init", adapter, region, fmt::format("write the initial image to region {}", region));
  setting.results = region == 22 ? kRegion22Results : results_of_writes(read_driver(adapter).sli_mode);
  setting.operation = region == 22 ? "DFC_InitR22" : "DFC_InitR23";
  setting.write = [=] { return region == 22 ? DFC_InitR22(adapter) : DFC_InitR23(adapter); };
  change(context, setting, setting.read(), region == 22 ? region22_fields(blank_region22()) : default_region23_fields());
}

// --- region write

Image image_in_file(const std::string& path, std::size_t size) {
  Image image = read_file(path, size);
  if (image.size() == size) return image;
  throw usage_failure(fmt::format("the file \"{}\" has {} bytes; the image of the region has {}", path, image.size(), size));
}

Setting setting14(std::uint32_t adapter, const Image& image) {
  Setting setting = setting_of("region write", adapter, 14, "write the image to region 14");
  setting.operation = "DFC_SetRegion14";
  setting.write = [=] { return DFC_SetRegion14(adapter, image.data()); };
  return setting;
}

void write14(Context& context, std::uint32_t adapter, const Image& image) {
  const Setting setting = setting14(adapter, image);
  change(context, setting, setting.read(), region14_fields(image));
}

Region22Image image22_in_file(const std::string& path) {
  Region22Image image = parse_region22(image_in_file(path, DFC_REGION22_BYTES));
  if (!image.problem.empty()) throw usage_failure(fmt::format("the file \"{}\" is no image of region 22: {}", path, image.problem));
  return image;
}

// The entries as the library takes them, the last one filled up with zeros.
std::vector<dfc_region22_entry> entries_of(const Region22Image& image) {
  std::vector<dfc_region22_entry> entries(image.entries.size());
  for (const Region22Entry& entry : image.entries) std::ranges::copy(entry.bytes, entries[entry.position].bytes);
  return entries;
}

void write22(Context& context, std::uint32_t adapter, Region22Image image) {
  const auto old_image = parsed(read_image(adapter, 22), parse_region22);
  // The library writes the entries and keeps the head, or makes a new one.
  const bool keeps_head = old_image && old_image->problem.empty();
  const auto head = keeps_head ? old_image->head : blank_region22().head;
  if (image.head != head) {
    context.remark(fmt::format("bytes 4 to 7 of the file are not written: region 22 has or gets {}", grouped_hex(head)));
    image.head = head;
  }
  Setting setting = setting_of("region write", adapter, 22, "write the entries of region 22");
  setting.results = kRegion22Results;
  setting.operation = "DFC_SetRegion22";
  setting.write = [=, entries = entries_of(image)] {
    return DFC_SetRegion22(adapter, entries.data(), static_cast<std::uint32_t>(entries.size()));
  };
  change(context, setting, region22_fields(old_image), region22_fields(image));
}

void write(Context& context, const Arguments& arguments) {
  const std::uint32_t region = region_argument(arguments.region, {14, 22});
  if (region == 14) {
    const Image image = image_in_file(arguments.file, DFC_REGION14_BYTES);
    const Session session;
    return write14(context, session.find(arguments.adapter), image);
  }
  const Region22Image image = image22_in_file(arguments.file);
  const Session session;
  write22(context, session.find(arguments.adapter), image);
}

}  // namespace

void add_region_write_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const Command initialised =
      commands.add_for_adapter("region init", "Write the initial image to a region",
                               {"vaskdfc region init 0 23", "vaskdfc region init 0 22 --dry-run"}, arguments, init);
  initialised.add_option("REGION", arguments->region, "22: no entries; 23: FCoE defaults, link allowed up")
      .type_name("22|23")
      .required();

  const Command written = commands.add_for_adapter(
      "region write", "Write a whole image to a region",
      {"vaskdfc region write 0 14 --file region14.bin", "vaskdfc region write 3 22 --file region22.bin"}, arguments, write);
  written.add_option("REGION", arguments->region, "Number of the region").type_name("14|22").required();
  written
      .add_option("-f,--file", arguments->file,
                  fmt::format("The image: {} bytes for region 14; {} bytes with the signature {} for region 22", DFC_REGION14_BYTES,
                              DFC_REGION22_BYTES, kRegion22Signature))
      .type_name("FILE")
      .required();
}

}  // namespace vaskdfc::tool
