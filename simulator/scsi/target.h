// A port behind which logical units answer to SCSI commands.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "driver/disks.h"
#include "scenario/scenario.h"
#include "scsi/inquiry.h"
#include "scsi/sense.h"

namespace simulator::scsi {

// The eight bytes of a LUN of one level, as they travel.
using Lun = std::array<std::uint8_t, 8>;
Lun lun_bytes(std::uint32_t lun);

struct Command {
  Lun lun;
  std::array<std::uint8_t, 16> cdb;
  std::span<const std::uint8_t> data;  // that came with it
};

struct Answer {
  Bytes data;                  // that goes back
  std::size_t taken = 0;       // of what came
  std::optional<Sense> sense;  // none: good
};

class Target {
 public:
  // `number` counts the fabric's ports from 1. Nothing takes or delivers more than `most_bytes` at once.
  Target(const scenario::Port& port, std::uint32_t number, Disks& disks, std::size_t most_bytes)
      : port_(port), number_(number), disks_(disks), most_bytes_(most_bytes) {}

  // Throws StateError.
  Answer execute(const Command& command) const;

 private:
  const scenario::LogicalUnit* find(const Lun& lun) const;
  Answer inquiry(const Command& command) const;
  Answer report_luns(const Command& command) const;
  Answer execute(const Command& command, const scenario::LogicalUnit& unit) const;
  Answer read(const Command& command, const scenario::LogicalUnit& unit) const;
  Answer write(const Command& command, const scenario::LogicalUnit& unit) const;
  std::optional<Sense> refusal(const Command& command, const scenario::LogicalUnit& unit) const;

  const scenario::Port& port_;
  std::uint32_t number_;
  Disks& disks_;
  std::size_t most_bytes_;
};

}  // namespace simulator::scsi
