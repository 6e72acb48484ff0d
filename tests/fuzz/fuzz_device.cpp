// The described device, and the wraps of the dynamic linker that put it under /usr/lib.
#include "tests/fuzz/fuzz_device.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <set>

namespace fuzz_device {
namespace {

struct Answer {
  std::uint32_t word = 0;
  std::uint32_t status = 0;
};

std::map<std::uint32_t, Answer> answers;
std::set<std::uint32_t> returned;
int handle = 0;

std::uint32_t give(std::uint32_t status) {
  returned.insert(status);
  return status;
}

std::uint32_t get(std::uint32_t code, std::uint32_t* value) {
  const auto known = answers.find(code);
  if (known == answers.end()) {
    return give(1);
  }
  *value = known->second.word;
  return give(known->second.status);
}

std::uint32_t set(std::uint32_t code, std::uint32_t value) {
  const auto known = answers.find(code);
  if (known == answers.end()) {
    return give(1);
  }
  known->second.word = value;
  return give(known->second.status);
}

bool parse(std::string_view text, std::uint32_t* number) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), *number, 16);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

}  // namespace

void reset() {
  answers.clear();
  returned.clear();
}

bool describe(std::string_view line) {
  std::uint32_t code = 0;
  Answer answer;
  if (!parse(take_word(&line), &code) || !parse(take_word(&line), &answer.word)) {
    return false;
  }
  parse(take_word(&line), &answer.status);
  answers[code] = answer;
  return true;
}

void limit(std::uint32_t code, std::uint32_t max) {
  const auto known = answers.find(code);
  if (known != answers.end()) {
    known->second.word = std::min(known->second.word, max);
  }
}

bool has_returned(std::uint32_t status) {
  return returned.contains(status);
}

std::string_view take_word(std::string_view* line) {
  const std::string_view word = line->substr(0, line->find(' '));
  line->remove_prefix(std::min(word.size() + 1, line->size()));
  return word;
}

std::string_view take_line(std::string_view* text) {
  const std::string_view line = text->substr(0, text->find('\n'));
  text->remove_prefix(std::min(line.size() + 1, text->size()));
  return line;
}

}  // namespace fuzz_device

extern "C" {

void* __real_dlopen(const char* path, int flags);
void* __real_dlsym(void* handle, const char* name);

void* __wrap_dlopen(const char* path, int flags) {
  const bool device = path != nullptr && std::strstr(path, "libKOVADevice") != nullptr;
  return device ? &fuzz_device::handle : __real_dlopen(path, flags);
}

void* __wrap_dlsym(void* handle, const char* name) {
  if (handle != &fuzz_device::handle) {
    return __real_dlsym(handle, name);
  }
  return std::strcmp(name, "KovaDeviceGetValue") == 0 ? reinterpret_cast<void*>(&fuzz_device::get)
                                                      : reinterpret_cast<void*>(&fuzz_device::set);
}
}
