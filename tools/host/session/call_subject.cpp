// What a call into the module is about, in words.
#include "tools/host/session/call_subject.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/host/model/item_data.h"

namespace kova_host {
namespace {

// "0x14140402 PoE/PoE 2/PoE 2 current" of the first item that `is_meant`; "" without one.
template <typename Predicate>
std::string first_item(const Predicate& is_meant) {
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
      if (is_meant(item)) {
        return fmt::format("{} {}", id_text(item.id), path_of(item));
      }
    }
  }
  return "";
}

std::string name_of_code(uint32_t code) {
  for (const FamilyData& family : item_data()) {
    if (family.presence_code == code) {
      return fmt::format("the presence of {} (device code 0x{:08X})", family.title, code);
    }
  }
  const std::string item = first_item([code](const Item& candidate) {
    const auto& codes = candidate.facts.codes;
    return std::find(codes.begin(), codes.end(), code) != codes.end();
  });
  return item.empty() ? fmt::format("device code 0x{:08X}", code) : item;
}

}  // namespace

std::string subject_text(const CallSubject& subject) {
  switch (subject.kind) {
    case CallSubject::Kind::item: {
      const std::string item =
          first_item([&subject](const Item& candidate) { return candidate.id == subject.number; });
      return item.empty() ? id_text(subject.number) : item;
    }
    case CallSubject::Kind::device_code:
      return name_of_code(subject.number);
    case CallSubject::Kind::module:
      break;
  }
  return "the module";
}

}  // namespace kova_host
