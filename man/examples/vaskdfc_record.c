#include <vaskdfc/record.h>

/* A record of one's own that is written to a file as it stands. */
typedef struct sample {
  uint32_t adapter;
  uint16_t state;
  uint16_t errors;
} sample;
VASKDFC_RECORD_SIZE(sample, 8);
VASKDFC_FIELD_AT(sample, errors, 6);

int main(void) { return 0; }
