/* SPDX-License-Identifier: MIT */
/*
 * Taking turns at the hardware: one lock for all programs that use VynLib, and for all threads of each.
 *
 * The library takes no locks. Calls that overlap, in one process or in two, read and write wrong registers and report
 * success. Programs that hold this lock around each call of the library get what they asked for:
 *
 *     vynlib_lock lock;
 *     if (vynlib_lock_open(&lock, VYNLIB_LOCK_PATH) != VYNLIB_LOCK_OK) ...
 *     if (vynlib_lock_take(&lock, 10000) == VYNLIB_LOCK_OK) {
 *       done = VynLibGetVoltage("+12V", &volts, VYNLIB_PERFORM);
 *       code = VynLibDllGetLastError();
 *       vynlib_lock_give(&lock);
 *     }
 *
 * How long   Around library calls (VynLibDllInit() among them) and nothing else: never while output is written, which
 *            may wait for a reader, nor while waiting for anything. A process that is stopped while it holds the lock
 *            keeps it, and one that ends in the middle of a call leaves the hardware there: defer signals meanwhile.
 * Which file VYNLIB_LOCK_PATH, of root or of this process's own user, with mode 0660; the first to open it creates it.
 *            It is never removed. While the lock is held it says "PID NAME\n".
 * Waiting    Always ends. Whoever waits is next: a program that takes the lock again and again lets others in between.
 * Others     The lock is flock() on the whole file, so that "flock /run/lock/vynlib.lock COMMAND" takes part. It binds
 *            those who use it: other programs and kernel drivers of the same chips do not.
 * fork()     The child shares the lock of its parent: it must open one of its own. Programs that are started get none.
 *
 * C99 and C++, header only, for Linux on x86-64. It needs the names of POSIX.1-2008: those are there in the compilers'
 * own mode and with -std=gnu99; with -std=c99 define _POSIX_C_SOURCE as 200809L before the first include.
 */
#ifndef VYNLIB_LOCK_H
#define VYNLIB_LOCK_H

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#ifndef O_CLOEXEC
#error "vynlib/lock.h needs POSIX.1-2008: compile with -std=gnu99, or define _POSIX_C_SOURCE as 200809L"
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define VYNLIB_LOCK_PATH "/run/lock/vynlib.lock"
#define VYNLIB_LOCK_NAME_BYTES 16 /* with the NUL */

/* What the functions return. */
#define VYNLIB_LOCK_OK 0
#define VYNLIB_LOCK_TIMEOUT 1 /* somebody else had it all the time; vynlib_lock_holder() tells who */
#define VYNLIB_LOCK_ERROR 2   /* it cannot be locked; errno tells why */
#define VYNLIB_LOCK_UNSAFE 3  /* the file is a link, no regular file, or of a user that is neither root nor this one */

/* A process, as it entered itself in the file. */
typedef struct vynlib_lock_owner {
  long pid; /* 0: none, or unknown */
  char name[VYNLIB_LOCK_NAME_BYTES];
} vynlib_lock_owner;

/* One for all threads of a process. The fields are this header's own. */
typedef struct vynlib_lock {
  int descriptor;
  pthread_mutex_t queue; /* held by the thread that is next */
  pthread_mutex_t turn;  /* held by the thread that has the lock */
  vynlib_lock_owner self, dead;
} vynlib_lock;

/* ---- for this header alone ---- */

/* Between two tries. A waiting program costs next to nothing, and a free lock is taken almost at once. */
#define VYNLIB_LOCK_TRY_MILLISECONDS 1
/* The kernel's number: <fcntl.h> names it for GNU programs only. */
#define VYNLIB_LOCK_SET_LOCK_OF_DESCRIPTION 37
#define VYNLIB_LOCK_LINE_BYTES 48

static inline long long vynlib_lock_milliseconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (long long)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

/* "PID NAME" in the file; pid 0 when there is none. */
static inline vynlib_lock_owner vynlib_lock_read_owner(int descriptor) {
  char line[VYNLIB_LOCK_LINE_BYTES];
  vynlib_lock_owner owner;
  const ssize_t got = pread(descriptor, line, sizeof line - 1, 0);
  memset(&owner, 0, sizeof owner);
  line[got > 0 ? got : 0] = '\0';
  if (sscanf(line, "%10ld %15[^\n]", &owner.pid, owner.name) < 1 || owner.pid < 0) owner.pid = 0;
  return owner;
}

/* Who held the lock stays readable when this fails: it is for people only. */
static inline void vynlib_lock_write_owner(int descriptor, const vynlib_lock_owner* owner) {
  char line[VYNLIB_LOCK_LINE_BYTES];
  const int length = snprintf(line, sizeof line, "%ld %s\n", owner->pid, owner->name);
  if (pwrite(descriptor, line, (size_t)length, 0) == length && ftruncate(descriptor, length) != 0) errno = 0;
}

/* This process, by the name that "ps" shows. */
static inline vynlib_lock_owner vynlib_lock_self(void) {
  vynlib_lock_owner self;
  const int file = open("/proc/self/comm", O_RDONLY | O_CLOEXEC);
  ssize_t got = 0;
  memset(&self, 0, sizeof self);
  self.pid = getpid();
  if (file >= 0) {
    got = read(file, self.name, sizeof self.name - 1);
    close(file);
  }
  self.name[got > 0 ? got : 0] = '\0';
  self.name[strcspn(self.name, "\n")] = '\0';
  return self;
}

/* The file, which is created only where there is none: an open that may create meets the kernel's guard of folders that
 * all can write, and would name that as the reason instead of the file's owner. */
static inline int vynlib_lock_open_file(const char* path) {
  const int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK;
  int round, file = -1;
  for (round = 0; round < 3; ++round) {
    file = open(path, flags);
    if (file >= 0 || errno != ENOENT) break;
    file = open(path, flags | O_CREAT | O_EXCL, 0660);
    if (file >= 0 && fchmod(file, 0660) != 0) errno = 0; /* the mask of the process took bits away */
    if (file >= 0 || errno != EEXIST) break;
  }
  return file;
}

/* Standard input, output and error are not for files that happen to be opened while one of them is closed. */
static inline int vynlib_lock_above_standard(int file) {
  int higher;
  if (file < 0 || file > STDERR_FILENO) return file;
  higher = fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(file);
  return higher;
}

static inline int vynlib_lock_is_safe(int file) {
  struct stat status;
  if (fstat(file, &status) != 0) return 0;
  return S_ISREG(status.st_mode) && status.st_nlink == 1 && (status.st_uid == 0 || status.st_uid == geteuid());
}

/* The steps of taking the lock. Each returns 0, or the errno of its failure; EBUSY and EAGAIN ask for another try. */
static inline int vynlib_lock_try_queue(vynlib_lock* lock) { return pthread_mutex_trylock(&lock->queue); }
static inline int vynlib_lock_try_turn(vynlib_lock* lock) { return pthread_mutex_trylock(&lock->turn); }
/* The same queue among processes: a lock on the first byte, apart from flock(). */
static inline int vynlib_lock_set_file_queue(const vynlib_lock* lock, short type) {
  struct flock first;
  memset(&first, 0, sizeof first);
  first.l_type = type;
  first.l_whence = SEEK_SET;
  first.l_len = 1;
  return fcntl(lock->descriptor, VYNLIB_LOCK_SET_LOCK_OF_DESCRIPTION, &first) == 0 ? 0 : errno;
}
static inline int vynlib_lock_try_file_queue(vynlib_lock* lock) { return vynlib_lock_set_file_queue(lock, F_WRLCK); }
static inline int vynlib_lock_try_file(vynlib_lock* lock) {
  return flock(lock->descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
}

/* Tries until it is done, fails, or `end` has come: 0 or an errno. */
static inline int vynlib_lock_until(vynlib_lock* lock, int (*attempt)(vynlib_lock*), long long end) {
  struct pollfd nothing;
  for (;;) {
    const int failure = attempt(lock);
    if (failure != EBUSY && failure != EAGAIN && failure != EACCES) return failure;
    if (vynlib_lock_milliseconds() >= end) return EAGAIN;
    poll(&nothing, 0, VYNLIB_LOCK_TRY_MILLISECONDS);
  }
}

/* For the thread that has its turn: the file too. */
static inline int vynlib_lock_take_file(vynlib_lock* lock, long long end) {
  int failure = vynlib_lock_until(lock, vynlib_lock_try_file_queue, end);
  if (failure != 0) return failure;
  failure = vynlib_lock_until(lock, vynlib_lock_try_file, end);
  vynlib_lock_set_file_queue(lock, F_UNLCK);
  return failure;
}

/* ---- for everybody ---- */

/*
 * Opens the lock file `path` (VYNLIB_LOCK_PATH; another one for programs that are to take turns among themselves only),
 * and creates it when there is none. Does not lock. VYNLIB_LOCK_OK, VYNLIB_LOCK_ERROR or VYNLIB_LOCK_UNSAFE; after a
 * failure the lock may be closed, and nothing else.
 */
static inline int vynlib_lock_open(vynlib_lock* lock, const char* path) {
  pthread_mutexattr_t usual;
  memset(lock, 0, sizeof *lock);
  pthread_mutexattr_init(&usual);
  pthread_mutex_init(&lock->queue, &usual);
  pthread_mutex_init(&lock->turn, &usual);
  pthread_mutexattr_destroy(&usual);
  lock->self = vynlib_lock_self();
  lock->descriptor = vynlib_lock_above_standard(vynlib_lock_open_file(path));
  if (lock->descriptor < 0) return errno == ELOOP ? VYNLIB_LOCK_UNSAFE : VYNLIB_LOCK_ERROR;
  if (vynlib_lock_is_safe(lock->descriptor)) return VYNLIB_LOCK_OK;
  close(lock->descriptor);
  lock->descriptor = -1;
  return VYNLIB_LOCK_UNSAFE;
}

/*
 * Waits for the lock, `milliseconds` at most; 0 or less tries once. VYNLIB_LOCK_OK, and then vynlib_lock_give() must
 * follow in the same thread; VYNLIB_LOCK_TIMEOUT, also for a thread that has it already; VYNLIB_LOCK_ERROR.
 */
static inline int vynlib_lock_take(vynlib_lock* lock, int milliseconds) {
  const long long end = vynlib_lock_milliseconds() + milliseconds;
  int failure = vynlib_lock_until(lock, vynlib_lock_try_queue, end);
  if (failure == 0) {
    failure = vynlib_lock_until(lock, vynlib_lock_try_turn, end);
    if (failure == 0) {
      failure = vynlib_lock_take_file(lock, end);
      if (failure != 0) pthread_mutex_unlock(&lock->turn);
    }
    pthread_mutex_unlock(&lock->queue);
  }
  if (failure != 0) {
    errno = failure;
    return failure == EAGAIN ? VYNLIB_LOCK_TIMEOUT : VYNLIB_LOCK_ERROR;
  }
  lock->dead = vynlib_lock_read_owner(lock->descriptor);
  vynlib_lock_write_owner(lock->descriptor, &lock->self);
  return VYNLIB_LOCK_OK;
}

/* Gives the lock back. */
static inline void vynlib_lock_give(vynlib_lock* lock) {
  if (ftruncate(lock->descriptor, 0) != 0) errno = 0;
  flock(lock->descriptor, LOCK_UN);
  pthread_mutex_unlock(&lock->turn);
}

/* Who has the lock, by the file: for messages after VYNLIB_LOCK_TIMEOUT. The pid is that of the owner's pid namespace;
 * 0 when nobody has it, or when the owner took it by other means than this header. */
static inline vynlib_lock_owner vynlib_lock_holder(const vynlib_lock* lock) {
  return vynlib_lock_read_owner(lock->descriptor);
}

/*
 * For the holder: who ended, or was killed, while it had the lock, just before this holder got it (pid 0: nobody, the
 * usual case). The hardware may be in the middle of what that call did; docs/sharing.md tells what that can be.
 */
static inline vynlib_lock_owner vynlib_lock_dead_holder(const vynlib_lock* lock) { return lock->dead; }

/* Closes the lock, which nobody may hold or wait for. The file stays. */
static inline void vynlib_lock_close(vynlib_lock* lock) {
  if (lock->descriptor >= 0) close(lock->descriptor);
  lock->descriptor = -1;
  pthread_mutex_destroy(&lock->queue);
  pthread_mutex_destroy(&lock->turn);
}

#ifdef __cplusplus
}
#endif

#endif
