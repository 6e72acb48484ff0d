// A host that loads the built plug-in and starts it. Prints the microseconds that loading took and
// the KiB of resident memory that the module has added once loaded and once started.
// Usage: kova_load_cost MODULE "in C"|"in C++". A host in C++ has the C++ runtime before.
#include <dlfcn.h>
#include <jansson.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "bench/instant_device.h"

namespace {

double microseconds_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

// The second number of statm is the resident pages.
long resident_kib() {
  static char text[256];
  std::FILE* statm = std::fopen("/proc/self/statm", "r");
  const char* line = statm != nullptr ? std::fgets(text, sizeof text, statm) : nullptr;
  const char* resident = line != nullptr ? std::strchr(line, ' ') : nullptr;
  if (resident == nullptr) {
    std::perror("/proc/self/statm");
    std::exit(EXIT_FAILURE);
  }
  std::fclose(statm);
  return std::strtol(resident, nullptr, 10) * (sysconf(_SC_PAGESIZE) / 1024);
}

[[noreturn]] void fail() {
  std::fprintf(stderr, "%s\n", dlerror());
  std::exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: kova_load_cost MODULE 'in C'|'in C++'\n", stderr);
    return EXIT_FAILURE;
  }
  if (std::strcmp(argv[2], "in C++") == 0 &&
      dlopen("libstdc++.so.6", RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    fail();
  }
  instant_device::become_machine(2, 8);
  json_t* target = json_object();
  resident_kib();

  const long before = resident_kib();
  const double started = microseconds_now();
  void* module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  const double load_time = microseconds_now() - started;
  if (module == nullptr) {
    fail();
  }
  const long loaded = resident_kib();
  const auto initialise = reinterpret_cast<std::uint32_t (*)()>(dlsym(module, "KovaIoTInitialize"));
  const auto get_document =
      reinterpret_cast<std::uint32_t (*)(json_t*)>(dlsym(module, "KovaIoTGetMDCapability"));
  if (initialise == nullptr || get_document == nullptr || initialise() != 0 ||
      get_document(target) != 0) {
    std::fputs("the module does not start\n", stderr);
    return EXIT_FAILURE;
  }
  std::printf("%.0f %ld %ld\n", load_time, loaded - before, resident_kib() - before);
  return EXIT_SUCCESS;
}
