// Vital product data. What the selector asks for and where it stands is this driver's choice.
#include <array>

#include "driver/driver.h"
#include "driver/interface.h"
#include "families/families.h"
#include "families/text.h"

namespace simulator {
namespace {

struct Texts {
  std::string_view at_4;
  std::string_view at_260;
  std::string_view at_340;
};

constexpr std::uint32_t kSelectors = 3;

std::array<Texts, kSelectors> texts_of(const scenario::Adapter& card) {
  return {{{card.vpd.product, card.vpd.part_number, card.serial_number},
           {kVendor, card.vpd.engineering_change, card.vpd.manufacture_id},
           {card.firmware_version, card.option_rom_version, card.hardware_version}}};
}

DriverStatus vital_product_data(BoardCall& call, dfc_vpd_info& reply) {
  const scenario::Adapter& card = call.adapter.card();
  if (card.failed) return VMKMGMT_SIM_DRIVER_NOT_READY;
  const std::uint32_t selector = call.header.arg6;
  if (selector >= kSelectors) return VMKMGMT_SIM_DRIVER_NO_VPD;

  const Texts texts = texts_of(card)[selector];
  reply = {.selector = selector, .words_596 = {card.pci.vendor, card.pci.device, card.sli_mode, card.board, kSelectors}};
  set_text(reply.text_4, texts.at_4);
  set_text(reply.text_260, texts.at_260);
  set_text(reply.text_340, texts.at_340);
  return VMKMGMT_SIM_DRIVER_OK;
}

}  // namespace

void register_vpd(Door& door) { door.on<Callback::kGetVpd>(vital_product_data); }

}  // namespace simulator
