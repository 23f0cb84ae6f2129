// The two callbacks for configuration regions of adapters with the newer interface.
#pragma once

#include "sim_process.h"

struct RegionDump {
  dfc_mgmt_hdr header;
  vaskdfc::RegionData data;
  std::uint32_t completion;

  std::vector<std::uint8_t> delivered() const { return {data.bytes, data.bytes + header.arg3}; }
};

// Dumps a region, by default all of it.
RegionDump dump_region(Session& session, std::uint32_t board, std::uint32_t region, std::uint32_t offset = 0,
                       std::uint32_t bytes = 4096, std::uint32_t type = 2);

// Updates a region and returns the driver's status. The image is sent in a buffer whose other bytes are not zero.
std::uint32_t update_region(Session& session, std::uint32_t board, std::uint32_t region, const std::vector<std::uint8_t>& image);

// A region's file in the state folder.
std::string region_file(std::uint32_t region, const char* wwpn_digits);
