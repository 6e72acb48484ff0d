// Objects that are built while the plug-in is being loaded. An exception would end the host there,
// so memory that runs out leaves such an object empty, and the module refuses to start.
#pragma once

namespace load_time {

/// True when an object could not be built: the module is unusable until it is loaded again.
bool failed();
void note_failure();

/// What `make` returns, or an empty object.
template <typename Object>
Object build(Object (*make)()) noexcept {
  try {
    return make();
  } catch (...) {
    note_failure();
    return Object();
  }
}

}  // namespace load_time
