// Attributes of adapters and ports, their counters, units, bindings, events and identification, and virtual ports.
#include <cstdlib>
#include <memory>

#include "calls.h"

namespace {

TEST_F(Operations, read_attributes) {
  const auto adapter = std::make_unique<HbaAdapterAttributes>();
  EXPECT_EQ(OPERATION(GetAdapterAttributes)(kConverged, adapter.get()), HBA_STATUS_OK);
  EXPECT_STREQ(adapter->Model, "Kestar K5602-CNA");
  HbaPortAttributes port{};
  EXPECT_EQ(OPERATION(GetAdapterPortAttributes)(kConverged, 0, &port), HBA_STATUS_OK);
  EXPECT_EQ(name_text(port.PortWWN), name_text(kConvergedPort));
  EXPECT_EQ(OPERATION(RefreshInformation)(kConverged), HBA_STATUS_OK);
  EXPECT_EQ(OPERATION(GetPortAttributesByIndex)(kConverged, 0, 1, &port), HBA_STATUS_OK);
  EXPECT_EQ(name_text(port.PortWWN), name_text(kArrayPort)) << "behind the adapter's own port";
  EXPECT_EQ(OPERATION(GetDiscoveredPortAttributes)(kConverged, 0, 2, &port), HBA_STATUS_OK);
  EXPECT_EQ(port.PortFcId, 0x010400u);
  EXPECT_EQ(OPERATION(GetPortAttributesByWWN)(kConverged, &kArrayPort, &port), HBA_STATUS_OK);
  EXPECT_EQ(port.PortFcId, 0x010200u);
}

TEST_F(Operations, count) {
  HbaPortStatistics raw{};
  EXPECT_EQ(OPERATION(GetPortStatistics)(kConverged, HBA_RAW_STATISTICS, &raw), HBA_STATUS_OK);
  EXPECT_GT(raw.TxFrames, 0);
  EXPECT_EQ(OPERATION(ResetStatistics)(kConverged), HBA_STATUS_OK);
  HbaPortStatistics since{};
  EXPECT_EQ(OPERATION(GetPortStatistics)(kConverged, 0, &since), HBA_STATUS_OK);
  EXPECT_EQ(since.LinkFailureCount, 0);
  EXPECT_GT(raw.LinkFailureCount, 0);
}

// A list that ends with an array of one element, with room for so many.
template <typename List, typename Entry>
std::unique_ptr<List, decltype(&std::free)> room_for(std::uint32_t entries) {
  return {static_cast<List*>(std::calloc(1, sizeof(List) + entries * sizeof(Entry))), &std::free};
}

TEST_F(Operations, list_units_and_bindings) {
  constexpr std::uint32_t kUnits = 8;
  const auto mapping = room_for<HbaFcpTargetMapping, HbaFcpScsiEntry>(kUnits);
  mapping->NumberOfEntries = kUnits;
  EXPECT_EQ(OPERATION(GetFcpTargetMapping)(kConverged, mapping.get()), HBA_STATUS_OK);
  EXPECT_EQ(mapping->NumberOfEntries, kUnits);
  EXPECT_EQ(name_text(mapping->entry[0].FcpId.PortWWN), name_text(kArrayPort));

  const auto identified = room_for<HbaFcpTargetMappingV2, HbaFcpScsiEntryV2>(kUnits);
  identified->NumberOfEntries = kUnits;
  EXPECT_EQ(OPERATION(DFC_GetFcpTargetMappingV2)(kConverged, &kConvergedPort, identified.get()), HBA_STATUS_OK);
  EXPECT_EQ(identified->entry[0].LUID[1] & 0xF, 3) << "an NAA identifier";

  const auto bindings = room_for<FcpBindList, FcpBinding>(4);
  bindings->count = 4;
  EXPECT_EQ(OPERATION(GetFcpBindList)(kConverged, bindings.get()), HBA_STATUS_OK);
  EXPECT_EQ(bindings->count, 3u);
  std::uint32_t persistent = 9;
  EXPECT_EQ(OPERATION(GetFcpPersistentBinding)(kConverged, &persistent), HBA_STATUS_OK);
  EXPECT_EQ(persistent, 0u);
}

TEST_F(Operations, take_events) {
  ASSERT_EQ(OPERATION(SetBrdEnv)(kVirtual, 3), 4u) << "diagnostic";
  ASSERT_EQ(OPERATION(SetBrdEnv)(kVirtual, 1), 1u) << "online";
  std::array<HbaEvent, 8> events{};
  std::uint32_t count = events.size();
  EXPECT_EQ(OPERATION(GetEventBuffer)(kVirtual, events.data(), &count), HBA_STATUS_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(word_at(events[0], 0), 3u) << "the link went";
  EXPECT_EQ(word_at(events[1], 0), 2u) << "and came";
  EXPECT_EQ(*OPERATION(EventMissedCount), 0u);
}

TEST_F(Operations, identify_nodes) {
  std::array<std::uint8_t, 64> reply{};
  std::uint32_t bytes = reply.size();
  EXPECT_EQ(OPERATION(SendRNID)(kConverged, &kArrayPort, HBA_RNID_PORT_WWN, reply.data(), &bytes), HBA_STATUS_OK);
  EXPECT_EQ(bytes, 24u);
  HbaMgmtInfo info{};
  EXPECT_EQ(OPERATION(GetRNIDMgmtInfo)(kConverged, &info), HBA_STATUS_OK);
  info.UDPPort = 1234;
  EXPECT_EQ(OPERATION(SetRNIDMgmtInfo)(kConverged, &info), HBA_STATUS_OK);
  HbaMgmtInfo changed{};
  EXPECT_EQ(OPERATION(GetRNIDMgmtInfo)(kConverged, &changed), HBA_STATUS_OK);
  EXPECT_EQ(changed.UDPPort, 1234);
}

TEST_F(Operations, tell_about_virtual_ports) {
  std::uint32_t ready = 0;
  EXPECT_EQ(OPERATION(DFC_NPIVReadyTest)(kVirtual, &ready), DFC_OK);
  EXPECT_EQ(ready, 1u);
  dfc_vport_resource resource{};
  EXPECT_EQ(OPERATION(DFC_VPGetResource)(kVirtual, &resource), DFC_OK);
  EXPECT_NE(word_at(resource, 0), 0u);
  const auto ports = room_for<dfc_vport_list, dfc_vport_entry>(2);
  ports->numEntries = 2;
  EXPECT_EQ(OPERATION(DFC_VPGetList)(kVirtual, ports.get()), DFC_OK);
  EXPECT_EQ(ports->numEntries, 2u);
  dfc_vport_attributes attributes{};
  EXPECT_EQ(OPERATION(DFC_VPGetAttrib)(kVirtual, &kVirtualPort, &attributes), DFC_OK);
  EXPECT_EQ(OPERATION(DFC_VPGetAttrib)(kVirtual, &kArrayPort, &attributes), DFC_NO_SUCH_VPORT);
  const auto nodes = room_for<dfc_node_list, dfc_node_entry>(8);
  nodes->numEntries = 8;
  EXPECT_EQ(OPERATION(DFC_GetAllNodeInfoByWWN)(kVirtual, &kVirtualPort, nodes.get()), DFC_OK);
  EXPECT_EQ(nodes->numEntries, 2u);
}

}  // namespace
