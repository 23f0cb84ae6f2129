// The tool's decoders: any bytes as what units, ports, fabrics, drivers and files say, in every form of output. The first byte of
// an input chooses the decoder.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "common_transport.h"
#include "decode.h"
#include "driver_record.h"
#include "failure.h"
#include "fcp_response.h"
#include "link_records.h"
#include "link_services.h"
#include "output.h"
#include "parameter_entry.h"
#include "pci_space.h"
#include "priority_rules.h"
#include "promise.h"
#include "region_fields.h"
#include "region_image.h"
#include "scsi_data.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

using fuzz::promise;
using Sections = std::vector<Section>;

Section record(std::vector<Field> fields) { return record_section("record", "Record", std::move(fields)); }

Section texts(const std::vector<std::string>& lines) {
  Section section = table_section("texts", "Texts", {{"text", "TEXT"}});
  for (const std::string& line : lines) section.records.push_back({text_cell(line)});
  return section;
}

Section as_record(std::string key, const std::vector<Field>& fields) {
  Section section = table_like(std::move(key), "Lines", fields);
  section.records.push_back(line_of(fields));
  return section;
}

std::string text_in(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

Sections sense(Bytes bytes) { return {record(sense_fields(bytes))}; }

Sections response(Bytes bytes) {
  return {record(response_fields(bytes)), texts({refusal_text(bytes)}), as_record("sense", sense_fields(sense_in(bytes)))};
}

Sections inquiry(Bytes bytes) { return {record(inquiry_fields(bytes))}; }

Sections designators(Bytes page) {
  Section section = table_section("designators", "Designators", {{"type", "TYPE"}, {"of", "OF"}, {"identifier", "IDENTIFIER"}});
  for (const Designator& designator : parse_designators(page)) {
    section.records.push_back({text_cell(designator.kind), text_cell(designator.association), text_cell(designator.text)});
  }
  return {std::move(section)};
}

Sections pages(Bytes page) {
  return {record({{"pages", "Pages", list_cell(supported_pages(page))}}), texts({serial_number(page)})};
}

Sections capacity(Bytes bytes) {
  const auto found = parse_capacity(bytes);
  if (!found) return {};
  return {record({{"blocks", "Blocks", number_cell(std::uint64_t{found->last_block} + 1)},
                  {"bytes", "Bytes", number_cell(found->bytes(), "bytes")}})};
}

Sections luns(Bytes bytes) {
  std::vector<std::string> spelled;
  for (const Lun& lun : parse_luns(bytes).luns) {
    spelled.push_back(lun_text(lun));
    promise(lun_argument(lun_text(lun)) == lun, "a LUN that is shown can be typed");
  }
  return {texts(spelled)};
}

Section named_port(Bytes payload) {
  const auto port = parse_named_port(payload);
  if (!port) return texts({});
  return record({{"fc_id", "FC id", fc_id_cell(port->fc_id)},
                 {"type", "Type", text_cell(port_type_name(port->type))},
                 {"port_wwn", "Port WWN", wwn_cell(port->port_wwn)},
                 {"port", "Port", text_cell(port->symbolic_port_name)},
                 {"node", "Node", text_cell(port->symbolic_node_name)},
                 {"types", "Types", fc4_types_cell(std::span<const std::uint8_t, 32>(port->fc4_types))}});
}

Sections fabric_answer(Bytes bytes) {
  const auto answer = parse_ct_answer(bytes);
  if (!answer) return {};
  Section ids = table_section("ids", "Port ids", {{"fc_id", "FC ID"}});
  for (const std::uint32_t id : parse_port_ids(answer->payload)) ids.records.push_back({fc_id_cell(id)});
  return {texts({rejection_text(*answer)}), named_port(answer->payload), std::move(ids)};
}

Sections link_answer(Bytes bytes) {
  const auto answer = parse_link_answer(bytes);
  if (!answer) return {};
  return {texts({rejection_text(*answer)}), record(link_error_fields(answer->payload)),
          as_record("identification", identification_fields(answer->payload))};
}

Sections region22(Bytes bytes) { return {record(region22_fields(parse_region22(bytes)))}; }

Sections region23(Bytes bytes) {
  const Region23Image image = parse_region23(bytes);
  std::vector<std::string> lines;
  std::size_t end = image.records.empty() ? 0 : image.records.front().offset;
  for (const Region23Record& found : image.records) {
    promise(found.offset == end, "records of an image follow one another");
    end += found.bytes.size();
    lines.push_back(record_name(found.type()));
    std::ranges::copy(decoded_fields(found), std::back_inserter(lines));
  }
  promise(end <= bytes.size(), "records end within their image");
  return {record(region23_fields(image)), texts(lines)};
}

Sections region14(Bytes bytes) { return {record(region14_fields(std::vector<std::uint8_t>(bytes.begin(), bytes.end())))}; }

Sections link(Bytes bytes) { return {record(link_fields(bytes)), as_record("node", node_fields(bytes))}; }

Sections counters(Bytes bytes) { return {io_section(bytes)}; }

Sections vpd(Bytes bytes) {
  Section section = vpd_texts_section();
  add_vpd_texts(section, bytes);
  return {record(vpd_fields(bytes)), std::move(section)};
}

Sections parameter(Bytes bytes) {
  const Parameter found = parse_parameter(0, bytes);
  return {record(joined(parameter_fields(found), {meaning_field(found)}))};
}

Sections pci(Bytes bytes) { return {record(pci_header_fields(bytes)), pci_capabilities_section(bytes)}; }

Sections lines(Bytes bytes) {
  std::vector<std::string> found = lines_of(bytes);
  found.push_back(grouped_hex(bytes));
  return {lines_section(bytes), texts(found)};
}

Sections rules(const char* name, Bytes bytes) {
  const PriorityRules found = parse_rules(name, text_in(bytes));
  promise(found.size() <= kMostRules && as_sent(found).size() == found.size(), "rules are as many as travel");
  const Section section = rules_section(found);
  const OutputOptions options{.form = Form::kCsv};
  const auto again = parse_rules("again.csv", render({.command = "qos list", .sections = {section}}, options));
  promise(rules_section(again).records.size() == found.size(), "rules that are listed can be read");
  return {section};
}

Sections rules_in_json(Bytes bytes) { return rules("rules.json", bytes); }
Sections rules_in_csv(Bytes bytes) { return rules("rules.csv", bytes); }

struct Decoder {
  char letter;
  Sections (*decode)(Bytes);
};
constexpr std::array kDecoders{
    Decoder{'s', sense},       Decoder{'f', response}, Decoder{'i', inquiry},       Decoder{'d', designators},
    Decoder{'p', pages},       Decoder{'c', capacity}, Decoder{'l', luns},          Decoder{'t', fabric_answer},
    Decoder{'e', link_answer}, Decoder{'1', region14}, Decoder{'2', region22},      Decoder{'3', region23},
    Decoder{'k', link},        Decoder{'o', counters}, Decoder{'v', vpd},           Decoder{'a', parameter},
    Decoder{'x', pci},         Decoder{'h', lines},    Decoder{'j', rules_in_json}, Decoder{'r', rules_in_csv}};

// --- what every form of output promises

bool is_plain(char c) { return (c >= 0x20 && c < 0x7F) || c == '\n'; }

void check_text(std::string_view text, const char* what) { promise(std::ranges::all_of(text, is_plain), what); }

void check_table(std::string_view table) {
  check_text(table, "a table is printable");
  while (!table.empty()) {
    const std::size_t end = std::min(table.find('\n'), table.size());
    promise(end <= kTableWidth, "lines of a table fit");
    table.remove_prefix(std::min(end + 1, table.size()));
  }
}

void check_json(const std::string& text) {
  promise(Json::accept(text), "JSON is valid");
  check_text(text, "JSON is printable");
}

void check(const Report& report) {
  check_table(render(report, {.form = Form::kTable}));
  check_json(render(report, {.form = Form::kJson}));
  check_text(render(report, {.form = Form::kKeyValue}), "keys and values are printable");
  std::string csv = render(report, {.form = Form::kCsv});
  std::erase(csv, '\r');
  check_text(csv, "CSV is printable");
}

void check(const Failure& failure) {
  promise(!failure.message.empty(), "a failure says what failed");
  check_text(render_failure(failure, Form::kTable), "a failure is printable");
  check_json(render_failure(failure, Form::kJson));
}

// Longer inputs only repeat what shorter ones do.
constexpr std::size_t kMostBytes = 1536;

void run(Bytes input) {
  if (input.empty() || input.size() > kMostBytes) return;
  const auto* const decoder = std::ranges::find(kDecoders, static_cast<char>(input.front()), &Decoder::letter);
  if (decoder == kDecoders.end()) return;
  try {
    check({.command = "fuzz", .sections = decoder->decode(input.subspan(1))});
  } catch (const Failure& failure) {
    check(failure);
  }
}

}  // namespace
}  // namespace vaskdfc::tool

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vaskdfc::tool::run({data, size});
  return 0;
}
