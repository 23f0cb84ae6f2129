// How every command that changes a setting goes about it: what is there, what is to be, ask, write, read back, compare.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "command_line.h"
#include "report.h"

namespace vaskdfc::tool {

// A field that differs; absent where one side does not have it.
struct Change {
  std::string key;
  std::string title;
  Cell before;
  Cell after;
};
std::vector<Change> changes_between(const std::vector<Field>& before, const std::vector<Field>& after);

// A setting that can be read and written.
struct Setting {
  std::string command;    // for the report
  std::uint32_t adapter;  // whose setting it is
  std::string intent;     // what the write does, as in "set the FCoE parameters"
  std::string place;      // where the setting is kept, as in "region 23"
  std::string operation;  // the library's function that writes it
  Results results;        // what its results mean
  std::function<std::vector<Field>()> read;
  std::function<std::uint32_t()> write;
};

// Makes the setting, which reads as `before`, read as `wanted`. Shows the difference and asks first, then reads back: what the
// library reports as written may never have arrived.
void change(Context& context, const Setting& setting, const std::vector<Field>& before, const std::vector<Field>& wanted);

// The same for a setting that nobody has read yet.
void change(Context& context, const Setting& setting, const std::vector<Field>& wanted);

}  // namespace vaskdfc::tool
