// IoTJsonUtility: the one writer of the JSON that the module publishes: elements, the IPSO
// packages that group them, function packages (one per family) and the capability document.
#pragma once

#include <jansson.h>

#include <concepts>
#include <string>
#include <vector>

#include "framework/status.h"

/// Stateless; all operations are class-wide. None throws on a jansson failure.
///
/// An element's keys in order: "n" name, "id" item ID, one of "v" (number), "bv" (0 or 1) and "sv"
/// (text), "asm" access mode ("r", "rw", "w"), "ui" ("label", "checkbox", "combobox", "textbox").
class IoTJsonUtility {
 public:
  /// Makes an element around `value`, whose reference is taken over in every case. Returns the
  /// caller's new reference, or null when `value` is null or jansson fails: never half an element.
  static json_t* create_json_element(const std::string& name, unsigned int id,
                                     const std::string& value_key, json_t* value,
                                     const std::string& access, const std::string& ui);

  /// Typed elements: boolean "bv", integer "v", real "v", text "sv" (up to its first NUL; text
  /// that is not UTF-8 makes no element). `*out` receives the caller's reference or null.
  /// IOT_STATUS_JSON_ERROR when no element was made.
  template <std::same_as<bool> Bool>
  static Status create_json_element(const std::string& name, unsigned int id, Bool value,
                                    const std::string& access, const std::string& ui,
                                    json_t** out) {
    return hand_over(create_json_element(name, id, "bv", json_integer(value ? 1 : 0), access, ui),
                     out);
  }
  static Status create_json_element(const std::string& name, unsigned int id, int value,
                                    const std::string& access, const std::string& ui, json_t** out);
  static Status create_json_element(const std::string& name, unsigned int id, double value,
                                    const std::string& access, const std::string& ui, json_t** out);
  static Status create_json_element(const std::string& name, unsigned int id,
                                    const std::string& value, const std::string& access,
                                    const std::string& ui, json_t** out);

  /// Sets a key of an object that already holds keys. IOT_STATUS_JSON_ERROR for an empty object,
  /// which stays empty; IOT_STATUS_NOT_READY when jansson refuses. (bool is a template so that a
  /// string literal is taken as text.)
  static Status update_json_object(json_t* object, const std::string& key,
                                   const std::string& value);
  static Status update_json_object(json_t* object, const std::string& key, double value);
  static Status update_json_object(json_t* object, const std::string& key, int value);
  template <std::same_as<bool> Bool>
  static Status update_json_object(json_t* object, const std::string& key, Bool value) {
    return update_json_object(object, key, value ? 1 : 0);
  }

  /// Packs a temporary object after `format` (jansson's pack language; references given as "o" are
  /// taken over) and sets its keys into `object`, with the results of update_json_object. Does
  /// nothing to an empty object: references given as "o" then stay the caller's.
  static Status extend_json_object(json_t* object, const char* format, ...);

  /// Deletes a key; IOT_STATUS_NOT_READY when there is none.
  static Status delete_json_key(json_t* object, const std::string& key);

  /// Empties the object, drops one reference and sets the pointer to null. A null pointer is
  /// success; a value that is no object is released all the same, with IOT_STATUS_NOT_READY.
  static Status free_json_obj(json_t** object);

  /// Groups elements under base name `bn`, base unit `bu`, base time `bt` (Unix seconds), package
  /// version and group ID. Takes over the references of the entries that are JSON objects, unless
  /// the list is empty; other entries are skipped and stay the caller's. IOT_STATUS_JSON_ERROR
  /// when nothing is left to group or jansson fails. A non-empty array in `*out` is released.
  static Status create_json_ipso_package(const std::vector<json_t*>& elements,
                                         const std::string& bn, const std::string& bu,
                                         unsigned int bt, int ver, unsigned int id, json_t** out);

  /// Wraps a family's IPSO packages, each under its "bn" (the later of two alike stays), in an
  /// object whose one key is the family's name. References and `*out` as above.
  static Status create_json_func_package(const std::vector<json_t*>& packages,
                                         const std::string& name, unsigned int id, json_t** out);

  /// Merges function packages into one document; the first family of a name stays. The packages
  /// remain the caller's: the document holds its own references to their contents.
  static Status create_json_capability_package(const std::vector<json_t*>& func_packages,
                                               json_t** out);

 private:
  static Status hand_over(json_t* element, json_t** out);
};
