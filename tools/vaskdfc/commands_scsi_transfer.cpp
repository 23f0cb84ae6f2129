// Commands that move blocks between a logical unit and a file: scsi read, scsi write.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>

#include "command_line.h"
#include "decode.h"
#include "progress.h"
#include "raw_file.h"
#include "scsi_exchange.h"

namespace vaskdfc::tool {
namespace {

// The library's READ(10) and WRITE(10) count in blocks of this size.
constexpr std::uint32_t kBlockBytes = 512;
constexpr std::uint32_t kBlocksAtOnce = DFC_SCSI_DATA_BYTES / kBlockBytes;
// What is moved is held in memory whole.
constexpr std::uint32_t kMostBlocks = 524288;

struct Arguments {
  UnitArguments unit;
  std::string file;
  std::string first = "0";
  std::string blocks = "1";
};

struct Range {
  std::uint32_t first = 0;
  std::uint32_t blocks = 0;
};

// Nothing is sent for a range that the unit does not have: a write that fails halfway would be worse.
void expect_range(const UnitAddress& unit, const Range& range) {
  const Capacity capacity = read_capacity(unit);
  if (capacity.block_bytes != kBlockBytes) {
    throw plain_failure(Exit::kFailed,
                        fmt::format("LUN {} has blocks of {} bytes, but the library's commands move blocks of {}",
                                    lun_text(unit.lun), capacity.block_bytes, kBlockBytes),
                        "\"vaskdfc scsi raw\" sends any command");
  }
  const std::uint64_t all = std::uint64_t{capacity.last_block} + 1;
  if (std::uint64_t{range.first} + range.blocks <= all) return;
  throw usage_failure(fmt::format("blocks {} to {} are not there: LUN {} has {} blocks", range.first,
                                  std::uint64_t{range.first} + range.blocks - 1, lun_text(unit.lun), all));
}

// Calls move(block, blocks) for one part of the range after the other. A Failure tells how far it came.
template <typename Move>
void for_each_part(const std::string& what, const Range& range, Move move) {
  Progress progress(what, range.blocks);
  for (std::uint32_t done = 0; done < range.blocks; done += kBlocksAtOnce) {
    progress.reached(done);
    try {
      move(done, std::min(kBlocksAtOnce, range.blocks - done));
    } catch (Failure& failure) {
      failure.message += fmt::format(" (after {} of {} blocks)", done, range.blocks);
      throw;
    }
  }
}

std::vector<std::uint8_t> read_blocks(const UnitAddress& unit, std::uint32_t block, std::uint32_t blocks) {
  const std::uint32_t room = blocks * kBlockBytes;
  const Answer answer = ask(unit, "SendScsiRead", room, [&](void* data, std::uint32_t* bytes, void* sense, std::uint32_t* senses) {
    return SendScsiRead(unit.adapter, &unit.target, lun_in_memory(unit.lun), block, data, bytes, sense, senses);
  });
  if (completed(unit, answer).data.size() == room) return answer.data;
  throw operation_failure(fmt::format("{} bytes came of {} blocks", answer.data.size(), blocks), unit.adapter, answer.operation,
                          Results::kHba, HBA_STATUS_OK);
}

void write_blocks(const UnitAddress& unit, std::uint32_t block, Bytes bytes) {
  const Answer answer = ask(
      unit, "SendScsiWrite", 0,
      [&](void* data, std::uint32_t* moved, void* sense, std::uint32_t* senses) {
        return SendScsiWrite(unit.adapter, &unit.target, lun_in_memory(unit.lun), block, data, moved, sense, senses);
      },
      bytes);
  completed(unit, answer);
}

void print(const Context& context, const char* command, const UnitAddress& unit, const Range& range, const std::string& file,
           bool done) {
  context.print(
      {.command = command,
       .sections = {unit_section(unit), record_section("transfer", "Transfer",
                                                       {{"first_block", "First block", number_cell(range.first)},
                                                        {"blocks", "Blocks", number_cell(range.blocks)},
                                                        {"bytes", "Bytes", number_cell(std::uint64_t{range.blocks} * kBlockBytes)},
                                                        {"file", "File", text_cell(text_of(file))},
                                                        {"done", "Done", flag_cell(done)}})}});
}

void read(Context& context, const Arguments& arguments) {
  const Range range{number_argument("--block", arguments.first), number_argument("--blocks", arguments.blocks, kMostBlocks)};
  if (range.blocks == 0) throw usage_failure("--blocks: 0 blocks are nothing to read");
  const UnitSession session(arguments.unit);
  const UnitAddress& unit = session.unit();
  expect_range(unit, range);
  std::vector<std::uint8_t> bytes;
  for_each_part("reading blocks", range, [&](std::uint32_t done, std::uint32_t blocks) {
    const auto part = read_blocks(unit, range.first + done, blocks);
    bytes.insert(bytes.end(), part.begin(), part.end());
  });
  write_file(arguments.file, bytes);
  print(context, "scsi read", unit, range, arguments.file, true);
}

void write(Context& context, const Arguments& arguments) {
  const auto bytes = read_file(arguments.file, std::size_t{kMostBlocks} * kBlockBytes);
  if (bytes.empty() || bytes.size() % kBlockBytes != 0) {
    throw usage_failure(fmt::format("the file \"{}\" has {} bytes, which are no whole blocks of {} bytes", arguments.file,
                                    bytes.size(), kBlockBytes));
  }
  const Range range{number_argument("--block", arguments.first), static_cast<std::uint32_t>(bytes.size() / kBlockBytes)};
  const UnitSession session(arguments.unit);
  const UnitAddress& unit = session.unit();
  expect_range(unit, range);
  const bool goes_ahead = context.may_change(fmt::format("write {} blocks from block {} on over what LUN {} of {} holds",
                                                         range.blocks, range.first, lun_text(unit.lun), wwn_text(unit.target)));
  if (!goes_ahead) return print(context, "scsi write", unit, range, arguments.file, false);
  for_each_part("writing blocks", range, [&](std::uint32_t done, std::uint32_t blocks) {
    write_blocks(unit, range.first + done, part(bytes, std::size_t{done} * kBlockBytes, std::size_t{blocks} * kBlockBytes));
  });
  print(context, "scsi write", unit, range, arguments.file, true);
}

}  // namespace

void add_scsi_transfer_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action) {
    const Command added = commands.add(name, summary, examples, arguments, action);
    add_unit_arguments(added, arguments->unit).required();
    added.add_option("-f,--file", arguments->file, "The file").type_name("FILE").required();
    added.add_option("--block", arguments->first, "The first block; 0 unless it is given").type_name("N");
    return added;
  };
  command("scsi read", "Read blocks of a unit into a file",
          {"vaskdfc scsi read 0 50:5a:41:00:0c:00:20:01 0 --file unit.bin --block 2048 --blocks 64"}, read)
      .add_option("--blocks", arguments->blocks, "How many blocks; 1 unless it is given")
      .type_name("N");
  command("scsi write", "Write the blocks of a file to a unit",
          {"vaskdfc scsi write 0 50:5a:41:00:0c:00:20:01 0 --file unit.bin --block 2048"}, write);
}

}  // namespace vaskdfc::tool
