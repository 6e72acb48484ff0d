// Whether the plug-in was loaded whole.
#include "framework/load_time.h"

namespace load_time {
namespace {

constinit bool has_failed = false;  // in place before the first initialiser runs

}  // namespace

bool failed() {
  return has_failed;
}

void note_failure() {
  has_failed = true;
}

}  // namespace load_time
