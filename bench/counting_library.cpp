// A device library that answers at once: code 0 always the same, code 1 a new word each time.
#include <cstdint>

extern "C" __attribute__((visibility("default"))) std::uint32_t KovaDeviceGetValue(
    std::uint32_t code, std::uint32_t* value) {
  static std::uint32_t count = 0;
  *value = code == 0 ? 7 : ++count;
  return 0;
}

extern "C" __attribute__((visibility("default"))) std::uint32_t KovaDeviceSetValue(
    std::uint32_t /*code*/, std::uint32_t /*value*/) {
  return 0;
}
