// Why there is no device: what becomes of the device library step by step.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/host/model/item_data.h"
#include "tools/host/session/direct_device.h"

namespace kova_host {

// One place where the device library was looked for.
struct LibraryAttempt {
  std::string file;
  bool exists = false;
  std::string error;  // the dynamic loader's words for a file that exists; "" if it was loaded
};

struct FamilyPresence {
  const FamilyData* family = nullptr;
  DeviceAnswer answer;  // to a read of the family's presence code
  bool present = false;
};

struct DeviceDiagnosis {
  std::vector<LibraryAttempt> attempts;  // up to the first that was loaded
  std::string library;                   // the file that answers; "" if none could be loaded
  bool has_read_entry = false;
  bool has_write_entry = false;
  std::vector<FamilyPresence> families;  // empty without a read entry

  bool any_present() const;
};

// Looks for the device library in `files` as the module does, and asks it which families are
// there. After a failed start of the module, or beside a running one between two of its calls.
DeviceDiagnosis diagnose_device(std::span<const char* const> files = kDeviceLibraryFiles);

// The cause in one line that names the files: "neither A nor B is there".
std::string cause_of_no_device(const DeviceDiagnosis& diagnosis);

// "code 0x200000 reads 1", "code 0x200000 cannot be read (0x5)"
std::string presence_text(const FamilyPresence& presence);

}  // namespace kova_host
