#include "fabric/link_services.h"

#include <algorithm>
#include <array>

#include "families/port_counters.h"
#include "scsi/big_endian.h"

namespace simulator::fabric {
namespace {

enum class Service : std::uint8_t { kReject = 0x01, kAccept = 0x02, kReadLinkErrors = 0x0F, kEcho = 0x10, kIdentify = 0x78 };

// Reasons and explanations of a reject.
constexpr std::uint8_t kLogicalError = 0x03;
constexpr std::uint8_t kUnableToPerform = 0x09;
constexpr std::uint8_t kNotSupported = 0x0B;
constexpr std::uint8_t kInvalidPortId = 0x1F;
constexpr std::uint8_t kRequestNotSupported = 0x2C;
constexpr std::uint8_t kInvalidLength = 0x2D;

Bytes reject(std::uint8_t reason, std::uint8_t explanation) {
  return {static_cast<std::uint8_t>(Service::kReject), 0, 0, 0, 0, reason, explanation, 0};
}

Bytes accept() { return {static_cast<std::uint8_t>(Service::kAccept), 0, 0, 0}; }

void put(Bytes& bytes, std::span<const std::uint8_t> part) { bytes.insert(bytes.end(), part.begin(), part.end()); }

void put_word(Bytes& bytes, std::uint32_t word) {
  bytes.resize(bytes.size() + sizeof(word));
  put_big_endian(bytes, bytes.size() - sizeof(word), word);
}

Bytes echo(std::span<const std::uint8_t> request) {
  Bytes bytes = accept();
  put(bytes, request.subspan(4));
  return bytes;
}

// What is not an adapter's is taken for a disk array.
HbaMgmtInfo told_by(const Member& member) {
  constexpr std::uint32_t kStorageDevice = 0x0A;
  if (member.adapter != nullptr) return member.adapter->management_info().load();
  HbaMgmtInfo info{};
  info.unittype = kStorageDevice;
  return info;
}

void put_topology(Bytes& bytes, const HbaMgmtInfo& info) {
  bytes.resize(bytes.size() + 16);  // vendor unique
  put_word(bytes, info.unittype);
  put_word(bytes, info.PortId);
  put_word(bytes, info.NumberOfAttachedNodes);
  put_word(bytes, std::uint32_t{info.IPVersion & 0xFFu} << 16 | info.UDPPort);  // node management 0 in front
  put(bytes, info.IPAddress);
  put_word(bytes, info.TopologyDiscoveryFlags);
}

Bytes identify(const Member& member, std::span<const std::uint8_t> request) {
  constexpr std::size_t kFormat = 4;
  if (request.size() < kFormat + 4) return reject(kLogicalError, kInvalidLength);
  const std::uint8_t format = request[kFormat];
  if (format != kCommonIdentification && format != kTopologyIdentification) return reject(kUnableToPerform, kRequestNotSupported);
  return identification(member, format);
}

// Link failures, losses of synchronization and signal, protocol errors, invalid words and CRCs.
Bytes link_errors(const Member& member, std::span<const std::uint8_t> request, Clock::Time now) {
  if (request.size() < 8) return reject(kLogicalError, kInvalidLength);
  if ((big_endian<std::uint32_t>(request, 4) & 0xFFFFFF) != member.port->fc_id) return reject(kUnableToPerform, kInvalidPortId);
  HbaPortStatistics counters{};
  if (member.adapter != nullptr) counters = counters_at(*member.adapter, now);
  Bytes bytes = accept();
  for (const auto counter : {counters.LinkFailureCount, counters.LossOfSyncCount, counters.LossOfSignalCount,
                             counters.PrimitiveSeqProtocolErrCount, counters.InvalidTxWordCount, counters.InvalidCRCCount}) {
    put_word(bytes, static_cast<std::uint32_t>(counter));
  }
  return bytes;
}

}  // namespace

Bytes identification(const Member& member, std::uint8_t format) {
  constexpr std::uint8_t kCommonBytes = 16;
  constexpr std::uint8_t kTopologyBytes = 52;
  const bool with_topology = format == kTopologyIdentification;
  Bytes bytes = accept();
  put(bytes, std::array<std::uint8_t, 4>{format, kCommonBytes, 0, with_topology ? kTopologyBytes : std::uint8_t{0}});
  put(bytes, member.port->wwpn.wwn);
  put(bytes, member.port->wwnn.wwn);
  if (with_topology) put_topology(bytes, told_by(member));
  return bytes;
}

Bytes answer_els(const Member& member, std::span<const std::uint8_t> request, Clock::Time now) {
  switch (static_cast<Service>(request[0])) {
    case Service::kEcho: return echo(request);
    case Service::kIdentify: return identify(member, request);
    case Service::kReadLinkErrors: return link_errors(member, request, now);
    default: return reject(kNotSupported, kRequestNotSupported);
  }
}

}  // namespace simulator::fabric
