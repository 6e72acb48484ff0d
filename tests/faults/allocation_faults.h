// Running out of memory on demand: every block that this executable takes through operator new or
// through jansson is counted, and the n-th of them can be refused.
#pragma once

#include <cstddef>
#include <ostream>

namespace allocation_faults {

enum class Shortage {
  kPassing,  ///< one block is refused, later ones are granted
  kLasting   ///< all blocks are refused from that one on
};
std::ostream& operator<<(std::ostream& out, Shortage shortage);

/// Blocks taken and not yet given back.
std::size_t live_blocks();

/// Refuses the n-th block (counted from 1) from now until `end` or the end of the scope: operator
/// new throws, jansson gets null.
class Scope {
 public:
  Scope(unsigned int n, Shortage shortage);
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  /// True when a block has been refused.
  bool end();
};

/// Runs `call` with the n-th block refused for n = 1, 2, 3 ... until it needs fewer blocks, and
/// `check` after each run in which one was refused, with the call's result. Returns how many.
template <typename Call, typename Check>
unsigned int refuse_each_block(Shortage shortage, const Call& call, const Check& check) {
  for (unsigned int n = 1;; ++n) {
    Scope scope(n, shortage);
    const auto result = call();
    if (!scope.end()) {
      return n - 1;
    }
    check(n, result);
  }
}

}  // namespace allocation_faults
