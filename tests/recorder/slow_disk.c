/* Preloaded: a disk that takes seven bytes at a time and is interrupted now and then, and tells on
   stderr what is made to last. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <unistd.h>

typedef ssize_t Write(int descriptor, const void* bytes, size_t size, off_t offset);

ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  static int calls = 0;
  if (++calls % 3 == 0) {
    errno = EINTR;
    return -1;
  }
  Write* const next = (Write*)dlsym(RTLD_NEXT, "pwrite");
  return next(descriptor, bytes, size < 7 ? size : 7, offset);
}

int fsync(int descriptor) {
  (void)descriptor;
  dprintf(2, "folder ");
  return 0;
}

int fdatasync(int descriptor) {
  (void)descriptor;
  dprintf(2, "file ");
  errno = EINVAL; /* as a file system answers that cannot */
  return -1;
}
