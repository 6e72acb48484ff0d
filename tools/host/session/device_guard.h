// What stands between the module and the device library in a worker: it tells which call is under
// way, to whoever shares the page, and answers for codes that are left out. Shared by the stand-in
// itself, the worker that loads it and the parent that looks at the page; the parent trusts none of
// it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kova_host {

// Where the worker is, in memory that it shares with its parent. Written by the worker alone.
struct Whereabouts {
  static constexpr uint32_t kNoPlace = UINT32_MAX;

  std::atomic<uint32_t> steps{0};         // grows with each item and each device call
  std::atomic<uint32_t> place{kNoPlace};  // of the question at work, in the message that asks it
  std::atomic<uint32_t> code{0};          // of the newest device call
  std::atomic<uint32_t> inside{0};        // 1 while that call lasts
};
static_assert(std::atomic<uint32_t>::is_always_lock_free);

// The answer to a code that is left out.
inline constexpr uint32_t kLeftOutStatus = 0xE0000021;

// The stand-in's entries, by name.
inline constexpr const char* kGuardOpen = "KovaGuardOpen";
inline constexpr const char* kGuardLeaveOut = "KovaGuardLeaveOut";
inline constexpr const char* kGuardLibrary = "KovaGuardLibrary";
inline constexpr const char* kGuardHandle = "KovaGuardHandle";

// Opens `library`, the device library at its own places if that is "". False unless it can be
// opened and has both entries: then the module had better find it without a guard.
using GuardOpen = uint32_t(const char* library, Whereabouts* page);
using GuardLeaveOut = void(const uint32_t* codes, size_t count);
// The file that was opened, "" before that; and its handle.
using GuardLibrary = const char*();
using GuardHandle = void*();

}  // namespace kova_host
