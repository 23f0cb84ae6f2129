// Operations that take a header, and those that bring one record back.
#include <algorithm>
#include <cstring>

#include "figures.h"

namespace bench {
namespace {

using vaskdfc::Callback;

template <typename Reply, typename Record>
Times record_times(auto operation, Callback callback) {
  static Record record;
  return in_turns([=] { operation(&record); },
                  [=] {
                    dfc_mgmt_hdr header{};
                    Reply reply{};
                    bare_call(callback, header, &reply);
                    std::memcpy(&record, &reply, std::min(sizeof(record), sizeof(reply)));
                  });
}

}  // namespace

void measure_calls(const Library& library, Figures& figures) {
  static std::uint32_t ready;
  figures.push_back(ratio_of("header alone: DFC_NPIVReadyTest", "bare call",
                             in_turns([&] { library.DFC_NPIVReadyTest(0, &ready); },
                                      [] {
                                        dfc_mgmt_hdr header{};
                                        bare_call(Callback::kNpivReady, header);
                                      }),
                             1.4));

  constexpr const char* kAgainst = "bare call, copy of the record";
  figures.push_back(
      ratio_of("record: GetIOinfo", kAgainst,
               record_times<dfc_io_info, dfc_io_info>([&](auto* info) { library.GetIOinfo(0, info); }, Callback::kIoInfo), 1.4));
  figures.push_back(ratio_of(
      "record: DFC_GetLinkInfo", kAgainst,
      record_times<dfc_link_info, dfc_link_info>([&](auto* info) { library.DFC_GetLinkInfo(0, info); }, Callback::kLinkInfo), 1.4));
  figures.push_back(ratio_of("record: GetAdapterPortAttributes", kAgainst,
                             record_times<vaskdfc::PortAttributesReply, HbaPortAttributes>(
                                 [&](auto* port) { library.GetAdapterPortAttributes(0, 0, port); }, Callback::kHbaPortAttributes),
                             1.4));
}

}  // namespace bench
