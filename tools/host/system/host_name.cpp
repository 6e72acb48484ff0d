// What this machine calls itself.
#include "tools/host/system/host_name.h"

#include <unistd.h>

#include <array>

namespace kova_host {

std::string host_name() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "localhost";
}

}  // namespace kova_host
