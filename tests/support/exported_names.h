// What the library exports.
#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vaskdfc::test {

// The names in the version script: those between "global:" and "local:", each with a semicolon behind it.
inline std::vector<std::string> exported_names() {
  std::ifstream script(VASKDFC_VERSION_SCRIPT);
  const std::vector<std::string> words{std::istream_iterator<std::string>(script), {}};
  const auto begin = std::ranges::find(words, "global:");
  std::vector<std::string> names;
  for (auto word = begin == words.end() ? begin : begin + 1; word != words.end() && *word != "local:"; ++word) {
    names.push_back(word->substr(0, word->find(';')));
  }
  return names;
}

}  // namespace vaskdfc::test
