// Objects that are built while the plug-in is being loaded. An exception would end the host there,
// so memory that runs out leaves such an object empty, and the module refuses to start.
#pragma once

namespace load_time {

/// The place of an object among those that are made while the plug-in is being loaded, from 1 on,
/// told by each as [[gnu::init_priority(place)]]: the order of the files would not hold, because
/// link-time optimisation turns it round. What tells no place comes after all that do.
constexpr int place(int nth) {
  return 1000 + nth;  // the compiler keeps the first hundred for itself
}

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
