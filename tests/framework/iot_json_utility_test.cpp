// The JSON writer: shapes, refusals, and who owns what afterwards (LeakSanitizer checks the rest).
#include "framework/iot_json_utility.h"

#include <gtest/gtest.h>

#include <functional>

#include "framework/element.h"
#include "framework/json_owner.h"

namespace {

std::string dump(const json_t* json) {
  char* text = json_dumps(json, JSON_COMPACT | JSON_ENCODE_ANY);
  std::string copy = text != nullptr ? text : "(null)";
  free(text);
  return copy;
}

JsonOwner parse(const char* text) {
  return JsonOwner(json_loads(text, JSON_DECODE_ANY, nullptr));
}

TEST(IoTJsonUtility, TypedElementsKeepTheKeyOrderAndTheirValueKey) {
  json_t* element = nullptr;
  const auto expect = [&](Status status, const char* text) {
    EXPECT_EQ(status, IOT_STATUS_SUCCESS);
    const JsonOwner owner(element);
    EXPECT_EQ(dump(element), text);
  };
  constexpr unsigned int kId = 0x14140B01;
  expect(IoTJsonUtility::create_json_element("N", kId, true, "rw", "checkbox", &element),
         R"({"n":"N","id":336857857,"bv":1,"asm":"rw","ui":"checkbox"})");
  expect(IoTJsonUtility::create_json_element("N", kId, -1, "r", "label", &element),
         R"({"n":"N","id":336857857,"v":-1,"asm":"r","ui":"label"})");
  expect(IoTJsonUtility::create_json_element("N", kId, 0.5, "r", "label", &element),
         R"({"n":"N","id":336857857,"v":0.5,"asm":"r","ui":"label"})");
  // A NUL ends the published text; a literal is text, not a boolean.
  expect(
      IoTJsonUtility::create_json_element("N", kId, std::string("a\0b", 3), "w", "label", &element),
      R"({"n":"N","id":336857857,"sv":"a","asm":"w","ui":"label"})");
  expect(IoTJsonUtility::create_json_element("N", kId, "text", "w", "label", &element),
         R"({"n":"N","id":336857857,"sv":"text","asm":"w","ui":"label"})");
}

TEST(IoTJsonUtility, WhatJanssonRefusesMakesNoElement) {
  json_t* element = reinterpret_cast<json_t*>(&element);
  EXPECT_EQ(IoTJsonUtility::create_json_element("N", 1, std::string("\xff"), "r", "l", &element),
            IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(element, nullptr);
  EXPECT_EQ(IoTJsonUtility::create_json_element("\xff", 1, 1, "r", "label", &element),
            IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(IoTJsonUtility::create_json_element("N", 1, "v", nullptr, "r", "label"), nullptr);
}

TEST(IoTJsonUtility, KeysAreAddedOnlyToAnObjectThatHasSome) {
  const JsonOwner empty(json_object());
  EXPECT_EQ(IoTJsonUtility::update_json_object(empty.get(), "u", "mA"), IOT_STATUS_JSON_ERROR);
  const JsonOwner kept(json_string("v"));  // a refusal takes over no reference
  EXPECT_EQ(IoTJsonUtility::extend_json_object(empty.get(), "{s:o}", "k", kept.get()),
            IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(json_object_size(empty.get()), 0U);
  EXPECT_EQ(IoTJsonUtility::update_json_object(nullptr, "u", 1), IOT_STATUS_JSON_ERROR);

  const JsonOwner object = parse(R"({"u":"V"})");
  EXPECT_EQ(IoTJsonUtility::update_json_object(object.get(), "u", "mA"), IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::update_json_object(object.get(), "min", 1.0), IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::update_json_object(object.get(), "i", -3), IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::update_json_object(object.get(), "b", true), IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::extend_json_object(object.get(), "{s:i, s:s}", "x", 7, "i", "new"),
            IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::update_json_object(object.get(), "bad", "\xff"), IOT_STATUS_NOT_READY);
  EXPECT_EQ(dump(object.get()), R"({"u":"mA","min":1.0,"i":"new","b":1,"x":7})");
  EXPECT_EQ(IoTJsonUtility::delete_json_key(object.get(), "x"), IOT_STATUS_SUCCESS);
  EXPECT_EQ(IoTJsonUtility::delete_json_key(object.get(), "x"), IOT_STATUS_NOT_READY);
}

TEST(IoTJsonUtility, FreeingSetsThePointerToNull) {
  json_t* value = nullptr;
  EXPECT_EQ(IoTJsonUtility::free_json_obj(&value), IOT_STATUS_SUCCESS);
  value = json_pack("{s:i}", "a", 1);
  EXPECT_EQ(IoTJsonUtility::free_json_obj(&value), IOT_STATUS_SUCCESS);
  EXPECT_EQ(value, nullptr);
  value = json_pack("{s:i}", "a", 1);
  const JsonOwner another_holder(json_incref(value));  // keeps the object, but empty
  EXPECT_EQ(IoTJsonUtility::free_json_obj(&value), IOT_STATUS_SUCCESS);
  EXPECT_EQ(json_object_size(another_holder.get()), 0U);
  value = json_array();
  EXPECT_EQ(IoTJsonUtility::free_json_obj(&value), IOT_STATUS_NOT_READY);
  EXPECT_EQ(value, nullptr);
}

TEST(IoTJsonUtility, PackagesOfOneFamilyAndTheDocument) {
  json_t* package = nullptr;
  json_t* stray = json_array();  // skipped, and stays the caller's
  const JsonOwner stray_owner(stray);
  ASSERT_EQ(IoTJsonUtility::create_json_ipso_package({json_pack("{s:i}", "v", 1), nullptr, stray},
                                                     "Temperature", "Cel", 1700000000, 1, 0x20100,
                                                     &package),
            IOT_STATUS_SUCCESS);
  EXPECT_EQ(dump(package), R"({"bn":"Temperature","bu":"Cel","bt":1700000000,"ver":1,)"
                           R"("id":131328,"e":[{"v":1}]})");
  json_t* function = nullptr;
  json_t* later = json_pack("{s:s, s:i}", "bn", "Temperature", "id", 2);
  ASSERT_EQ(IoTJsonUtility::create_json_func_package({package, later, nullptr}, "Hardware Monitor",
                                                     0x20000, &function),
            IOT_STATUS_SUCCESS);
  const JsonOwner function_owner(function);
  EXPECT_EQ(dump(function), R"({"Hardware Monitor":{"id":131072,"bn":"Hardware Monitor",)"
                            R"("Temperature":{"bn":"Temperature","id":2}}})");
  const JsonOwner same_name = parse(R"({"Hardware Monitor":{"id":0},"PoE":{}})");
  json_t* document = nullptr;
  ASSERT_EQ(IoTJsonUtility::create_json_capability_package({function, nullptr, same_name.get()},
                                                           &document),
            IOT_STATUS_SUCCESS);
  const JsonOwner document_owner(document);
  EXPECT_EQ(
      json_integer_value(json_object_get(json_object_get(document, "Hardware Monitor"), "id")),
      131072);
  EXPECT_EQ(json_object_size(document), 2U);
}

TEST(IoTJsonUtility, NothingToPackIsAnError) {
  json_t* out = nullptr;
  const JsonOwner array(json_array());
  const auto ipso = [&](const std::vector<json_t*>& elements) {
    return IoTJsonUtility::create_json_ipso_package(elements, "n", "", 0, 1, 1, &out);
  };
  EXPECT_EQ(ipso({}), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(ipso({nullptr, array.get()}), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(IoTJsonUtility::create_json_func_package({}, "n", 1, &out), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(IoTJsonUtility::create_json_capability_package({}, &out), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(IoTJsonUtility::create_json_capability_package({array.get()}, &out),
            IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(out, nullptr);
  // A non-empty array left in `out` is released first.
  const std::function<Status()> builders[] = {
      [&] { return ipso({}); },
      [&] { return IoTJsonUtility::create_json_func_package({}, "n", 1, &out); },
      [&] { return IoTJsonUtility::create_json_capability_package({}, &out); }};
  for (const auto& build : builders) {
    out = json_pack("[i]", 1);
    EXPECT_EQ(build(), IOT_STATUS_JSON_ERROR);
    EXPECT_EQ(out, nullptr);
  }
}

TEST(Element, EndsWithWhatHasContentInOrder) {
  json_t* element = json_pack("{s:i}", "v", 1);
  EXPECT_EQ(
      end_element(&element,
                  {.options = "0|1", .range = {{MAX, 2.5}}, .description = "0=A|1=B", .unit = "V"}),
      IOT_STATUS_SUCCESS);
  EXPECT_EQ(dump(element), R"({"v":1,"uiop":"0|1","min":0.0,"max":2.5,"desc":"0=A|1=B","u":"V"})");
  IoTJsonUtility::free_json_obj(&element);

  element = json_object();
  EXPECT_EQ(end_element(&element, {.unit = "V"}), IOT_STATUS_JSON_ERROR);
  EXPECT_EQ(element, nullptr);
}

TEST(Element, WhatThrowsOnTheWayFreesTheElement) {
  json_t* element = nullptr;
  EXPECT_EQ(build_element(&element,
                          [&]() -> Status {
                            element = json_pack("{s:i}", "v", 1);
                            throw std::bad_alloc();
                          }),
            IOT_STATUS_NOT_READY);
  EXPECT_EQ(element, nullptr);
}

}  // namespace
