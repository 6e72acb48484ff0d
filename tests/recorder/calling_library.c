/* A device library that calls its own entry points: while it is loaded, and to answer code 1. It
   leaves errno alone. With KOVA_SLOW_START it takes half a second to load, forks then, and answers
   slowly one call after the other, also across forks. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value);
uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value);

static pthread_mutex_t one_at_a_time = PTHREAD_MUTEX_INITIALIZER;
static int is_slow = 0;

static void lock(void) {
  pthread_mutex_lock(&one_at_a_time);
}
static void unlock(void) {
  pthread_mutex_unlock(&one_at_a_time);
}

uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value) {
  if (value == 0) {
    return 0xE0000004;
  }
  if (code == 1) {
    return KovaDeviceGetValue(2, value);
  }
  if (is_slow) {
    lock();
    usleep(100000);
    unlock();
  }
  *value = code + 10;
  return 0;
}

uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value) {
  return KovaDeviceGetValue(code, &value);
}

__attribute__((constructor)) static void probe(void) {
  KovaDeviceSetValue(1, 0);
  if (getenv("KOVA_SLOW_START") != 0) {
    is_slow = 1;
    usleep(500000);
    const pid_t child = fork();
    if (child == 0) {
      _exit(0);
    }
    waitpid(child, 0, 0);
    pthread_atfork(lock, unlock, unlock);
  }
}
