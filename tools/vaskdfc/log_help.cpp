#include "log_help.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>

namespace vaskdfc::tool {
namespace {

struct LineClass {
  std::uint32_t bit;
  const char* key;
  const char* lines;
};
constexpr std::array kLineClasses{
    LineClass{1, "handle", "opening and closing of the management handle (\"Init handle\", \"Destroy handle\")"},
    LineClass{2, "successes", "calls that succeeded (\"cmd ok\")"},
    LineClass{4, "failures", "calls that failed (\"cmd err\") and errors (\"ERROR:\")"},
    LineClass{8, "calls", "every call before it is made (\"call\")"},
};

}  // namespace

void explain_log(const Context& context, const std::string& mask) {
  const std::uint32_t bits = number_argument("--log", mask);
  Section classes = table_section("classes", "Classes of lines",
                                  {{"bit", "BIT"}, {"class", "CLASS"}, {"enabled", "ENABLED"}, {"lines", "LINES"}});
  for (const LineClass& line_class : kLineClasses) {
    classes.records.push_back({number_cell(line_class.bit), text_cell(line_class.key), flag_cell((bits & line_class.bit) != 0),
                               text_cell(line_class.lines)});
  }
  const std::string switch_on = fmt::format("mkdir -p /scratch/log && echo 'LogLevel 0x{:x}' > /scratch/libvaskdfc.conf", bits);
  context.print({.command = "log",
                 .sections = {record_section("log", "Log",
                                             {{"mask", "Mask", text_cell(fmt::format("0x{:x}", bits))},
                                              {"switch_on", "Switch on", text_cell(switch_on)},
                                              {"switch_off", "Switch off", text_cell("rm /scratch/libvaskdfc.conf")},
                                              {"read", "Read", text_cell("at every initialisation of the library")},
                                              {"lines_go_to", "Lines go to", text_cell("/scratch/log/libvaskdfc.log")}}),
                              std::move(classes)}});
}

}  // namespace vaskdfc::tool
