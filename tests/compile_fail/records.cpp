// Records that are not what their guards promise, in C++.
#include "vaskdfc/record.h"

struct Counted {
  uint32_t words[2];
#ifdef SIZE_IS_WRONG  // refused: Counted must be 8 bytes without padding
  uint32_t one_more;
#endif
};
VASKDFC_RECORD_SIZE(Counted, 8);

// The size is the promised one with the padding, too.
struct Filled {
#ifdef PADDING_INSIDE  // refused: Filled must be 8 bytes without padding
  uint8_t byte;
#else
  uint8_t bytes[4];
#endif
  uint32_t word;
};
VASKDFC_RECORD_SIZE(Filled, 8);

struct Ordered {
#ifdef FIELDS_SWAPPED  // refused: Ordered::last must be at offset 4
  uint32_t last;
  uint32_t first;
#else
  uint32_t first;
  uint32_t last;
#endif
};
VASKDFC_RECORD_SIZE(Ordered, 8);
VASKDFC_FIELD_AT(Ordered, last, 4);

struct Linked {
  const void* next;
#ifdef POINTER_RECORD_SIZE_IS_WRONG  // refused: Linked must be 8 bytes on 32-bit systems, 16 on 64-bit systems
  const void* previous;
#endif
  uint32_t word;
};
VASKDFC_POINTER_RECORD_SIZE(Linked, 8, 16);
