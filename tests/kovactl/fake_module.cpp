// A module for kovactl's tests, which answers as real ones rarely do. What it plays is named by
// the environment variable FAKE_MODULE.
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "include/kova_iot.h"

namespace {

std::string_view scene() {
  const char* name = std::getenv("FAKE_MODULE");
  return name == nullptr ? std::string_view() : name;
}

json_t* element(const char* name, uint32_t id, const char* key, json_t* value) {
  return json_pack("{s:s, s:I, s:o, s:s}", "n", name, "id", static_cast<json_int_t>(id), key, value,
                   "asm", "rw");
}

}  // namespace

extern "C" {

uint32_t KovaIoTInitialize() {
  if (scene() == "no device") {
    return IOT_STATUS_NOT_FOUND;
  }
  return scene() == "memory ran out" ? IOT_STATUS_NOT_READY : IOT_STATUS_SUCCESS;
}

uint32_t KovaIoTUninitialize() {
  return IOT_STATUS_SUCCESS;
}

uint32_t KovaIoTGetMDCapability(json_t* target) {
  if (scene() == "no document") {
    return IOT_STATUS_NOT_READY;
  }
  json_t* elements = json_array();
  json_array_append_new(elements, element("X", 0x14150911, "v", json_real(0)));
  json_array_append_new(elements, element("Mode", 0x14150711, "bv", json_integer(0)));
  json_array_append_new(elements, element("Y", 0x14150912, "v", json_real(0)));
  json_array_append_new(elements, element("Dirty", 0x14180101, "sv", json_string("N/A")));
  json_array_append_new(elements, element("Idle", 0x14190E00, "sv", json_string("N/A")));
  json_array_append_new(elements, element("Red\x1b[31m \"\\\n", 0x14160650, "sv", json_string("")));
  json_array_append_new(elements, json_pack("{s:s, s:s}", "n", "no ID", "sv", "x"));
  json_array_append_new(elements, element("wide", 0x14160602, "unknown", json_integer(1)));
  json_array_append_new(elements, json_null());
  json_object_set_new(target, "Fake",
                      json_pack("{s:i, s:s, s:{s:s, s:s, s:o}}", "id", 1, "bn", "Fake", "Package",
                                "bn", "Package", "bu", "unit", "e", elements));
  json_object_set_new(target, "not a family", json_integer(1));
  return IOT_STATUS_SUCCESS;
}

uint32_t KovaIoTGetMDValue(uint32_t id, json_t* value) {
  static int reads = 0;
  if (id == 0x14150711 && (scene() == "hangs" || (scene() == "hangs later" && ++reads == 3))) {
    for (;;) {
      std::this_thread::sleep_for(std::chrono::hours(1));
    }
  }
  switch (id) {
    case 0x14150911:  // filled, and yet a failure is reported
      json_real_set(value, -0.5);
      return IOT_STATUS_READ_FAILED;
    case 0x14150711:
      json_integer_set(value, 0);
      return IOT_STATUS_READ_FAILED;
    case 0x14150912:  // a real failure
      return IOT_STATUS_READ_FAILED;
    case 0x14190E00:
      return IOT_STATUS_NOT_FOUND;
    case 0x14160650:
      json_string_set(value, "a\x1b[2J\tb");
      return IOT_STATUS_SUCCESS;
    case 0x14160746:  // not in the document: takes a real only
      json_real_set(value, 9.5);
      return IOT_STATUS_SUCCESS;
    case 0x14140099:
    case 0x14180101:  // as a text that is not UTF-8: success, and nothing filled in
      return IOT_STATUS_SUCCESS;
    default:
      return IOT_STATUS_NOT_READY;
  }
}

uint32_t KovaIoTSetMDValue(uint32_t, json_t*) {
  return 17;
}
uint32_t KovaIoTSetMDEventHandler(KovaIoTEventHandler) {
  return IOT_STATUS_SUCCESS;
}
uint32_t KovaIoTGetModuleID() {
  return scene() == "another module" ? 21 : KOVA_IOT_MODULE_ID;
}
}
