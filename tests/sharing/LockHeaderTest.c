/* SPDX-License-Identifier: MIT */
/* A C99 program with the lock alone: the header needs nothing before it and is C. */
#include "vynlib/lock.h"

int main(int argc, char** argv) {
  vynlib_lock lock;
  if (argc != 2 || vynlib_lock_open(&lock, argv[1]) != VYNLIB_LOCK_OK) return 1;
  if (vynlib_lock_take(&lock, 1000) != VYNLIB_LOCK_OK) return 2;
  if (vynlib_lock_holder(&lock).pid != getpid()) return 3;
  if (vynlib_lock_dead_holder(&lock).pid != 0) return 4;
  vynlib_lock_give(&lock);
  vynlib_lock_close(&lock);
  return 0;
}
