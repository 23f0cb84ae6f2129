// Opening and closing handles, and what the platform checks before it asks the driver.
#include <algorithm>
#include <cstring>

#include "sim_process.h"

namespace {

// What opening a handle says after one change to a good signature.
template <typename Change>
void expect_refused(std::uint32_t status, Change change) {
  in_process({}, [&] {
    Signature signature;
    change(signature);
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(signature, handle), status);
    EXPECT_EQ(handle, nullptr);
  });
}

TEST(Interface, opens_with_the_signature_of_the_table) {
  in_process({}, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_OK});
    EXPECT_NE(handle, nullptr);
    EXPECT_EQ(vmk_MgmtUserDestroy(handle), int{VMKMGMT_SIM_OK});
  });
}

TEST(Interface, refuses_a_name_that_no_driver_registered) {
  expect_refused(VMKMGMT_SIM_NOT_REGISTERED, [](Signature& signature) { std::strcpy(signature.record.name, "trel-mgmt"); });
}

TEST(Interface, refuses_a_name_without_its_end) {
  expect_refused(VMKMGMT_SIM_NOT_REGISTERED, [](Signature& signature) {
    std::memset(signature.record.name + std::strlen(signature.record.name), 'x',
                sizeof(signature.record.name) - std::strlen(signature.record.name));
  });
}

TEST(Interface, refuses_another_version) {
  expect_refused(VMKMGMT_SIM_BAD_VERSION, [](Signature& signature) { ++signature.record.version; });
}

TEST(Interface, refuses_another_vendor) {
  expect_refused(VMKMGMT_SIM_BAD_VENDOR, [](Signature& signature) { std::strcpy(signature.record.vendor, "ZAVX"); });
}

TEST(Interface, refuses_fewer_and_more_callbacks) {
  expect_refused(VMKMGMT_SIM_BAD_CALLBACK_COUNT, [](Signature& signature) { --signature.record.callback_count; });
  expect_refused(VMKMGMT_SIM_BAD_CALLBACK_COUNT, [](Signature& signature) { ++signature.record.callback_count; });
}

TEST(Interface, refuses_another_callback_at_a_position) {
  expect_refused(VMKMGMT_SIM_BAD_CALLBACK_ID, [](Signature& signature) { signature.callbacks[76].id = 4120; });
  expect_refused(VMKMGMT_SIM_BAD_CALLBACK_ID,
                 [](Signature& signature) { std::swap(signature.callbacks[3], signature.callbacks[0]); });
}

TEST(Interface, refuses_a_callback_that_does_not_run_in_the_kernel) {
  expect_refused(VMKMGMT_SIM_BAD_LOCATION, [](Signature& signature) { signature.callbacks[10].location = 0; });
}

TEST(Interface, refuses_a_user_space_handler) {
  expect_refused(VMKMGMT_SIM_BAD_HANDLER, [](Signature& signature) { signature.callbacks[10].handler = &signature; });
}

TEST(Interface, refuses_an_asynchronous_callback) {
  expect_refused(VMKMGMT_SIM_BAD_SYNCHRONOUS, [](Signature& signature) { signature.callbacks[10].synchronous = 0; });
}

TEST(Interface, refuses_another_parameter_count) {
  expect_refused(VMKMGMT_SIM_BAD_PARAMETER_COUNT, [](Signature& signature) { signature.callbacks[0].parameter_count = 1; });
}

TEST(Interface, refuses_another_size_of_any_parameter) {
  for (std::size_t parameter = 0; parameter < 4; ++parameter) {
    expect_refused(VMKMGMT_SIM_BAD_PARAMETER_SIZE,
                   [=](Signature& signature) { ++signature.callbacks[0].parameter_size[parameter]; });
  }
}

TEST(Interface, refuses_another_direction_of_any_parameter) {
  for (std::size_t parameter = 0; parameter < 4; ++parameter) {
    expect_refused(VMKMGMT_SIM_BAD_PARAMETER_USAGE,
                   [=](Signature& signature) { signature.callbacks[0].parameter_usage[parameter] ^= 1; });
  }
}

TEST(Interface, refuses_null_addresses_and_a_cookie) {
  expect_refused(VMKMGMT_SIM_BAD_ARGUMENT, [](Signature& signature) { signature.record.callbacks = nullptr; });
  in_process({}, [] {
    const Signature signature;
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(vmk_MgmtUserInit(nullptr, 0, &handle), int{VMKMGMT_SIM_BAD_ARGUMENT});
    EXPECT_EQ(vmk_MgmtUserInit(&signature.record, 0, nullptr), int{VMKMGMT_SIM_BAD_ARGUMENT});
    EXPECT_EQ(vmk_MgmtUserInit(&signature.record, 1, &handle), int{VMKMGMT_SIM_BAD_ARGUMENT});
  });
}

TEST(Interface, registers_the_names_that_the_scenario_lists) {
  json scenario = small_scenario();
  for (const auto& [names, primary, inbox] :
       {std::tuple{json::array({"trel-mgmt"}), VMKMGMT_SIM_NOT_REGISTERED, VMKMGMT_SIM_OK},
        std::tuple{json::array({"vaskfcoe-mgmt", "trel-mgmt"}), VMKMGMT_SIM_OK, VMKMGMT_SIM_OK},
        std::tuple{json::array(), VMKMGMT_SIM_NOT_REGISTERED, VMKMGMT_SIM_NOT_REGISTERED}}) {
    scenario["driver"]["interfaces"] = names;
    under_scenario(scenario, [expected_primary = primary, expected_inbox = inbox] {
      vmk_MgmtUserHandle handle = nullptr;
      EXPECT_EQ(open_handle(Signature("vaskfcoe-mgmt"), handle), std::uint32_t{expected_primary});
      EXPECT_EQ(open_handle(Signature("trel-mgmt"), handle), std::uint32_t{expected_inbox});
    });
  }
}

TEST(Interface, destroyed_and_foreign_handles_fail) {
  in_process({}, [] {
    const auto probe = [](vmk_MgmtUserHandle handle) {
      dfc_mgmt_hdr header{.brdno = 1};
      return vmk_MgmtUserCallbackInvokeInt(handle, 0, std::uint64_t{315}, 1, &header);
    };
    vmk_MgmtUserHandle first = nullptr;
    EXPECT_EQ(open_handle(Signature(), first), std::uint32_t{VMKMGMT_SIM_OK});
    EXPECT_EQ(vmk_MgmtUserDestroy(first), int{VMKMGMT_SIM_OK});

    vmk_MgmtUserHandle second = nullptr;
    EXPECT_EQ(open_handle(Signature(), second), std::uint32_t{VMKMGMT_SIM_OK});
    EXPECT_NE(first, second);
    int elsewhere = 0;
    for (vmk_MgmtUserHandle handle : {first, vmk_MgmtUserHandle{}, static_cast<vmk_MgmtUserHandle>(&elsewhere)}) {
      EXPECT_EQ(probe(handle), int{VMKMGMT_SIM_BAD_HANDLE});
      EXPECT_EQ(vmk_MgmtUserDestroy(handle), int{VMKMGMT_SIM_BAD_HANDLE});
    }
    EXPECT_EQ(probe(second), int{VMKMGMT_SIM_BAD_COUNT});
  });
}

TEST(Interface, every_callback_checks_its_parameter_count) {
  in_process({}, [] {
    Session session;
    dfc_mgmt_hdr header{};
    for (const vaskdfc::CallbackFacts& row : Callbacks::kFacts) {
      for (std::uint32_t count = 0; count <= 5; ++count) {
        if (count == row.parameters) continue;
        EXPECT_EQ(vmk_MgmtUserCallbackInvokeInt(session.handle(), 0, row.id, count, &header, &header, &header, &header, &header),
                  int{VMKMGMT_SIM_BAD_COUNT})
            << row.id << " with " << count;
      }
    }
  });
}

TEST(Interface, refuses_an_instance_an_unknown_callback_and_null_parameters) {
  in_process({}, [] {
    Session session;
    dfc_mgmt_hdr header{};
    HbaAdapterAttributes attributes;
    const auto invoke = [&](std::uint64_t instance, std::uint64_t callback, void* first, void* second) {
      return vmk_MgmtUserCallbackInvokeInt(session.handle(), instance, callback, 2, first, second);
    };
    EXPECT_EQ(invoke(1, 315, &header, &attributes), int{VMKMGMT_SIM_BAD_INSTANCE});
    EXPECT_EQ(invoke(std::uint64_t{1} << 32, 315, &header, &attributes), int{VMKMGMT_SIM_BAD_INSTANCE});
    EXPECT_EQ(invoke(0, 314, &header, &attributes), int{VMKMGMT_SIM_UNKNOWN_CALLBACK});
    EXPECT_EQ(invoke(0, (std::uint64_t{1} << 32) + 315, &header, &attributes), int{VMKMGMT_SIM_UNKNOWN_CALLBACK});
    EXPECT_EQ(invoke(0, 315, nullptr, &attributes), int{VMKMGMT_SIM_BAD_ARGUMENT});
    EXPECT_EQ(invoke(0, 315, &header, nullptr), int{VMKMGMT_SIM_BAD_ARGUMENT});
    EXPECT_EQ(header.status, 0u);
  });
}

TEST(Interface, callbacks_without_a_function_answer_not_supported) {
  in_process({}, [] {
    Session session;
    std::vector<std::uint8_t> first(0x100000, 0xA5), second(first), third(first);
    const std::vector<std::uint8_t> untouched(first);
    for (const Callback callback : {Callback::k132, Callback::k19, Callback::kLip, Callback::kHbaSendFcp, Callback::k4111}) {
      const vaskdfc::CallbackFacts& row = facts_of(callback);
      dfc_mgmt_hdr header{.brdno = 1};
      EXPECT_EQ(vmk_MgmtUserCallbackInvokeInt(session.handle(), 0, row.id, row.parameters, &header, first.data(), second.data(),
                                              third.data()),
                int{VMKMGMT_SIM_OK});
      EXPECT_EQ(header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_SUPPORTED});
    }
    EXPECT_TRUE(first == untouched && second == untouched && third == untouched);
  });
}

}  // namespace
