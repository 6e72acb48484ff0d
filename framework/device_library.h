// Loader of the hardware-access library and the shape of its two entry points.
#pragma once

#include <cstdint>
#include <string>

/// "KovaDeviceGetValue": reads the item that the device library knows by `code` into `*value`.
/// Returns 0 on success; after any other result `*value` is not to be relied on.
using ReadEntry = std::uint32_t (*)(std::uint32_t code, std::uint32_t* value);

/// "KovaDeviceSetValue": writes the raw word `value` to the item `code`; 0 on success.
using WriteEntry = std::uint32_t (*)(std::uint32_t code, std::uint32_t value);

/// Opens /usr/lib/<name>.so, else /usr/lib64/<name>.so, and nothing else: a library planted on the
/// search path must not reach the agent's process. Returns the handle, or null if neither opens.
void* LibLoad(const std::string& name);

/// Address of the symbol `name` in a library that LibLoad returned, or null.
void* LibGetSymbol(void* handle, const std::string& name);

/// Closes a handle; the result of dlclose. The module itself never does: the device library stays
/// mapped for the life of the process.
int LibFree(void* handle);

/// Copies a C string with its end into `dst`, which must have room for it; returns `dst`.
char* StringCopy(char* dst, const char* src);
