/*
 * Stands before libc in a program and counts the system calls with which it uses files of one folder. The call of a number does not
 * do what it should.
 *
 * SABOTEUR_FOLDER  the folder, as /proc shows it
 * SABOTEUR_CALL    number of the call, from 1; none: only counts
 * SABOTEUR_DEED    "kill" ends the process before the call, "tear" in the middle of a write; else the name of an error, with which
 *                  the call fails. "SHORT" does half of a write and fails every one after it for lack of room.
 * SABOTEUR_LOG     gets the name of every call, a line each
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/types.h>
#include <unistd.h>

struct error_name {
  const char* name;
  int number;
};
static const struct error_name kErrors[] = {
    {"EINTR", EINTR}, {"EIO", EIO}, {"ENOSPC", ENOSPC}, {"EFBIG", EFBIG}, {"EMFILE", EMFILE}, {"ENOLCK", ENOLCK},
};

static unsigned calls_made;
static int is_full;

/* Whether a descriptor's file is the folder or lies in it. */
static int is_watched(int file) {
  const char* const folder = getenv("SABOTEUR_FOLDER");
  char link[32];
  char path[PATH_MAX];
  ssize_t size;
  if (folder == NULL || file < 0) return 0;
  snprintf(link, sizeof(link), "/proc/self/fd/%d", file);
  size = readlink(link, path, sizeof(path) - 1);
  if (size < 0) return 0;
  path[size] = '\0';
  return strncmp(path, folder, strlen(folder)) == 0;
}

static void note(const char* call) {
  const char* const path = getenv("SABOTEUR_LOG");
  FILE* const log = path == NULL ? NULL : fopen(path, "ae");
  if (log == NULL) return;
  fprintf(log, "%s\n", call);
  fclose(log);
}

static int error_named(const char* deed) {
  size_t i;
  for (i = 0; i < sizeof(kErrors) / sizeof(*kErrors); ++i) {
    if (strcmp(kErrors[i].name, deed) == 0) return kErrors[i].number;
  }
  fprintf(stderr, "saboteur: unknown deed %s\n", deed);
  abort();
}

/* What is to be done to this call; null for nothing. */
static const char* deed_for(const char* call, int file) {
  const char* const number = getenv("SABOTEUR_CALL");
  if (!is_watched(file)) return NULL;
  note(call);
  ++calls_made;
  if (number == NULL || calls_made != strtoul(number, NULL, 10)) return NULL;
  return getenv("SABOTEUR_DEED");
}

/* Whether a call that writes nothing fails; errno says why then. */
static int fails(const char* call, int file) {
  const char* const deed = deed_for(call, file);
  if (deed == NULL) return 0;
  if (strcmp(deed, "kill") == 0) raise(SIGKILL);
  if (strcmp(deed, "tear") == 0 || strcmp(deed, "SHORT") == 0) return 0;
  errno = error_named(deed);
  return 1;
}

/* How much of a write is to be done; errno is set where it is nothing. */
static size_t room_for(const char* call, int file, size_t size) {
  const char* const deed = deed_for(call, file);
  if (is_full && is_watched(file)) {
    errno = ENOSPC;
    return 0;
  }
  if (deed == NULL) return size;
  if (strcmp(deed, "kill") == 0) raise(SIGKILL);
  if (strcmp(deed, "tear") == 0) return size / 2;
  if (strcmp(deed, "SHORT") == 0) {
    is_full = 1;
    return size / 2;
  }
  errno = error_named(deed);
  return 0;
}

static void killed_if_torn(size_t asked, size_t room) {
  const char* const deed = getenv("SABOTEUR_DEED");
  if (room < asked && strcmp(deed, "tear") == 0) raise(SIGKILL);
}

#define ORIGINAL(type, name) type const original = (type)(uintptr_t)dlsym(RTLD_NEXT, name)

typedef int (*openat_function)(int, const char*, int, ...);
typedef ssize_t (*write_function)(int, const void*, size_t);
typedef ssize_t (*pwrite_function)(int, const void*, size_t, off64_t);
typedef ssize_t (*read_function)(int, void*, size_t);
typedef ssize_t (*pread_function)(int, void*, size_t, off64_t);
typedef int (*descriptor_function)(int);
typedef int (*truncate_function)(int, off64_t);
typedef int (*flock_function)(int, int);
typedef int (*rename_function)(int, const char*, int, const char*);
typedef int (*unlink_function)(int, const char*, int);

static int opened(const char* name, int folder, const char* path, int flags, mode_t mode) {
  ORIGINAL(openat_function, name);
  return fails("open", folder) ? -1 : original(folder, path, flags, mode);
}

static mode_t mode_of(int flags, va_list arguments) { return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0; }

int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  mode_t mode;
  va_start(arguments, flags);
  mode = mode_of(flags, arguments);
  va_end(arguments);
  return opened("openat", folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
  va_list arguments;
  mode_t mode;
  va_start(arguments, flags);
  mode = mode_of(flags, arguments);
  va_end(arguments);
  return opened("openat64", folder, path, flags, mode);
}

ssize_t write(int file, const void* bytes, size_t size) {
  ORIGINAL(write_function, "write");
  const size_t room = room_for("write", file, size);
  ssize_t written;
  if (room == 0 && size != 0) return -1;
  written = original(file, bytes, room);
  killed_if_torn(size, room);
  return written;
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t place) {
  ORIGINAL(pwrite_function, "pwrite64");
  const size_t room = room_for("pwrite", file, size);
  ssize_t written;
  if (room == 0 && size != 0) return -1;
  written = original(file, bytes, room, place);
  killed_if_torn(size, room);
  return written;
}

ssize_t read(int file, void* bytes, size_t size) {
  ORIGINAL(read_function, "read");
  return fails("read", file) ? -1 : original(file, bytes, size);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t place) {
  ORIGINAL(pread_function, "pread64");
  return fails("pread", file) ? -1 : original(file, bytes, size, place);
}

int fsync(int file) {
  ORIGINAL(descriptor_function, "fsync");
  return fails("fsync", file) ? -1 : original(file);
}

int close(int file) {
  ORIGINAL(descriptor_function, "close");
  const int failed = fails("close", file);
  const int result = original(file);
  return failed ? -1 : result;
}

int ftruncate64(int file, off64_t size) {
  ORIGINAL(truncate_function, "ftruncate64");
  return fails("ftruncate", file) ? -1 : original(file, size);
}

int flock(int file, int operation) {
  ORIGINAL(flock_function, "flock");
  return fails(operation == LOCK_UN ? "unlock" : "lock", file) ? -1 : original(file, operation);
}

int renameat(int from, const char* old_path, int to, const char* new_path) {
  ORIGINAL(rename_function, "renameat");
  return fails("rename", from) ? -1 : original(from, old_path, to, new_path);
}

int unlinkat(int folder, const char* path, int flags) {
  ORIGINAL(unlink_function, "unlinkat");
  return fails("unlink", folder) ? -1 : original(folder, path, flags);
}
