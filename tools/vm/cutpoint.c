/* The guest's cut points: every call that changes the instrument's files or flushes them is
 * announced on the second serial port ("STEP pid op path") before it runs, and runs only when the
 * host answers; the host kills the machine instead on the step it is told to cut at. Preloaded into
 * the update (and, through the environment, into the commands it starts); scripts such as the
 * privileged tool announce their steps with vtx-step, which speaks the same protocol.
 *
 * Only raw system calls are used: the library is built with a newer C library's headers than the
 * instrument's, and loads into the program's own C library as well as the system's. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdarg.h>
#include <stddef.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#define CHANNEL "/dev/ttyS1"
static int channel = -1;
static long channel_pid;

static size_t length(const char *s) { size_t n = 0; while (s[n]) n++; return n; }

static int starts(const char *s, const char *prefix) {
  while (*prefix) if (*s++ != *prefix++) return 0;
  return 1;
}

/* The instrument's disk and stick, but not the user's hidden caches (fonts, toolkit settings):
 * those are not the update's and their number varies from run to run. */
static int watched(const char *path) {
  if (starts(path, "/media/usb/") || starts(path, "/home/vtx/.vtx-partial-copy")) return 1;
  return starts(path, "/home/vtx/") && path[10] != '.';
}

static void append(char *out, size_t *n, size_t cap, const char *s) {
  while (*s && *n + 1 < cap) out[(*n)++] = *s++;
  out[*n] = 0;
}

static void number(char *out, size_t *n, size_t cap, long v) {
  char digits[24]; int i = 0;
  if (v < 0) { append(out, n, cap, "-"); v = -v; }
  do digits[i++] = (char)('0' + v % 10); while ((v /= 10) && i < 23);
  while (i) { char c[2] = {digits[--i], 0}; append(out, n, cap, c); }
}

/* The absolute path of a file descriptor, or of a name relative to one (AT_FDCWD: the folder). */
static int resolve(int dirfd, const char *name, char *out, size_t cap) {
  size_t n = 0;
  out[0] = 0;
  if (name && name[0] == '/') { append(out, &n, cap, name); return 1; }
  if (dirfd == AT_FDCWD) {
    long r = syscall(SYS_getcwd, out, cap - 1);
    if (r <= 0) return 0;
    n = length(out);
  } else {
    char link[32]; size_t k = 0; long r;
    append(link, &k, sizeof link, "/proc/self/fd/");
    number(link, &k, sizeof link, dirfd);
    r = syscall(SYS_readlink, link, out, cap - 1);
    if (r <= 0) return 0;
    out[r] = 0;
    n = (size_t)r;
  }
  if (name && *name) { append(out, &n, cap, "/"); append(out, &n, cap, name); }
  return 1;
}

static void announce(const char *op, const char *what) {
  char line[4200], reply;
  size_t n = 0;
  long pid = syscall(SYS_getpid), r;
  if (channel < 0 || channel_pid != pid) {
    channel = (int)syscall(SYS_open, CHANNEL, O_RDWR | O_NOCTTY | O_CLOEXEC);
    channel_pid = pid;
    if (channel < 0) return;
  }
  append(line, &n, sizeof line, "STEP ");
  number(line, &n, sizeof line, pid);
  append(line, &n, sizeof line, " ");
  append(line, &n, sizeof line, op);
  append(line, &n, sizeof line, " ");
  append(line, &n, sizeof line, what);
  append(line, &n, sizeof line, "\n");
  syscall(SYS_flock, channel, LOCK_EX);
  syscall(SYS_write, channel, line, n);
  do r = syscall(SYS_read, channel, &reply, 1); while (r == 1 && reply != '\n');
  syscall(SYS_flock, channel, LOCK_UN);
}

static void step_at(const char *op, int dirfd, const char *name) {
  char path[4096];
  if (resolve(dirfd, name, path, sizeof path) && watched(path)) announce(op, path);
}

static void step_fd(const char *op, int fd) { step_at(op, fd, NULL); }

ssize_t write(int fd, const void *buf, size_t count) {
  step_fd("write", fd);
  return syscall(SYS_write, fd, buf, count);
}
int fsync(int fd) { step_fd("fsync", fd); return (int)syscall(SYS_fsync, fd); }
int fdatasync(int fd) { step_fd("fdatasync", fd); return (int)syscall(SYS_fdatasync, fd); }
int syncfs(int fd) { step_fd("syncfs", fd); return (int)syscall(SYS_syncfs, fd); }
void sync(void) { announce("sync", "-"); syscall(SYS_sync); }
int fchmod(int fd, mode_t mode) { step_fd("fchmod", fd); return (int)syscall(SYS_fchmod, fd, mode); }
int fchown(int fd, uid_t uid, gid_t gid) { step_fd("fchown", fd); return (int)syscall(SYS_fchown32, fd, uid, gid); }
int rename(const char *from, const char *to) {
  step_at("rename", AT_FDCWD, to);
  return (int)syscall(SYS_rename, from, to);
}
int renameat(int fromfd, const char *from, int tofd, const char *to) {
  step_at("rename", tofd, to);
  return (int)syscall(SYS_renameat, fromfd, from, tofd, to);
}
int renameat2(int fromfd, const char *from, int tofd, const char *to, unsigned int flags) {
  step_at("rename", tofd, to);
  return (int)syscall(SYS_renameat2, fromfd, from, tofd, to, flags);
}
int unlink(const char *path) { step_at("unlink", AT_FDCWD, path); return (int)syscall(SYS_unlink, path); }
int unlinkat(int dirfd, const char *path, int flags) {
  step_at(flags & AT_REMOVEDIR ? "rmdir" : "unlink", dirfd, path);
  return (int)syscall(SYS_unlinkat, dirfd, path, flags);
}
int rmdir(const char *path) { step_at("rmdir", AT_FDCWD, path); return (int)syscall(SYS_rmdir, path); }
int mkdir(const char *path, mode_t mode) { step_at("mkdir", AT_FDCWD, path); return (int)syscall(SYS_mkdir, path, mode); }
int mkdirat(int dirfd, const char *path, mode_t mode) {
  step_at("mkdir", dirfd, path);
  return (int)syscall(SYS_mkdirat, dirfd, path, mode);
}
