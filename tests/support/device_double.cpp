// The in-memory device library.
#include "tests/support/device_double.h"

#include <gtest/gtest.h>

#include "module/families.h"
#include "tests/support/rows.h"

namespace {

constexpr std::uint32_t kFailed = 1;
constexpr std::uint32_t kGarbage = 0xA5A5A5A5;

DeviceDouble* living = nullptr;

void connect_families(ReadEntry get, WriteEntry set) {
  families::hand_out(get);
  families::hand_out(set);
}

}  // namespace

void PrintTo(const DeviceDouble::Call& call, std::ostream* out) {
  *out << (call.kind == DeviceDouble::Call::kRead ? "read " : "write ") << std::hex
       << std::uppercase << call.code << std::dec;
  if (call.kind == DeviceDouble::Call::kWrite) {
    *out << " = " << call.value;
  }
}

DeviceDouble::DeviceDouble() {
  living = this;
  connect_families(&get, &set);
}

DeviceDouble::~DeviceDouble() {
  living = nullptr;
  connect_families(nullptr, nullptr);
}

std::uint32_t DeviceDouble::get(std::uint32_t code, std::uint32_t* value) {
  return living != nullptr ? living->read(code, value) : kFailed;
}

std::uint32_t DeviceDouble::set(std::uint32_t code, std::uint32_t value) {
  return living != nullptr ? living->write(code, value) : kFailed;
}

bool DeviceDouble::fails_now() {
  return failing_call != 0 && --failing_call == 0;
}

std::uint32_t DeviceDouble::read(std::uint32_t code, std::uint32_t* value) {
  calls.push_back({.kind = Call::kRead, .code = code});
  if (fails_now()) {
    if (failing_call_stores) {
      *value = kGarbage;
    }
    return kFailed;
  }
  if (const auto failing = read_status.find(code); failing != read_status.end()) {
    if (const auto stored = stored_on_failure.find(code); stored != stored_on_failure.end()) {
      *value = stored->second;
    }
    return failing->second;
  }
  if (const auto known = values.find(code); known != values.end()) {
    *value = known->second;
    return 0;
  }
  if (!lenient) {
    ADD_FAILURE()
        << "unexpected read of code 0x" << std::hex << code << ", " << owner_of(code)
        << ": does the machine of this test have it? The reference machine's words are in "
           "tests/data/reference_machine.json";
  }
  return kFailed;
}

std::uint32_t DeviceDouble::write(std::uint32_t code, std::uint32_t value) {
  calls.push_back({.kind = Call::kWrite, .code = code, .value = value});
  if (fails_now()) {
    return kFailed;
  }
  if (const auto known = write_status.find(code); known != write_status.end()) {
    return known->second;
  }
  if (!lenient) {
    ADD_FAILURE() << "unexpected write of code 0x" << std::hex << code;
  }
  return kFailed;
}

std::vector<std::uint32_t> DeviceDouble::codes_read() const {
  std::vector<std::uint32_t> codes;
  for (const Call& call : calls) {
    if (call.kind == Call::kRead) {
      codes.push_back(call.code);
    }
  }
  return codes;
}
