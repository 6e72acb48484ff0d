// KovaDevice: the one object that ties the module together. It loads the device library, owns the
// six families' adapters, routes reads and writes to them, and owns the capability document.
#pragma once

#include <jansson.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "framework/json_owner.h"
#include "framework/status.h"
#include "module/families.h"

class KovaDevice {
 public:
  static const std::string CONST_HWM;   ///< name of the package that mirrors the add-on board
  static const std::string CONST_TEMP;  ///< and of its two groups
  static const std::string CONST_FAN;

  /// Loads the device library, hands its entries to the families and creates the adapters, some of
  /// which read the device. Without a library the adapters report themselves absent.
  KovaDevice();
  /// Empties and releases the document, whoever else holds it.
  ~KovaDevice();
  KovaDevice(const KovaDevice&) = delete;
  KovaDevice& operator=(const KovaDevice&) = delete;

  /// True at the first family that reports itself present; the later ones are not asked.
  bool is_available();

  /// Routes by the family of `id`; the adapter's result, or IOT_STATUS_UNSUPPORTED.
  Status get_value_by_id(unsigned int id, json_t* value);

  /// Checks both library entries (IOT_STATUS_NOT_READY) and the value's type
  /// (IOT_STATUS_INVALID_PARAMETER) before routing; read-only families are IOT_STATUS_UNSUPPORTED.
  Status set_value_by_id(unsigned int id, json_t* value);

  /// Makes the element of an item; `data` points at an unsigned int, a byte (PoE) or a std::string,
  /// as the item's family says. Returns the caller's new reference or null; `*status` is always
  /// written.
  json_t* create_json_element_by_id(unsigned int id, void* data, unsigned int* status);

  /// Appends the element of an item, if it can be made; the status of making it.
  Status append_json_to_vector(std::vector<json_t*>* list, unsigned int id, void* data);

  /// The elements of a group, in ascending item order, as new references. With a base, the item ID
  /// is the base plus the map's key.
  std::vector<json_t*> create_json_elements_v(RawMap values);
  std::vector<json_t*> create_json_elements_v(StringMap texts);
  std::vector<json_t*> create_json_elements_v(unsigned int base, StringMap texts);

  /// Builds the document, then returns it (or null); the manager keeps the reference.
  json_t* get_capability(unsigned int* status);

  /// The document as get_capability built it, or null.
  [[nodiscard]] json_t* capability() const { return capability_.get(); }

  /// Builds the document from every family that is present. IOT_STATUS_JSON_ERROR when there is
  /// none, or nothing to put in it, and IOT_STATUS_NOT_READY when memory runs out: the document
  /// then stays as it was.
  Status update_capability();

  using PackageList = std::vector<json_t*>;

  /// One IPSO package a group, whose reference is appended to `list` when it could be built.
  /// IOT_STATUS_READ_FAILED when nothing of the group could be read, IOT_STATUS_JSON_ERROR when no
  /// element could be made. The add-on board's fans and temperatures are put into both lists.
  Status update_sdram_info_IPSO_pkgs(PackageList* list, unsigned int module_index);
  Status update_sbaterry_info_IPSO_pkgs(PackageList* list);
  Status update_trk7k_info_IPSO_pkgs(PackageList* list);
  Status update_trk7k_fans_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list);
  Status update_trk7k_temp_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list);
  Status update_poe_IPSO_pkgs(PackageList* list);
  Status update_pic_info_IPSO_pkgs(PackageList* list);
  Status update_pic_defaults_IPSO_pkgs(PackageList* list);
  Status update_pic_settings_IPSO_pkgs(PackageList* list);
  Status update_pic_real_status_IPSO_pkgs(PackageList* list);
  Status update_gsensor_data_IPSO_pkgs(PackageList* list);
  Status update_gsensor_settings_IPSO_pkgs(PackageList* list);

  /// The steps that all groups share; `bn` and `bu` are the package's name and unit. The second
  /// list may be null.
  Status update_IPSO_pkgs(RawMap values, PackageList* list, unsigned int id, const std::string& bn,
                          const std::string& bu);
  Status update_IPSO_pkgs(RawMap values, PackageList* list, unsigned int id, const std::string& bn,
                          const std::string& bu, PackageList* second_list, unsigned int second_id,
                          const std::string& second_bn, const std::string& second_bu);
  Status update_IPSO_pkgs(StringMap texts, PackageList* list, unsigned int id,
                          const std::string& bn, const std::string& bu = "");
  Status update_IPSO_pkgs(unsigned int base, StringMap texts, PackageList* list, unsigned int id,
                          const std::string& bn, const std::string& bu);

 private:
  template <typename Device>
  Device& adapter() {
    return *std::get<std::unique_ptr<Device>>(adapters_);
  }

  // The one route: what `call` answers of the adapter whose family the ID is of, or
  // IOT_STATUS_UNSUPPORTED.
  template <typename Call>
  Status route(unsigned int id, const Call& call);

  // The function packages of a family that is present.
  template <typename Device>
  void add_family(JsonList* families);

  // The IPSO packages of a family, in the document's order; the second list is the Hardware
  // Monitor's. There is one specialisation a family, in capability_document.cpp.
  template <typename Device>
  void update_packages(PackageList* list, PackageList* hwm_list);

  // A group under its heading's name and its sheet's unit.
  template <typename Device, typename Values>
  Status update_group(unsigned int heading, Values values, PackageList* list);
  Status update_board_group(unsigned int heading, RawMap values, PackageList* trk_list,
                            PackageList* hwm_list, const std::string& hwm_name);

  template <typename Value>
  std::vector<json_t*> create_elements(unsigned int base, std::map<unsigned int, Value> values);

  template <typename Device>
  using Owner = std::unique_ptr<Device>;

  void* library_ = nullptr;  // never closed: the library stays mapped for the life of the process
  ReadEntry get_entry_ = nullptr;
  WriteEntry set_entry_ = nullptr;
  families::Each<Owner> adapters_;
  JsonOwner capability_;
};
