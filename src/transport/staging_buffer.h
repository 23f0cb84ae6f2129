// A payload on the heap, for the length of one operation.
#pragma once

#include <cstdlib>

#include "transport/callback_table.h"

namespace vaskdfc {

// Not cleared unless asked for, because most calls use a few bytes of many. Empty when there is no memory.
template <Record T>
class StagingBuffer {
 public:
  StagingBuffer() : StagingBuffer(std::malloc(sizeof(T))) {}
  static StagingBuffer cleared() { return StagingBuffer(std::calloc(1, sizeof(T))); }
  ~StagingBuffer() { std::free(record_); }
  StagingBuffer(const StagingBuffer&) = delete;
  StagingBuffer& operator=(const StagingBuffer&) = delete;

  explicit operator bool() const { return record_ != nullptr; }
  T& operator*() const { return *record_; }
  T* operator->() const { return record_; }

 private:
  explicit StagingBuffer(void* memory) : record_(static_cast<T*>(memory)) {}

  T* record_;
};

// A request and the reply to it, in one piece: two pieces of this size next to each other, freed together, make the C library give
// the end of its heap back to the system after every call, to get it back as pages of zeros at the next.
template <Record T>
struct RequestAndReply {
  T request;
  T reply;
};

}  // namespace vaskdfc
