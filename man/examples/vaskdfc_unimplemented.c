#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  /* Wants no initialisation, and says so at once. */
  if (DFC_EnableAuthentication(0) == DFC_UNSUPPORTED)
    puts("no authentication on this platform");
  return 0;
}
