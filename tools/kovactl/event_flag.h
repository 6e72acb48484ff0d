// A flag that one thread raises and another waits for together with other descriptors.
#pragma once

namespace kovactl {

class EventFlag {
 public:
  // Throws std::system_error.
  EventFlag();
  ~EventFlag();
  EventFlag(const EventFlag&) = delete;
  EventFlag& operator=(const EventFlag&) = delete;

  void raise() const;
  void lower() const;

  // For poll(): readable while the flag is up.
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace kovactl
