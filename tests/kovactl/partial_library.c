/* A device library with only one of its entry points: ENTRY names the one. */
#include <stdint.h>

uint32_t ENTRY(uint32_t code, uint32_t* value);

uint32_t ENTRY(uint32_t code, uint32_t* value) {
  *value = code == 0x00200000 ? 1 : 0; /* the PoE ports are there */
  return 0;
}
