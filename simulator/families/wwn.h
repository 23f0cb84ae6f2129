// Comparison of WWNs.
#pragma once

#include <algorithm>

#include "vaskdfc/hbaapi.h"

inline bool operator==(const HbaWwn& left, const HbaWwn& right) { return std::ranges::equal(left.wwn, right.wwn); }
