// Measures one build of the library and prints what came of it as JSON.
//
//   bench LIBRARY BARE_LIBRARY
//
// /scratch must be the program's own: it configures the library's log there.
#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

#include "figures.h"

namespace bench {
namespace {

constexpr const char* name_of(Goal goal) {
  switch (goal) {
    case Goal::kAtMost: return "at most";
    case Goal::kAtLeast: return "at least";
    default: return "none";
  }
}

nlohmann::ordered_json document_of(const Figure& figure) {
  nlohmann::ordered_json document = {{"what", figure.what},          {"against", figure.against},
                                     {"value", figure.value},        {"unit", figure.unit.empty() ? "ratio" : figure.unit},
                                     {"goal", name_of(figure.goal)}, {"limit", figure.limit}};
  if (figure.times.bare > 0) {
    document["ours_ns"] = figure.times.ours;
    document["bare_ns"] = figure.times.bare;
  }
  return document;
}

Figures measure(const std::string& path, const std::string& bare_path) {
  Figures figures;
  measure_faults(path, figures);
  measure_start(path, bare_path, figures);

  const Library library(path);
  dfc_brd_info boards[DFC_MAX_BOARDS];
  library.DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  for (auto* const family : {measure_calls, measure_transfers, measure_mapping, measure_rules, measure_log, measure_threads}) {
    family(library, figures);
  }
  library.DFC_FreeDiagEnv();
  return figures;
}

}  // namespace
}  // namespace bench

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: bench LIBRARY BARE_LIBRARY\n", stderr);
    return 2;
  }
  try {
    nlohmann::ordered_json document = nlohmann::ordered_json::array();
    for (const bench::Figure& figure : bench::measure(arguments[1], arguments[2])) document.push_back(bench::document_of(figure));
    std::cout << document.dump() << "\n";
    return 0;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "bench: %s\n", problem.what());
    return 1;
  }
}
