// Building, extending and releasing the JSON shapes that the module publishes.
#include "framework/iot_json_utility.h"

#include <cstdarg>

#include "framework/json_owner.h"

namespace {

// Sets a key whose value's reference is taken over. An element starts with all its first keys, so
// an empty object is one that could not be made, and it stays empty.
Status set_key(json_t* object, const std::string& key, json_t* value) {
  if (json_object_size(object) == 0) {
    json_decref(value);
    return IOT_STATUS_JSON_ERROR;
  }
  return json_object_set_new(object, key.c_str(), value) == 0 ? IOT_STATUS_SUCCESS
                                                              : IOT_STATUS_NOT_READY;
}

void release_non_empty_array(json_t** out) {
  if (json_array_size(*out) != 0) {
    IoTJsonUtility::free_json_obj(out);
  }
}

// 0 when the object has keys; otherwise releases it.
Status keep_unless_empty(json_t** object) {
  if (json_object_size(*object) != 0) {
    return IOT_STATUS_SUCCESS;
  }
  IoTJsonUtility::free_json_obj(object);
  return IOT_STATUS_JSON_ERROR;
}

}  // namespace

json_t* IoTJsonUtility::create_json_element(const std::string& name, unsigned int id,
                                            const std::string& value_key, json_t* value,
                                            const std::string& access, const std::string& ui) {
  JsonOwner owned_value(value);
  JsonOwner element(json_object());
  const bool complete =
      value != nullptr && json_object_set_new(element.get(), "n", json_string(name.c_str())) == 0 &&
      json_object_set_new(element.get(), "id", json_integer(static_cast<int>(id))) == 0 &&
      json_object_set_new(element.get(), value_key.c_str(), owned_value.release()) == 0 &&
      json_object_set_new(element.get(), "asm", json_string(access.c_str())) == 0 &&
      json_object_set_new(element.get(), "ui", json_string(ui.c_str())) == 0;
  return complete ? element.release() : nullptr;
}

Status IoTJsonUtility::hand_over(json_t* element, json_t** out) {
  *out = element;
  return element != nullptr ? IOT_STATUS_SUCCESS : IOT_STATUS_JSON_ERROR;
}

Status IoTJsonUtility::create_json_element(const std::string& name, unsigned int id, int value,
                                           const std::string& access, const std::string& ui,
                                           json_t** out) {
  return hand_over(create_json_element(name, id, "v", json_integer(value), access, ui), out);
}

Status IoTJsonUtility::create_json_element(const std::string& name, unsigned int id, double value,
                                           const std::string& access, const std::string& ui,
                                           json_t** out) {
  return hand_over(create_json_element(name, id, "v", json_real(value), access, ui), out);
}

Status IoTJsonUtility::create_json_element(const std::string& name, unsigned int id,
                                           const std::string& value, const std::string& access,
                                           const std::string& ui, json_t** out) {
  return hand_over(create_json_element(name, id, "sv", json_string(value.c_str()), access, ui),
                   out);
}

Status IoTJsonUtility::update_json_object(json_t* object, const std::string& key,
                                          const std::string& value) {
  return set_key(object, key, json_string(value.c_str()));
}

Status IoTJsonUtility::update_json_object(json_t* object, const std::string& key, double value) {
  return set_key(object, key, json_real(value));
}

Status IoTJsonUtility::update_json_object(json_t* object, const std::string& key, int value) {
  return set_key(object, key, json_integer(value));
}

Status IoTJsonUtility::extend_json_object(json_t* object, const char* format, ...) {
  if (json_object_size(object) == 0) {
    return IOT_STATUS_JSON_ERROR;
  }
  va_list arguments;
  va_start(arguments, format);
  const JsonOwner addition(json_vpack_ex(nullptr, 0, format, arguments));
  va_end(arguments);
  return json_object_update(object, addition.get()) == 0 ? IOT_STATUS_SUCCESS
                                                         : IOT_STATUS_NOT_READY;
}

Status IoTJsonUtility::delete_json_key(json_t* object, const std::string& key) {
  return json_object_del(object, key.c_str()) == 0 ? IOT_STATUS_SUCCESS : IOT_STATUS_NOT_READY;
}

Status IoTJsonUtility::free_json_obj(json_t** object) {
  if (*object == nullptr) {
    return IOT_STATUS_SUCCESS;
  }
  const int cleared = json_object_clear(*object);
  json_decref(*object);
  *object = nullptr;
  return cleared == 0 ? IOT_STATUS_SUCCESS : IOT_STATUS_NOT_READY;
}

Status IoTJsonUtility::create_json_ipso_package(const std::vector<json_t*>& elements,
                                                const std::string& bn, const std::string& bu,
                                                unsigned int bt, int ver, unsigned int id,
                                                json_t** out) {
  release_non_empty_array(out);
  if (elements.empty()) {
    return IOT_STATUS_JSON_ERROR;
  }
  JsonOwner array(json_array());
  for (json_t* element : elements) {
    if (json_is_object(element)) {
      json_array_append_new(array.get(), element);
    }
  }
  if (json_array_size(array.get()) == 0) {
    return IOT_STATUS_JSON_ERROR;
  }
  *out =
      json_pack("{s:s, s:s, s:i, s:i, s:i, s:o}", "bn", bn.c_str(), "bu", bu.c_str(), "bt",
                static_cast<int>(bt), "ver", ver, "id", static_cast<int>(id), "e", array.release());
  return keep_unless_empty(out);
}

Status IoTJsonUtility::create_json_func_package(const std::vector<json_t*>& packages,
                                                const std::string& name, unsigned int id,
                                                json_t** out) {
  release_non_empty_array(out);
  if (packages.empty()) {
    return IOT_STATUS_JSON_ERROR;
  }
  *out = json_object();
  json_t* inner = json_pack("{s:I, s:s}", "id", json_int_t{id}, "bn", name.c_str());
  for (json_t* package : packages) {
    if (json_is_object(package)) {
      const char* bn = json_string_value(json_object_get(package, "bn"));
      json_object_set_new(inner, bn, package);
    }
  }
  json_object_set_new(*out, name.c_str(), inner);
  return keep_unless_empty(out);
}

Status IoTJsonUtility::create_json_capability_package(const std::vector<json_t*>& func_packages,
                                                      json_t** out) {
  release_non_empty_array(out);
  if (func_packages.empty()) {
    return IOT_STATUS_JSON_ERROR;
  }
  *out = json_object();
  for (json_t* package : func_packages) {
    if (json_is_object(package)) {
      json_object_update_missing(*out, package);
    }
  }
  return keep_unless_empty(out);
}
