// The worker: this program started anew to load module and device library, and to do nothing else.
#pragma once

#include <optional>

namespace kova_host {

// The hidden first argument that makes a program the worker; its second is the parent's process ID.
inline constexpr const char* kWorkerArgument = "--device-worker";

// What a worker is born with.
inline constexpr int kWorkerSocket = 3;
inline constexpr int kWorkerPage = 4;

// The exit code of a worker whose socket somebody has closed.
inline constexpr int kWorkerLostSocket = 113;

// To be called first by every program that has workers: the exit code of a worker, nothing if the
// program is none.
std::optional<int> run_if_worker(int argc, char** argv);

}  // namespace kova_host
