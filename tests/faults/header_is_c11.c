/* The interface header first and alone: it must need nothing before it, in C11. */
#include "include/kova_iot.h"

uint32_t status_seen_from_c(void) {
  return IOT_STATUS_UNDEFINED_ITEM;
}
