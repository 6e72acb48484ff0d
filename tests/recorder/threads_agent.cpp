// An agent whose four threads call the device library at once, 500 times each, and whose children,
// forked meanwhile, call it too.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

int main() {
  void* library = dlopen("/usr/lib/libKOVADevice.so", RTLD_NOW);  // by its SONAME
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const auto read =
      reinterpret_cast<uint32_t (*)(uint32_t, uint32_t*)>(dlsym(library, "KovaDeviceGetValue"));
  const auto write =
      reinterpret_cast<uint32_t (*)(uint32_t, uint32_t)>(dlsym(library, "KovaDeviceSetValue"));
  static constexpr std::array<uint32_t, 8> kCodes = {0x200000, 0x240001, 0x250002, 0x410000,
                                                     0x680003, 0x820001, 0xA00005, 0x1};
  uint32_t first = 0;
  read(0x200000, &first);  // from here on the recording is this process's
  std::vector<std::jthread> threads;
  for (unsigned int seed = 0; seed < 4; ++seed) {
    threads.emplace_back([=] {
      std::mt19937 dice(seed + 1);
      for (int call = 0; call < 500; ++call) {
        const uint32_t code = kCodes[dice() % kCodes.size()];
        uint32_t word = 0;
        if (dice() % 5 == 0) {
          write(code, static_cast<uint32_t>(dice() % 12));
        } else {
          read(code, &word);
        }
      }
    });
  }
  int failed = 0;
  for (int i = 0; i < 20; ++i) {
    uint32_t word = 0;
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      _exit(read(0x200000, &word) == 0 ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    failed += status == 0 ? 0 : 1;
  }
  return failed;
}
