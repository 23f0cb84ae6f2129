// Records whose layout is this driver's choice: a structure that fills a record of plain bytes.
#pragma once

#include <cstring>
#include <type_traits>

namespace simulator {

template <typename Layout, typename Bytes>
void fill(Bytes& bytes, const Layout& layout) {
  static_assert(sizeof(Layout) == sizeof(bytes) && std::has_unique_object_representations_v<Layout>);
  std::memcpy(&bytes, &layout, sizeof(layout));
}

}  // namespace simulator
