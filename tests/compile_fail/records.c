/* Records that are not what their guards promise, in C, where the guard's name has to do as its sentence. */
#include "vaskdfc/record.h"

typedef struct Counted {
  uint32_t words[2];
#ifdef SIZE_IS_WRONG  // refused: vaskdfc_size_of_Counted
  uint32_t one_more;
#endif
} Counted;
VASKDFC_RECORD_SIZE(Counted, 8);

typedef struct Ordered {
#ifdef FIELDS_SWAPPED  // refused: vaskdfc_offset_of_Ordered_last
  uint32_t last;
  uint32_t first;
#else
  uint32_t first;
  uint32_t last;
#endif
} Ordered;
VASKDFC_RECORD_SIZE(Ordered, 8);
VASKDFC_FIELD_AT(Ordered, last, 4);

typedef struct Linked {
  const void* next;
#ifdef POINTER_RECORD_SIZE_IS_WRONG  // refused: vaskdfc_size_of_Linked
  const void* previous;
#endif
  uint32_t word;
} Linked;
VASKDFC_POINTER_RECORD_SIZE(Linked, 8, 16);
