// An adapter's OAS rules, in the order in which they were set.
#pragma once

#include <cstdint>
#include <vector>

#include "driver/kept_bytes.h"
#include "scenario/scenario.h"

namespace simulator {

class OasRules {
 public:
  using Rule = scenario::OasRule;

  // The store must outlive the rules. Throws StateError when what it holds is damaged.
  OasRules(const scenario::Adapter& card, StateStore& store);

  // All of these throw StateError.
  std::vector<Rule> load() const;
  // False if there is no room. A rule that is there already stays where it is.
  bool add(const Rule& rule);
  // False if there is no such rule.
  bool remove(const Rule& rule);

 private:
  KeptBytes kept_;
};

}  // namespace simulator
