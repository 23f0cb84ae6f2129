#include "support/c_library.h"

#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace vaskdfc::test {

CLibrary c_library;

namespace {

// A path below /scratch names a file of the test; any other stays what it is.
std::string replaced_path(const char* path) {
  constexpr std::string_view kScratch = "/scratch/";
  const std::string_view text = path;
  if (!text.starts_with(kScratch)) return path;
  return c_library.scratch / text.substr(kScratch.size());
}

bool is_refused(std::size_t bytes) {
  return ++c_library.allocations == c_library.refused_allocation || (bytes != 0 && bytes == c_library.refused_bytes);
}

void* counted(void* memory) {
  ++c_library.live_allocations;
  return memory;
}

}  // namespace
}  // namespace vaskdfc::test

using vaskdfc::test::c_library;
using vaskdfc::test::counted;
using vaskdfc::test::is_refused;

extern "C" {

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __real_fopen64(const char* path, const char* mode);
long __real_syscall(long number, ...);
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void __real_free(void* memory);

std::FILE* __wrap_fopen(const char* path, const char* mode) { return __real_fopen(path, mode); }

// The library opens its files with 64-bit offsets; 64-bit systems know the function by either name.
std::FILE* __wrap_fopen64(const char* path, const char* mode) {
  c_library.opened_files.push_back(std::string(path) + " " + mode);
  return __real_fopen64(vaskdfc::test::replaced_path(path).c_str(), mode);
}

int __wrap_gettimeofday(timeval* now, void*) {
  *now = {.tv_sec = c_library.seconds, .tv_usec = 0};
  return 0;
}

pid_t __wrap_getpid() { return c_library.process_id; }

// The library asks for its thread's id only; nobody else in a test makes system calls by number without arguments.
long __wrap_syscall(long number, ...) {
  if (number == SYS_gettid) return c_library.thread_id;
  std::va_list arguments;
  va_start(arguments, number);
  long word[6];
  for (long& each : word) each = va_arg(arguments, long);
  va_end(arguments);
  return __real_syscall(number, word[0], word[1], word[2], word[3], word[4], word[5]);
}

unsigned __wrap_sleep(unsigned seconds) {
  c_library.sleeps.push_back("sleep " + std::to_string(seconds));
  return 0;
}

int __wrap_usleep(useconds_t microseconds) {
  c_library.sleeps.push_back("usleep " + std::to_string(microseconds));
  return 0;
}

void* __wrap_malloc(std::size_t bytes) { return is_refused(bytes) ? nullptr : counted(__real_malloc(bytes)); }

void* __wrap_calloc(std::size_t count, std::size_t bytes) {
  return is_refused(count * bytes) ? nullptr : counted(__real_calloc(count, bytes));
}

void __wrap_free(void* memory) {
  if (memory != nullptr) --c_library.live_allocations;
  __real_free(memory);
}

// As glibc does it: a name that does not fit fills the buffer without an end, and that is an error.
int __wrap_gethostname(char* name, std::size_t size) {
  std::strncpy(name, c_library.host_name.c_str(), size);
  if (c_library.host_name.size() < size) return 0;
  errno = ENAMETOOLONG;
  return -1;
}

}  // extern "C"
