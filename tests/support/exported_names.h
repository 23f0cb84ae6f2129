// What the library exports.
#pragma once

#include <fstream>
#include <string>
#include <vector>

namespace vaskdfc::test {

// The names in the version script, of all its nodes: those behind "global:", each with a semicolon of its own, up to another word.
inline std::vector<std::string> exported_names() {
  std::ifstream script(VASKDFC_VERSION_SCRIPT);
  std::vector<std::string> names;
  bool is_global = false;
  for (std::string word; script >> word;) {
    if (!word.ends_with(';') || word.starts_with('}')) {
      is_global = word == "global:";
      continue;
    }
    if (is_global) names.push_back(word.substr(0, word.size() - 1));
  }
  return names;
}

}  // namespace vaskdfc::test
