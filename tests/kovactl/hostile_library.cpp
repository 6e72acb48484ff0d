// A device library that does what such libraries have done. What, and when, is told by the
// environment: HOSTILE is the deed, HOSTILE_AT the device code at whose read it is done ("load" for
// the library's constructor, "write" for any write), HOSTILE_FILE a file that is made at the first
// time: from then on it is done no more.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

void change_the_process() {
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  umask(0777);
  (void)!chdir("/");
  std::puts("a line on stdout");
  std::fputs("a line on stderr\n", stderr);
}

void leave_a_child() {
  if (fork() == 0) {
    for (;;) {
      pause();
    }
  }
}

void misbehave(const std::string& deed) {
  if (deed == "hang") {
    for (;;) {
      pause();
    }
  } else if (deed == "slow") {
    sleep(3);
  } else if (deed == "exit") {
    std::exit(0);
  } else if (deed == "crash") {
    (void)std::signal(SIGSEGV, SIG_DFL);
    (void)raise(SIGSEGV);
  } else if (deed == "close") {
    close_range(0, ~0U, 0);
  } else if (deed == "leak") {
    while (dup(0) >= 0) {
    }
  } else if (deed == "fork") {
    leave_a_child();
  } else if (deed == "change") {
    change_the_process();
  } else if (deed == "babble") {
    (void)!write(3, "this is no message of a worker's", 32);
  }
}

bool first_time() {
  const std::string file = variable("HOSTILE_FILE");
  return file.empty() || open(file.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600) >= 0;
}

void act_at(const std::string& place) {
  if (variable("HOSTILE_AT") == place && first_time()) {
    misbehave(variable("HOSTILE"));
  }
}

__attribute__((constructor)) void at_load() {
  act_at("load");
}

}  // namespace

extern "C" {

// As the simulator has it, in whose place the tests put this.
const char* KovaSimulatorError() {
  return nullptr;
}

// A machine with an add-on board alone: every reading answers its own code.
uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", code);
  act_at(text);
  if (code == 0x00800000) {
    *value = 1;
    return 0;
  }
  if (code == 0x00820000 || code == 0x00820001) {
    *value = 3000 + (code & 1) * 100;
    return 0;
  }
  return 5;
}

uint32_t KovaDeviceSetValue(uint32_t, uint32_t) {
  act_at("write");
  return 0;
}
}
