// The cost of each failed device call, told by the families' contracts.
#include "tests/faults/expected_document.h"

#include <algorithm>
#include <array>
#include <functional>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "tests/support/documents.h"

namespace {

constexpr uint32_t kFamily = 0xFFFF0000;
constexpr uint32_t kGroup = 0xFFFFFF00;
constexpr uint32_t kBlock = 0xFFFFFFF0;
constexpr uint32_t kItem = 0xFFFFFFFF;
constexpr uint32_t kModule = 0xFFFF00FF;

// Presence is asked for the family and again before each block that is read; the memory modules
// are counted before each of them. The `nth` asking of `code` takes the items id & mask == value.
struct Probe {
  uint32_t code;
  int nth;
  uint32_t mask;
  uint32_t value;
};
constexpr std::array kProbes{
    Probe{0x260003, 1, kFamily, 0x14140000}, Probe{0x200000, 1, kFamily, 0x14140000},
    Probe{0xA00000, 2, kFamily, 0x14180000}, Probe{0xA00000, 3, kFamily, 0x14180000},
    Probe{0xA00000, 4, kModule, 0x14180002}, Probe{0xB00000, 1, kFamily, 0x14190000},
    Probe{0x800000, 1, kFamily, 0x14170000}, Probe{0x800000, 2, kGroup, 0x14170600},
    Probe{0x800000, 3, kGroup, 0x14170300},  Probe{0x800000, 4, kBlock, 0x14170110},
    Probe{0x800000, 5, kBlock, 0x14170120},  Probe{0x600008, 1, kFamily, 0x14160000},
    Probe{0x600008, 2, kGroup, 0x14160600},  Probe{0x600008, 3, kBlock, 0x14160720},
    Probe{0x600008, 4, kBlock, 0x14160710},  Probe{0x600008, 5, kGroup, 0x14160800},
    Probe{0x400000, 1, kFamily, 0x14150000}, Probe{0x400000, 2, kGroup, 0x14150900},
    Probe{0x400000, 3, kBlock, 0x14150710},  Probe{0x400000, 4, kBlock, 0x14150720},
    Probe{0x400000, 5, kBlock, 0x14150730},  Probe{0x400000, 6, kBlock, 0x14150740},
};

class Document {
 public:
  Document() : json_(reference_document()) {}
  JsonOwner take() { return std::move(json_); }

  // Groups and families that have lost all their items go, too.
  void remove(uint32_t mask, uint32_t value) {
    void* next_family = nullptr;
    const char* key = nullptr;
    json_t* family = nullptr;
    json_object_foreach_safe(json_.get(), next_family, key, family) {
      void* next_group = nullptr;
      const char* name = nullptr;
      json_t* group = nullptr;
      json_object_foreach_safe(family, next_group, name, group) {
        json_t* elements = json_object_get(group, "e");
        for (size_t i = json_array_size(elements); i-- > 0;) {
          if ((id_of(json_array_get(elements, i)) & mask) == value) {
            json_array_remove(elements, i);
          }
        }
        if (elements != nullptr && json_array_size(elements) == 0) {
          json_object_del(family, name);
        }
      }
      if (json_object_size(family) == 2) {  // "id" and "bn"
        json_object_del(json_.get(), key);
      }
    }
  }

  // The elements of an item, which may stand in two groups.
  void edit(uint32_t id, const std::function<void(json_t*)>& change) {
    visit(json_.get(), id, change);
  }

  void make_unreadable(uint32_t id) {
    edit(id, [](json_t* element) {
      json_string_set(json_object_get(element, "sv"), "N/A");
      json_integer_set(json_object_get(element, "bv"), 0);
      json_integer_set(json_object_get(element, "v"), 0);
      json_real_set(json_object_get(element, "v"), 0);
    });
  }

  // The garbage word is no UTF-8: the text cannot be published at all.
  void damage_text(uint32_t id, size_t word, bool garbage) {
    if (garbage) {
      remove(kItem, id);
      return;
    }
    edit(id, [word](json_t* element) {
      json_t* text = json_object_get(element, "sv");
      json_string_set(text, text_with_repeated_word(json_string_value(text), word).c_str());
    });
  }

 private:
  static uint32_t id_of(const json_t* json) {
    return static_cast<uint32_t>(json_integer_value(json_object_get(json, "id")));
  }

  static void visit(json_t* json, uint32_t id, const std::function<void(json_t*)>& change) {
    const char* key = nullptr;
    json_t* member = nullptr;
    json_object_foreach(json, key, member) {
      visit(member, id, change);
    }
    size_t index = 0;
    json_t* element = nullptr;
    json_array_foreach(json, index, element) {
      if (id_of(element) == id) {
        change(element);
      }
    }
  }

  JsonOwner json_;
};

// Every field of a memory module or of the battery keeps its place.
void fail_module_field(Document* document, uint32_t code, int nth, bool stores) {
  const uint32_t selector = code & 0xFFU;
  const auto item = [&](uint32_t field) {
    return 0x14180001 + (field << 8) + ((code >> 8) & 0xFU);
  };
  if (selector == 0x01) {  // the DRAM type, which the module type needs as well
    document->make_unreadable(item(nth == 1 ? 0x01 : 0x02));
  } else if (selector == 0x11) {  // the series, which two other fields depend on
    document->make_unreadable(item(nth == 1 ? 0x11 : nth == 2 ? 0x21 : 0x0A));
  } else if (selector > 0x11 && selector <= 0x15) {
    document->damage_text(item(0x11), selector - 0x11, stores);
  } else if (selector > 0x21) {
    document->damage_text(item(0x21), selector - 0x21, stores);
  } else {
    document->make_unreadable(item(selector));
  }
}

void fail_battery_field(Document* document, uint32_t code, int nth, bool stores) {
  static const std::map<uint32_t, uint32_t> fields{
      {0x08, 0x11}, {0x09, 0x07}, {0x0D, 0x09}, {0x0E, 0x0A}, {0x0F, 0x0D},
      {0x10, 0x0C}, {0x12, 0x0E}, {0x13, 0x0F}, {0x17, 0x10}, {0x18, 0x06},
      {0x19, 0x05}, {0x1B, 0x03}, {0x1C, 0x04}, {0x28, 0x02}, {0x4F, 0x0B}};
  const uint32_t command = code & 0xFFU;
  const auto item = [](uint32_t field) { return 0x14190000 + (field << 8); };
  if (command == 0x0A) {  // the current: for the state, itself, and twice for the average times
    if (nth <= 2) {
      document->make_unreadable(item(nth == 1 ? 0x01 : 0x08));
    }
  } else if (command == 0x16) {
    document->make_unreadable(item(nth == 1 ? 0x01 : 0x12));
  } else if (command >= 0x24 && command < 0x28) {
    document->damage_text(item(0x02), command - 0x24, stores);
  } else {
    document->make_unreadable(item(fields.at(command)));
  }
}

void fail_port(Document* document, uint32_t code) {
  static const std::map<uint32_t, uint32_t> kinds{
      {0x22, 0x08}, {0x23, 0x09}, {0x24, 0x04}, {0x25, 0x02}, {0x27, 0x0B}};
  document->make_unreadable(0x14140001 + (kinds.at(code >> 16) << 8) + (code & 0xFU));
}

void keep_default_range(Document* document, uint32_t setting) {
  for (const uint32_t id : {0x14160710 + setting, 0x14160720 + setting}) {
    const Range range = Device_PIC::init_bound_map().at(id);
    document->edit(id, [&range](json_t* element) {
      json_real_set(json_object_get(element, "min"), range.at(MIN));
      json_real_set(json_object_get(element, "max"), range.at(MAX));
    });
  }
}

void remove_catalogue_item(Document* document, uint32_t code) {
  for (const RawMap& codes : {Device_PIC::init_kova_id_map(), Device_TRK7000::init_kova_id_map(),
                              Device_GSensor::init_kova_id_map()}) {
    const auto row = std::ranges::find(codes, code, &RawMap::value_type::second);
    if (row != codes.end()) {
      document->remove(kItem, row->first);
    }
  }
}

}  // namespace

JsonOwner expected_document(const std::vector<DeviceDouble::Call>& calls, bool stores) {
  Document document;
  const uint32_t code = calls.back().code;
  const auto nth = static_cast<int>(std::ranges::count(calls, code, &DeviceDouble::Call::code));
  for (const Probe& probe : kProbes) {
    if (probe.code == code && probe.nth == nth) {
      document.remove(probe.mask, probe.value);
    }
  }
  if (std::ranges::find(kProbes, code, &Probe::code) != kProbes.end() || code == 0x260007) {
    return document.take();  // an asking that is in no row costs nothing
  }
  if (code >= 0xB00000) {
    fail_battery_field(&document, code, nth, stores);
  } else if (code >= 0xA00000) {
    fail_module_field(&document, code, nth, stores);
  } else if (code >= 0x6B0000 && code < 0x6D0000) {
    keep_default_range(&document, (code & 0xFU) + 1);
  } else if (code < 0x400000) {
    fail_port(&document, code);
  } else {
    remove_catalogue_item(&document, code);
  }
  return document.take();
}

std::string text_with_repeated_word(std::string text, size_t index) {
  if (index == 0) {
    return "";
  }
  return text.replace(4 * index, 4, text, 4 * (index - 1), 4);
}
