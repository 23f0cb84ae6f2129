// The second form of the target mapping: one request for the list, one INQUIRY for each logical unit.
#include "exchanges.h"
#include "figures.h"

namespace bench {
namespace {

constexpr std::uint32_t kUnits = std::size(vaskdfc::TargetMappingReply{}.entries);
constexpr std::uint32_t kPageBytes = 255;
constexpr std::uint32_t kDescriptorBytes = 20;
constexpr std::uint8_t kInquiry = 0x12;

struct Mapping {
  std::uint32_t count;
  HbaFcpScsiEntryV2 entries[kUnits];
};

}  // namespace

void measure_mapping(const Library& library, Figures& figures) {
  const auto mapping = std::make_unique<Mapping>();
  const auto reply = std::make_unique<vaskdfc::TargetMappingReply>();
  BareExchanges bare;
  constexpr HbaWwn kLocalPort{};  // the name that the driver's stand-in gives its ports
  figures.push_back(ratio_of("second mapping of 1024 units", "1024 bare inquiries, the copies",
                             in_turns(
                                 [&] {
                                   mapping->count = kUnits;
                                   library.DFC_GetFcpTargetMappingV2(0, &kLocalPort,
                                                                     reinterpret_cast<HbaFcpTargetMappingV2*>(mapping.get()));
                                 },
                                 [&] {
                                   dfc_mgmt_hdr header{.arg2 = kUnits};
                                   bare_call(vaskdfc::Callback::kHbaFcpTargetMapping, header, reply.get());
                                   for (std::uint32_t i = 0; i < kUnits; ++i) {
                                     HbaFcpScsiEntryV2& entry = mapping->entries[i];
                                     std::memcpy(&entry, &reply->entries[i], sizeof(reply->entries[i]));
                                     bare.clear(kPageBytes);
                                     bare.scsi(kInquiry, 1, kPageBytes);
                                     std::memcpy(entry.LUID, bare.data() + 4, kDescriptorBytes);
                                   }
                                 }),
                             1.3));
}

}  // namespace bench
