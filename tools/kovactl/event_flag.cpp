// A flag that one thread raises and another waits for together with other descriptors.
#include "tools/kovactl/event_flag.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kovactl {

EventFlag::EventFlag() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make an event");
  }
}

EventFlag::~EventFlag() {
  close(descriptor_);
}

void EventFlag::raise() const {
  eventfd_write(descriptor_, 1);
}

void EventFlag::lower() const {
  eventfd_t count = 0;
  eventfd_read(descriptor_, &count);
}

}  // namespace kovactl
