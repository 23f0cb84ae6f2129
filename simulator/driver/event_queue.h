// Events that wait for an application: the oldest are kept, and those that find no room are counted.
#pragma once

#include <cstdint>
#include <deque>
#include <utility>

namespace simulator {

// In the layout of FC-HBA's event information.
struct EventRecord {
  std::uint32_t code = 0;
  std::uint32_t fc_id = 0;  // the adapter's port
  std::uint32_t page = 0;   // the page of an RSCN: the port that it is about
  std::uint32_t zero_12[2]{};
};
static_assert(sizeof(EventRecord) == 20);

class EventQueue {
 public:
  static constexpr std::size_t kRoom = 32;

  void push(const EventRecord& event) {
    if (waiting_.size() == kRoom) {
      ++missed_;
    } else {
      waiting_.push_back(event);
    }
  }

  bool empty() const { return waiting_.empty(); }
  EventRecord pop() {
    const EventRecord event = waiting_.front();
    waiting_.pop_front();
    return event;
  }

  // How many were lost since this was asked last.
  std::uint32_t take_missed() { return std::exchange(missed_, 0); }

  // Position in the scenario's events: those before it have happened.
  std::size_t happened = 0;

 private:
  std::deque<EventRecord> waiting_;
  std::uint32_t missed_ = 0;
};

}  // namespace simulator
