// OAS rules.
#include <algorithm>
#include <memory>

#include "record_fields.h"

namespace {

using vaskdfc::OasListReply;
using vaskdfc::OasRuleKey;

constexpr std::uint32_t kBoard = 3;
const std::string kOwn = "1000005a41560310";
const std::string kVirtual = "1001005a41560310";
const std::string kTarget = "505a41000c001003";
const std::string kSecondTarget = "505a41000c001004";
const std::string kAbsent = "5000000000000099";

constexpr std::uint32_t kEnable = 1;
constexpr std::uint32_t kDisable = 2;

std::string key(const std::string& initiator, const std::string& target, unsigned lun) {
  char digits[17];
  std::snprintf(digits, sizeof(digits), "%016x", lun);
  return "00" + initiator + target + digits;
}

std::uint32_t set(Session& session, const std::string& text, std::uint32_t command = kEnable, std::uint32_t board = kBoard) {
  OasRuleKey rule{};
  std::ranges::copy(text, rule.text);
  return session.call<Callback::kOasSetRule>({.brdno = board, .arg5 = command, .arg6 = 4118}, rule).status;
}

HbaWwn wwn(const std::string& digits) {
  HbaWwn result;
  for (std::size_t i = 0; i < 8; ++i) result.wwn[i] = static_cast<std::uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
  return result;
}

struct Rules {
  dfc_mgmt_hdr header;
  std::unique_ptr<OasListReply> reply;

  std::vector<std::uint32_t> luns() const {
    EXPECT_EQ(header.status, 0u);
    std::vector<std::uint32_t> result;
    for (std::uint32_t i = 0; i < header.arg3; ++i) result.push_back(reply->rules[i].word_16);
    return result;
  }
};

Rules list(Session& session, const std::string& initiator, const std::string& target, std::uint32_t board = kBoard) {
  Rules rules{.header = {}, .reply = std::make_unique<OasListReply>(garbage<OasListReply>())};
  const HbaWwn names[]{wwn(initiator), wwn(target)};
  rules.header = session.call<Callback::kOasGet>({.brdno = board, .arg3 = 77, .arg6 = 4117}, names[0], names[1], *rules.reply);
  return rules;
}

std::uint32_t status(std::uint32_t value) { return value; }

TEST(Oas, has_a_version_in_the_newer_generation) {
  in_process({}, [] {
    Session session;
    const auto ask = [&](std::uint32_t board, std::uint32_t number) {
      return session.call<Callback::kOasVer>({.brdno = board, .arg4 = 77, .arg6 = number});
    };
    EXPECT_EQ(ask(kBoard, 4119).status, 0u);
    EXPECT_EQ(ask(kBoard, 4119).arg4, 1u);
    EXPECT_EQ(ask(kBoard, 4118).status, status(VMKMGMT_SIM_DRIVER_BAD_COMMAND));
    EXPECT_EQ(ask(7, 4119).status, status(VMKMGMT_SIM_DRIVER_NOT_SUPPORTED));
    EXPECT_EQ(set(session, key(kOwn, kTarget, 1), kEnable, 7), status(VMKMGMT_SIM_DRIVER_NOT_SUPPORTED));
    EXPECT_EQ(list(session, kOwn, kTarget, 12).header.status, status(VMKMGMT_SIM_DRIVER_NOT_SUPPORTED));
  });
}

TEST(Oas, rules_are_kept_for_each_pair_of_ports) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(list(session, kOwn, kTarget).luns(), std::vector<std::uint32_t>{1}) << "of the scenario";
    EXPECT_EQ(set(session, key(kOwn, kTarget, 255)), 0u);
    EXPECT_EQ(set(session, key(kOwn, kTarget, 0)), 0u);
    EXPECT_EQ(set(session, key(kOwn, kTarget, 255)), 0u) << "again";
    EXPECT_EQ(set(session, key(kVirtual, kTarget, 2)), 0u);
    EXPECT_EQ(list(session, kOwn, kTarget).luns(), (std::vector<std::uint32_t>{1, 255, 0}));
    EXPECT_EQ(list(session, kVirtual, kTarget).luns(), std::vector<std::uint32_t>{2});
    EXPECT_EQ(list(session, kOwn, kSecondTarget).luns(), std::vector<std::uint32_t>());

    EXPECT_EQ(set(session, key(kOwn, kTarget, 255), kDisable), 0u);
    EXPECT_EQ(set(session, key(kOwn, kTarget, 255), kDisable), status(VMKMGMT_SIM_DRIVER_NO_SUCH_RULE));
    EXPECT_EQ(list(session, kOwn, kTarget).luns(), (std::vector<std::uint32_t>{1, 0}));
  });
}

TEST(Oas, records_tell_about_the_target_and_its_unit) {
  in_process({}, [] {
    Session session;
    set(session, key(kOwn, kTarget, 99));
    const Rules rules = list(session, kOwn, kTarget);
    const vaskdfc::OasRuleRecord& unit = rules.reply->rules[0];
    EXPECT_EQ(text(at<HbaWwn>(unit, 0)), "50:5a:41:00:0c:00:10:00");
    EXPECT_EQ(text(at<HbaWwn>(unit, 8)), "50:5a:41:00:0c:00:10:03");
    EXPECT_EQ(word(unit, 16), 1u);
    EXPECT_EQ(word(unit, 20), 131072u);
    EXPECT_EQ(unit.flags, 3);
    EXPECT_EQ(word(rules.reply->rules[1], 20), 0u);
    EXPECT_EQ(rules.reply->rules[1].flags, 1);
    EXPECT_EQ(rules.reply->rules[2].flags, 0);
  });
}

TEST(Oas, rules_may_wait_for_their_target) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(list(session, kOwn, kAbsent).header.status, status(VMKMGMT_SIM_DRIVER_NO_SUCH_TARGET));
    EXPECT_EQ(set(session, key(kOwn, kAbsent, 4)), status(VMKMGMT_SIM_DRIVER_RULE_WAITS));
    const Rules waiting = list(session, kOwn, kAbsent);
    EXPECT_EQ(waiting.luns(), std::vector<std::uint32_t>{4});
    EXPECT_EQ(word(waiting.reply->rules[0], 0), 0u);
    session.call<Callback::kSetDiag>({.brdno = kBoard, .arg6 = 0x12});
    EXPECT_EQ(set(session, key(kOwn, kTarget, 2)), status(VMKMGMT_SIM_DRIVER_RULE_WAITS));
    EXPECT_EQ(list(session, kOwn, kTarget).luns(), (std::vector<std::uint32_t>{1, 2}));
  });
}

TEST(Oas, keys_that_name_no_rule_are_refused) {
  in_process({}, [] {
    Session session;
    const std::string good = key(kOwn, kTarget, 1);
    std::string second_version = good, blank = good, sign = good;
    second_version[1] = '2';
    blank[20] = ' ';
    sign[34] = '-';
    for (const std::string& text : {std::string(), good.substr(1), good + "0", second_version, blank, sign, std::string(6400, '0'),
                                    key(kOwn, kTarget, 256), key(kAbsent, kTarget, 1)}) {
      EXPECT_EQ(set(session, text), status(VMKMGMT_SIM_DRIVER_BAD_RULE)) << text.substr(0, 60);
    }
    EXPECT_EQ(set(session, "01" + good.substr(2)), 0u) << "the driver's version";
    for (const std::uint32_t command : {0u, 3u}) {
      EXPECT_EQ(set(session, good, command), status(VMKMGMT_SIM_DRIVER_BAD_COMMAND));
    }
    EXPECT_EQ(list(session, kAbsent, kTarget).header.status, status(VMKMGMT_SIM_DRIVER_NO_SUCH_LOCAL_PORT));
    OasRuleKey rule{};
    EXPECT_EQ(session.call<Callback::kOasSetRule>({.brdno = kBoard, .arg5 = kEnable}, rule).status,
              status(VMKMGMT_SIM_DRIVER_BAD_COMMAND));
  });
}

TEST(Oas, keeps_256_rules) {
  in_process({}, [] {
    Session session;
    for (unsigned lun = 0; lun < 256; ++lun) EXPECT_EQ(set(session, key(kOwn, kTarget, lun)), 0u);
    EXPECT_EQ(set(session, key(kOwn, kSecondTarget, 0)), status(VMKMGMT_SIM_DRIVER_NO_RULE_ROOM));
    EXPECT_EQ(set(session, key(kOwn, kTarget, 7)), 0u) << "one that is there";
    const Rules rules = list(session, kOwn, kTarget);
    EXPECT_EQ(rules.header.arg3, 256u);
    EXPECT_EQ(rules.luns().back(), 255u);
  });
}

TEST(Oas, is_switched_off_by_a_parameter) {
  json scenario = small_scenario();
  scenario["adapters"][0]["parameters"] = {{"oas_enabled", 0}};
  under_scenario(scenario, [] {
    Session session;
    const std::string own = "1000000000000002", target = "5000000000000002";
    EXPECT_EQ(set(session, key(own, target, 0), kEnable, 2), status(VMKMGMT_SIM_DRIVER_SWITCHED_OFF));
    EXPECT_EQ(list(session, own, target, 2).header.status, status(VMKMGMT_SIM_DRIVER_SWITCHED_OFF));
  });
}

TEST(Oas, rules_survive_the_process_in_the_state_folder) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(set(session, key(kVirtual, kTarget, 2)), 0u);
    EXPECT_EQ(set(session, key(kOwn, kTarget, 1), kDisable), 0u);
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(list(session, kVirtual, kTarget).luns(), std::vector<std::uint32_t>{2});
    EXPECT_EQ(list(session, kOwn, kTarget).luns(), std::vector<std::uint32_t>());
  });
  const std::string file = folder.write("oas-" + kOwn + ".bin", "torn");
  EXPECT_EQ(in_process(environment,
                       [] {
                         vmk_MgmtUserHandle handle = nullptr;
                         EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
                       }),
            "vmkmgmt simulator: " + file +
                ": damaged: the whole file: expected at most 256 rules of 20 bytes; remove the file to start with fresh state\n");
}

}  // namespace
