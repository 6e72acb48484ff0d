// What a call into the module is about, in words.
#pragma once

#include <cstdint>
#include <string>

namespace kova_host {

struct CallSubject {
  enum class Kind {
    module,       // the start, the end, the document: no single item
    item,         // a read or a write of the item with this ID
    device_code,  // a read of this code, by the module or past it
  };
  Kind kind = Kind::module;
  uint32_t number = 0;  // ID or code

  friend bool operator==(const CallSubject&, const CallSubject&) = default;
};

// "0x14140402 PoE/PoE 2/PoE 2 current", "the presence of PoE (device code 0x00200000)", "the
// module". A code that an item is read by stands for that item.
std::string subject_text(const CallSubject& subject);

}  // namespace kova_host
