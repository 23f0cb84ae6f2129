#include "driver_record.h"

#include <fmt/format.h>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

std::string ascii(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  return text;
}

// Tables have their titles so, records do not.
std::string in_capitals(std::string title) {
  for (char& letter : title) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - ('a' - 'A'));
  }
  return title;
}

}  // namespace

std::vector<Field> fields_of(Bytes record, std::span<const RecordField> layout) {
  std::vector<Field> fields;
  for (const RecordField& field : layout) {
    const Bytes bytes = part(record, field.offset, field.bytes);
    fields.push_back({field.key, field.title, bytes.size() == field.bytes ? field.cell(bytes) : absent()});
  }
  return fields;
}

Section table_like(std::string key, std::string title, const std::vector<Field>& fields) {
  std::vector<Column> columns;
  for (const Field& field : fields) columns.push_back({field.key, in_capitals(field.title)});
  return table_section(std::move(key), std::move(title), std::move(columns));
}

Record line_of(const std::vector<Field>& fields) {
  Record record;
  for (const Field& field : fields) record.push_back(field.cell);
  return record;
}

std::uint64_t little_endian(Bytes bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

std::optional<std::uint32_t> word_at(Bytes bytes, std::size_t at) {
  const Bytes word = part(bytes, at, sizeof(std::uint32_t));
  if (word.size() < sizeof(std::uint32_t)) return std::nullopt;
  return static_cast<std::uint32_t>(little_endian(word));
}

Cell number_in(Bytes bytes) { return number_cell(little_endian(bytes)); }

Cell hex_in(Bytes bytes) { return text_cell(fmt::format("0x{:0{}x}", little_endian(bytes), bytes.size() * 2)); }

Cell text_in(Bytes bytes) { return text_cell(text_of(bytes)); }

Cell wwn_in(Bytes bytes) { return text_cell(colon_text(bytes)); }

Cell fc_id_in(Bytes bytes) { return fc_id_cell(static_cast<std::uint32_t>(little_endian(bytes))); }

Cell bytes_in(Bytes bytes) { return hex_bytes_cell(bytes); }

Section lines_section(Bytes bytes, std::size_t first_offset) {
  Section section = table_section("lines", "Lines", {{"offset", "OFFSET"}, {"bytes", "BYTES"}, {"text", "TEXT"}});
  for (std::size_t offset = 0; offset < bytes.size(); offset += kLineBytes) {
    const Bytes line = part(bytes, offset, kLineBytes);
    section.records.push_back(
        {text_cell(fmt::format("{:08x}", first_offset + offset)), hex_bytes_cell(line), text_cell(ascii(line))});
  }
  return section;
}

Report raw_report(const char* command, std::uint32_t adapter, Bytes bytes) {
  return {
      .command = command,
      .sections = {record_section("record", "Record",
                                  {{"adapter", "Adapter", number_cell(adapter)}, {"bytes", "Bytes", number_cell(bytes.size())}}),
                   lines_section(bytes)}};
}

}  // namespace vaskdfc::tool
