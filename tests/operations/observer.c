/*
 * Stands before the library in a program and notes which of its functions are called, and whether the program itself calls them or
 * another function of the library. When the program ends, it writes their names into the file that OPERATIONS_CALLED names, with
 * "directly" behind those that the program called.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <link.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define HIDDEN __attribute__((visibility("hidden"), used))

/* What is known about a function; the code below knows the layout. */
struct observed {
  void* function;
  uint32_t is_called;
  uint32_t is_called_directly;
};

/* Where the library's code lies. */
HIDDEN uintptr_t library_begin;
HIDDEN uintptr_t library_end;

/* Each function of the library: looks who is calling and goes on in the library, all arguments where they were. */
#ifdef __i386__
#define STUB(name)               \
  "  movl (%esp), %eax\n"        \
  "  cmpl library_begin, %eax\n" \
  "  jb 1f\n"                    \
  "  cmpl library_end, %eax\n"   \
  "  jb 2f\n"                    \
  "1: movl $1, observed_" name   \
  "+8\n"                         \
  "2: movl $1, observed_" name   \
  "+4\n"                         \
  "  jmp *observed_" name "\n"
#else
#define STUB(name)                     \
  "  movq (%rsp), %r11\n"              \
  "  cmpq library_begin(%rip), %r11\n" \
  "  jb 1f\n"                          \
  "  cmpq library_end(%rip), %r11\n"   \
  "  jb 2f\n"                          \
  "1: movl $1, observed_" name         \
  "+12(%rip)\n"                        \
  "2: movl $1, observed_" name         \
  "+8(%rip)\n"                         \
  "  jmp *observed_" name "(%rip)\n"
#endif

#define OPERATION(name)                   \
  HIDDEN struct observed observed_##name; \
  __asm__(".pushsection .text\n.globl " #name "\n.type " #name ", @function\n" #name ":\n" STUB(#name) ".popsection\n");
#include "operations.inc"
#undef OPERATION

static const struct {
  const char* name;
  struct observed* observed;
} kOperations[] = {
#define OPERATION(name) {#name, &observed_##name},
#include "operations.inc"
#undef OPERATION
};
enum { kOperationCount = sizeof(kOperations) / sizeof(kOperations[0]) };

static int note_library(struct dl_phdr_info* object, size_t size, void* unused) {
  (void)size;
  (void)unused;
  if (strstr(object->dlpi_name, "/libvaskdfc.so") == NULL) return 0;
  for (unsigned i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)* segment = &object->dlpi_phdr[i];
    if (segment->p_type != PT_LOAD || (segment->p_flags & PF_X) == 0) continue;
    library_begin = object->dlpi_addr + segment->p_vaddr;
    library_end = library_begin + segment->p_memsz;
  }
  return 1;
}

static __attribute__((constructor)) void begin(void) {
  for (unsigned i = 0; i < kOperationCount; ++i) kOperations[i].observed->function = dlsym(RTLD_NEXT, kOperations[i].name);
  dl_iterate_phdr(note_library, NULL);
}

static __attribute__((destructor)) void end(void) {
  const char* path = getenv("OPERATIONS_CALLED");
  FILE* file = path == NULL ? NULL : fopen(path, "a");
  if (file == NULL) return;
  for (unsigned i = 0; i < kOperationCount; ++i) {
    const struct observed* observed = kOperations[i].observed;
    if (observed->is_called) fprintf(file, "%s%s\n", kOperations[i].name, observed->is_called_directly ? " directly" : "");
  }
  fclose(file);
}
