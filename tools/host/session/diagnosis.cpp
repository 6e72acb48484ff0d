// Why there is no device: what becomes of the device library step by step.
#include "tools/host/session/diagnosis.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tools/host/model/status_text.h"
#include "tools/host/system/loaded_library.h"

namespace kova_host {
namespace {

// Opens `file`, or the library that is in the process under that name: the simulator, say.
void* open_library(LibraryAttempt& attempt) {
  std::error_code error;
  attempt.exists = std::filesystem::exists(attempt.file, error);
  if (attempt.exists && !std::filesystem::is_regular_file(attempt.file, error)) {
    // To open a FIFO, if only to look at it, would last until somebody writes to it.
    attempt.error = attempt.file + ": no regular file";
    return nullptr;
  }
  void* library = dlopen(attempt.file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr && attempt.exists) {
    library = dlopen(attempt.file.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const char* reason = library == nullptr ? dlerror() : nullptr;
    attempt.error = reason == nullptr ? "" : reason;
  }
  return library;
}

void ask_families(uint32_t (*read)(uint32_t, uint32_t*), DeviceDiagnosis& diagnosis) {
  for (const FamilyData& family : item_data()) {
    FamilyPresence presence;
    presence.family = &family;
    presence.answer.status = read(family.presence_code, &presence.answer.word);
    presence.present =
        presence.answer.status == 0 && (family.present_if_readable || presence.answer.word != 0);
    diagnosis.families.push_back(presence);
  }
}

// "every presence read fails: SDRAM 0x5, PoE 0x5"
std::string failing_families(const DeviceDiagnosis& diagnosis) {
  std::vector<std::string> failures;
  for (const FamilyPresence& presence : diagnosis.families) {
    if (presence.answer.status != 0) {
      failures.push_back(
          fmt::format("{} {}", presence.family->name, status_code(presence.answer.status)));
    }
  }
  return fmt::format("{}", fmt::join(failures, ", "));
}

}  // namespace

bool DeviceDiagnosis::any_present() const {
  return std::any_of(families.begin(), families.end(),
                     [](const FamilyPresence& presence) { return presence.present; });
}

DeviceDiagnosis diagnose_device(std::span<const char* const> files) {
  DeviceDiagnosis diagnosis;
  for (const char* file : files) {
    diagnosis.attempts.push_back({file, false, ""});
    LibraryAttempt& attempt = diagnosis.attempts.back();
    void* library = open_library(attempt);
    if (library == nullptr) {
      continue;
    }
    const std::string loaded = file_of_device_library(library);
    diagnosis.library = loaded.empty() ? attempt.file : loaded;
    diagnosis.has_write_entry = dlsym(library, kWriteEntry) != nullptr;
    if (void* read = dlsym(library, kReadEntry)) {
      diagnosis.has_read_entry = true;
      ask_families(reinterpret_cast<uint32_t (*)(uint32_t, uint32_t*)>(read), diagnosis);
    }
    break;
  }
  return diagnosis;
}

std::string cause_of_no_device(const DeviceDiagnosis& diagnosis) {
  if (diagnosis.library.empty()) {
    std::vector<std::string> missing;
    std::vector<std::string> refused;
    for (const LibraryAttempt& attempt : diagnosis.attempts) {
      if (attempt.exists) {
        refused.push_back("cannot load " + attempt.error);  // which begins with the file
      } else {
        missing.push_back(attempt.file);
      }
    }
    return refused.empty() ? fmt::format("neither {} is there", fmt::join(missing, " nor "))
                           : fmt::format("{}", fmt::join(refused, "; "));
  }
  if (!diagnosis.has_read_entry) {
    return fmt::format("{} has no entry {}", diagnosis.library, kReadEntry);
  }
  const std::string failing = failing_families(diagnosis);
  const bool all_fail =
      std::none_of(diagnosis.families.begin(), diagnosis.families.end(),
                   [](const FamilyPresence& presence) { return presence.answer.status == 0; });
  if (all_fail) {
    return fmt::format("{} fails every presence read: {}", diagnosis.library, failing);
  }
  return fmt::format("{} has no device family present{}", diagnosis.library,
                     failing.empty() ? "" : fmt::format(" (reads that failed: {})", failing));
}

std::string presence_text(const FamilyPresence& presence) {
  const uint32_t code = presence.family->presence_code;
  if (presence.answer.status != 0) {
    return fmt::format("code 0x{:X} cannot be read ({})", code,
                       status_code(presence.answer.status));
  }
  return fmt::format("code 0x{:X} reads {}", code, presence.answer.word);
}

}  // namespace kova_host
