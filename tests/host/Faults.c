// SPDX-License-Identifier: MIT
//
// Loaded before the C library (LD_PRELOAD), makes chosen calls go wrong. TAVRIX_FAULTS lists them as
// CALL:N:FAULT with commas between: the N-th call (0: every one) fails with that errno, or "short" writes or
// reads a single byte, "signal" has a SIGTERM come, "remove" first removes the folder TAVRIX_FAULT_FOLDER.
// What went wrong is appended to the file TAVRIX_FAULTS_MET.
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

// The function that this library stands in front of.
#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

enum { kShort = -1 };

static void Note(const char* fault, size_t length) {
    const char* met = getenv("TAVRIX_FAULTS_MET");
    const int file = met != NULL ? NEXT(open)(met, O_WRONLY | O_APPEND | O_CREAT, 0666) : -1;
    if (file < 0 || NEXT(write)(file, fault, length) < 0) abort();
    NEXT(close)(file);
}

// 0, kShort or an errno: what is to go wrong with the count-th call of that name.
static int FaultOf(const char* call, atomic_int* count) {
    const int number = ++*count;
    const char* list = getenv("TAVRIX_FAULTS");
    while (list != NULL && *list != 0) {
        const size_t length = strcspn(list, ",");
        char name[16], fault[16];
        int asked = -1;
        if (sscanf(list, "%15[^:]:%d:%15[^,]", name, &asked, fault) != 3) abort();
        if (strcmp(name, call) == 0 && (asked == 0 || asked == number)) {
            Note(list, length);
            if (strcmp(fault, "short") == 0) return kShort;
            if (strcmp(fault, "remove") == 0) {
                rmdir(getenv("TAVRIX_FAULT_FOLDER"));
                return 0;
            }
            if (strcmp(fault, "signal") == 0) {
                kill(getpid(), SIGTERM);
                usleep(20000);  // long enough for whoever waits for it
                return 0;
            }
            return atoi(fault);
        }
        list += length + (list[length] == ',');
    }
    return 0;
}

// A function whose calls may go wrong; shortened: what it does when only a single byte is to come or go.
#define STAND_IN(result, name, call, parameters, failed, shortened, ...) \
    result name parameters {                                             \
        static atomic_int count;                                         \
        const int fault = FaultOf(call, &count);                         \
        if (fault > 0) return errno = fault, (failed);                   \
        if (fault == kShort) shortened;                                  \
        return __VA_ARGS__;                                              \
    }

STAND_IN(ssize_t, write, "write", (int file, const void* bytes, size_t size), -1, size = size > 1 ? 1 : size,
         NEXT(write)(file, bytes, size))
STAND_IN(ssize_t, read, "read", (int file, void* bytes, size_t size), -1, size = size > 1 ? 1 : size,
         NEXT(read)(file, bytes, size))
STAND_IN(int, close, "close", (int file), (NEXT(close)(file), -1), abort(), NEXT(close)(file))
STAND_IN(int, fsync, "fsync", (int file), -1, abort(), NEXT(fsync)(file))
STAND_IN(int, fchmod, "fchmod", (int file, mode_t mode), -1, abort(), NEXT(fchmod)(file, mode))
STAND_IN(int, mkdir, "mkdir", (const char* path, mode_t mode), -1, abort(), NEXT(mkdir)(path, mode))
STAND_IN(int, rename, "rename", (const char* from, const char* to), -1, abort(), NEXT(rename)(from, to))
STAND_IN(int, linkat, "linkat", (int fromFolder, const char* from, int toFolder, const char* to, int flags),
         -1, abort(), NEXT(linkat)(fromFolder, from, toFolder, to, flags))
STAND_IN(struct dirent*, readdir, "readdir", (DIR * folder), NULL, abort(), NEXT(readdir)(folder))
STAND_IN(int, pthread_create, "thread",
         (pthread_t * thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument), fault,
         abort(), NEXT(pthread_create)(thread, attributes, start, argument))

// Three kinds of open.
STAND_IN(static int, OpenInput, "open", (const char* path, int flags), -1, abort(), NEXT(open)(path, flags))
STAND_IN(static int, OpenOutput, "create", (const char* path, int flags, int mode), -1, abort(),
         NEXT(open)(path, flags, mode))
STAND_IN(static int, OpenUnnamed, "tmpfile", (const char* path, int flags, int mode), -1, abort(),
         NEXT(open)(path, flags, mode))

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const int mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, int) : 0;
    va_end(rest);
    if ((flags & O_TMPFILE) == O_TMPFILE) return OpenUnnamed(path, flags, mode);
    return (flags & O_ACCMODE) == O_RDONLY ? OpenInput(path, flags) : OpenOutput(path, flags, mode);
}
