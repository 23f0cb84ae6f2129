// Many threads, each with a board of its own, calling all operations that address a board in orders of their own.
//
//   threads_test [SECONDS]
//
// Without a number, every thread goes through all operations a few times. Every result and every byte that comes back is compared
// with what a single thread got, and every line of the log must be whole. Exit code 1 when anything differs.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <random>
#include <thread>

#include "exhaustive/log_reading.h"
#include "exhaustive/operation.h"
#include "exhaustive/platform.h"
#include "transport/log.h"
#include "vaskdfc/transport.h"

namespace vaskdfc::test {
namespace {

// What a call came to.
struct Reply {
  std::uint32_t result = 0;
  std::vector<std::uint8_t> contents;
  bool operator==(const Reply&) const = default;
};

// An operation that board can do, and what it came to without other threads.
struct Expectation {
  const Operation* operation;
  Reply reply;
};

// The count of lost events belongs to the process: any thread's call may have set it.
bool belongs_to_a_board(const Operation& operation) {
  return operation.scope == Scope::kBoard && operation.name != "EventMissedCount";
}

bool fits(Generation generation, std::uint32_t board) {
  if (generation == Generation::kAny) return true;
  return (generation == Generation::kSli3) == (board >= AgreeableDriver::kFirstOlder);
}

Reply reply_of(const Operation& operation, std::uint32_t board) {
  Caller caller(board);
  const std::uint32_t result = operation.call(caller);
  if (!caller.guards_are_whole()) std::abort();
  return {.result = result, .contents = caller.contents()};
}

// The second time an operation is called counts: the first one may find a fresh board, as after a reset of statistics.
std::vector<Expectation> expectations_of(std::uint32_t board) {
  std::vector<Expectation> expectations;
  for (const Operation& operation : operations()) {
    if (!belongs_to_a_board(operation) || !fits(operation.generation, board)) continue;
    reply_of(operation, board);
    expectations.push_back({.operation = &operation});
  }
  for (Expectation& expectation : expectations) expectation.reply = reply_of(*expectation.operation, board);
  return expectations;
}

// Counted without order: anything stronger would keep the threads in step and hide their races.
class Counter {
 public:
  void count() { value_.fetch_add(1, std::memory_order_relaxed); }
  operator std::uint64_t() const { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t> value_ = 0;
};
Counter callbacks;
Counter calls;
Counter differences;

// Calls everything in ever new orders, until there is no time left or three rounds are over.
void work(std::uint32_t board, std::vector<Expectation> expectations, std::chrono::seconds time, std::latch& start) {
  start.arrive_and_wait();
  const auto end = std::chrono::steady_clock::now() + time;
  std::minstd_rand random(board);
  int rounds = 0;
  do {
    std::shuffle(expectations.begin(), expectations.end(), random);
    for (const auto& [operation, reply] : expectations) {
      calls.count();
      if (reply_of(*operation, board) == reply) continue;
      differences.count();
      std::fprintf(stderr, "%.*s came to something else on board %u\n", static_cast<int>(operation->name.size()),
                   operation->name.data(), board);
    }
  } while (++rounds < 3 || std::chrono::steady_clock::now() < end);
}

int count_and_agree(Callback callback, const Parameters& parameters) {
  callbacks.count();
  AgreeableDriver::answer(callback, parameters);
  return 0;
}

bool log_is_whole() {
  const LogContents contents = take_log(fLogger);
  const bool is_complete = contents.calls == callbacks && contents.results == callbacks;
  if (!contents.broken.empty()) std::fprintf(stderr, "a line of the log is broken: %s\n", contents.broken.c_str());
  if (!is_complete) std::fprintf(stderr, "the log does not have two lines for every callback\n");
  return is_complete && contents.broken.empty();
}

// A long run does not log: it would fill the disk.
int run(std::chrono::seconds time) {
  start_library();
  answer = count_and_agree;
  const bool logs = time == std::chrono::seconds(0);
  if (logs) fLogger = nameless_log();
  LogLevel = kLogOk | kLogError | kLogCall;

  std::vector<std::vector<Expectation>> expectations;
  for (std::uint32_t board = 0; board < DFC_MAX_BOARDS; ++board) expectations.push_back(expectations_of(board));
  std::latch start(DFC_MAX_BOARDS);
  std::vector<std::thread> threads;
  for (std::uint32_t board = 0; board < DFC_MAX_BOARDS; ++board) {
    threads.emplace_back(work, board, expectations[board], time, std::ref(start));
  }
  for (std::thread& thread : threads) thread.join();

  std::printf("%llu calls in %zu threads, %llu of them came to something else\n", static_cast<unsigned long long>(calls),
              threads.size(), static_cast<unsigned long long>(differences));
  return differences == 0 && (!logs || log_is_whole()) ? 0 : 1;
}

}  // namespace
}  // namespace vaskdfc::test

int main(int count, char** arguments) {
  const int seconds = count > 1 ? std::atoi(arguments[1]) : 0;
  return vaskdfc::test::run(std::chrono::seconds(seconds));
}
