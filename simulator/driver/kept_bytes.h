// A byte string of an adapter that lasts: what was stored last, else an initial value.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "driver/state_store.h"

namespace simulator {

class KeptBytes {
 public:
  // What may stand in the store, and how messages call it.
  struct Form {
    std::function<bool(std::string_view)> holds;
    std::string description;
  };
  static Form of_size(std::size_t bytes);

  // The store must outlive the object. Throws StateError when what it holds is not of the form.
  KeptBytes(StateStore& store, std::string name, std::string initial, Form form);

  // Both throw StateError.
  std::string load() const;
  void update(const std::function<void(std::string&)>& change);

 private:
  std::string present(const std::optional<std::string>& stored) const;

  StateStore& store_;
  std::string name_;
  std::string initial_;
  Form form_;
};

}  // namespace simulator
