/* Preloaded into the program: lets the n-th call of one function fail.

   FAULT_CALL   the function (a name of the table below), none when it is missing
   FAULT_STACK  only of those calls of it whose stack has this number
   FAULT_N      which of them fails, from 1
   FAULT_FILE   a file of what is met: how many calls have failed, then by stack, in the order of the first meeting, its
                number (the lowest five bits are the function's place in the table) and how often it was met. A stack is
                the innermost frame and all frames of the program itself, as places in the files

   FAULT_LOG    a file that gets a line for each write, fsync and rename, with the files' paths

   A thread's bell (an eventfd) rings and is read as ever: the kernel has no error for that, and it is not counted.
   The calls that the loader and the C library make inside themselves do not pass here. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <mqueue.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>
#include <unwind.h>

static const char* const Names[] = {"open",   "read",    "write",   "fsync",      "rename",  "mmap",     "poll",
                                    "ioctl",  "malloc",  "mq_open", "mq_send",    "sem_open", "sem_trywait", "sem_post",
                                    "mq_receive", "pthread_create", "mq_getattr", "sem_wait", "sem_clockwait", "sem_getvalue",
                                    "socket", "connect", "accept4", "recv", "recvmsg", "send", "sendmsg", "flock",
                                    "tcsetattr", "tcgetattr"};
enum { Open, Read, Write, Fsync, Rename, Mmap, Poll, Ioctl, Malloc, MqOpen, MqSend, SemOpen, SemTryWait, SemPost,
       MqReceive, PthreadCreate, MqGetAttr, SemWait, SemClockWait, SemGetValue, Socket, Connect, Accept, Recv, RecvMsg, Send,
       SendMsg, Flock, TcSetAttr, TcGetAttr, Count };

enum { Most = 1 << 15 };
static struct {
    _Atomic uint64_t Failed;
    struct {
        _Atomic uint64_t Stack, Met;
    } Calls[Most];
}* Met;
static _Atomic uint64_t Calls[Count];
static int Chosen = -1;
static uint64_t Stack, Nth;
static char* Program; /* where it is loaded */

static uint64_t Number(const char* name) {
    return getenv(name) ? strtoull(getenv(name), NULL, 10) : 0;
}

__attribute__((constructor)) static void Prepare(void) {
    struct dl_find_object found;
    Program = _dl_find_object((void*)getauxval(AT_ENTRY), &found) == 0 ? found.dlfo_map_start : NULL;
    for (int at = 0; at < Count; ++at) {
        if (getenv("FAULT_CALL") != NULL && strcmp(getenv("FAULT_CALL"), Names[at]) == 0) {
            Chosen = at;
        }
    }
    Stack = Number("FAULT_STACK");
    Nth = Number("FAULT_N");
    const char* path = getenv("FAULT_FILE");
    const int file = path == NULL ? -1 : (int)syscall(SYS_openat, AT_FDCWD, path, O_RDWR, 0);
    if (file >= 0) {
        Met = (void*)syscall(SYS_mmap, NULL, sizeof *Met, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        syscall(SYS_close, file);
    }
    if (path != NULL && (file < 0 || (void*)Met == MAP_FAILED || Program == NULL)) {
        abort();
    }
}

struct Walk {
    uint64_t Hash;
    int Skipped;
};

static _Unwind_Reason_Code Step(struct _Unwind_Context* frame, void* context) {
    struct Walk* walk = context;
    struct dl_find_object found;
    char* place = (char*)_Unwind_GetIP(frame);
    if (_dl_find_object(place, &found) != 0) {
        return _URC_END_OF_STACK;
    }
    if (walk->Skipped++ >= 2 && (walk->Skipped == 3 || found.dlfo_map_start == Program)) {
        const uint64_t size = (char*)found.dlfo_map_end - (char*)found.dlfo_map_start;
        walk->Hash = (walk->Hash ^ (uint64_t)(place - (char*)found.dlfo_map_start) ^ size << 32) * 0x9E3779B97F4A7C15u;
        walk->Hash ^= walk->Hash >> 29;
    }
    return _URC_NO_REASON;
}

static void Note(const char* what, int file, const char* from, const char* to) {
    const char* path = getenv("FAULT_LOG");
    char line[2 * 4096 + 64], link[64], target[4096] = "";
    const int log = path ? (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0600) : -1;
    if (log < 0) {
        return;
    }
    if (from == NULL) {
        snprintf(link, sizeof link, "/proc/self/fd/%d", file);
        const ssize_t size = readlink(link, target, sizeof target - 1);
        target[size < 0 ? 0 : size] = 0;
    }
    const int size = snprintf(line, sizeof line, "%s %s%s%s\n", what, from ? from : target, to ? " " : "", to ? to : "");
    syscall(SYS_write, log, line, size);
    syscall(SYS_close, log);
}

static int IsBell(int file) {
    char link[64], target[64] = "";
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const int before = errno;
    const int bell = readlink(link, target, sizeof target - 1) > 0 && strcmp(target, "anon_inode:[eventfd]") == 0;
    errno = before;
    return bell;
}

/* How often this call with its stack has been met. */
static uint64_t CountStack(uint64_t stack) {
    for (int at = 0; at < Most; ++at) {
        uint64_t there = atomic_load_explicit(&Met->Calls[at].Stack, memory_order_relaxed);
        if (there == 0 && atomic_compare_exchange_strong(&Met->Calls[at].Stack, &there, stack)) {
            there = stack;
        }
        if (there == stack) {
            return atomic_fetch_add(&Met->Calls[at].Met, 1) + 1;
        }
    }
    abort();
}

static __attribute__((noinline)) int Fails(int call, int error) {
    uint64_t number = atomic_fetch_add(&Calls[call], 1) + 1;
    if (Met != NULL) {
        struct Walk walk = {0, 0};
        _Unwind_Backtrace(Step, &walk);
        const uint64_t stack = (walk.Hash & ~31ull) | (uint64_t)call, met = CountStack(stack);
        number = Stack == 0 ? number : stack == Stack ? met : 0;
    }
    if (call != Chosen || number != Nth) {
        return 0;
    }
    if (Met != NULL) {
        atomic_fetch_add(&Met->Failed, 1);
    }
    errno = error;
    return 1;
}

#define REAL(function)                                                   \
    static __typeof__(function)* real;                                   \
    if (real == NULL) {                                                  \
        real = (__typeof__(function)*)dlsym(RTLD_NEXT, #function);       \
    }

/* What may follow the named arguments is passed on, as the two words that it may be. */
#define OPEN(result, function, call, error, failed, declared, last, given)      \
    result function(declared, ...) {                                           \
        va_list more;                                                          \
        va_start(more, last);                                                  \
        const uintptr_t first = va_arg(more, uintptr_t), second = va_arg(more, uintptr_t); \
        (void)second;                                                          \
        va_end(more);                                                          \
        REAL(function)                                                         \
        return Fails(call, error) ? failed : real given;                       \
    }
#define COMMA ,
OPEN(int, open, Open, EMFILE, -1, const char* path COMMA int flags, flags, (path, flags, (mode_t)first))
OPEN(int, open64, Open, EMFILE, -1, const char* path COMMA int flags, flags, (path, flags, (mode_t)first))
OPEN(int, openat, Open, EMFILE, -1, int folder COMMA const char* path COMMA int flags, flags, (folder, path, flags, (mode_t)first))
OPEN(int, openat64, Open, EMFILE, -1, int folder COMMA const char* path COMMA int flags, flags, (folder, path, flags, (mode_t)first))
OPEN(int, ioctl, Ioctl, EIO, -1, int file COMMA unsigned long request, request, (file, request, first))
OPEN(mqd_t, mq_open, MqOpen, ENOSPC, (mqd_t)-1, const char* name COMMA int flags, flags, (name, flags, (mode_t)first, second))
OPEN(sem_t*, sem_open, SemOpen, ENOSPC, SEM_FAILED, const char* name COMMA int flags, flags, (name, flags, (mode_t)first, (unsigned)second))

#define NOTED(result, function, before, call, error, failed, declared, given) \
    result function declared {                                                \
        REAL(function)                                                        \
        return before Fails(call, error) ? failed : real given;               \
    }
#define CALL(result, function, call, error, failed, declared, given) NOTED(result, function, , call, error, failed, declared, given)
NOTED(ssize_t, write, Note("write", file, NULL, NULL) COMMA !IsBell(file) &&, Write, ENOSPC, -1, (int file, const void* from, size_t size), (file, from, size))
NOTED(ssize_t, read, !IsBell(file) &&, Read, EIO, -1, (int file, void* to, size_t size), (file, to, size))
NOTED(int, fsync, Note("fsync", file, NULL, NULL) COMMA, Fsync, EIO, -1, (int file), (file))
NOTED(int, rename, Note("rename", -1, from, to) COMMA, Rename, EIO, -1, (const char* from, const char* to), (from, to))
CALL(ssize_t, pread, Read, EIO, -1, (int file, void* to, size_t size, off_t at), (file, to, size, at))
CALL(ssize_t, writev, Write, ENOSPC, -1, (int file, const struct iovec* from, int count), (file, from, count))
CALL(int, renameat, Rename, EIO, -1, (int a, const char* from, int b, const char* to), (a, from, b, to))
CALL(void*, mmap, Mmap, ENOMEM, MAP_FAILED, (void* a, size_t b, int c, int d, int e, off_t f), (a, b, c, d, e, f))
CALL(void*, mmap64, Mmap, ENOMEM, MAP_FAILED, (void* a, size_t b, int c, int d, int e, off64_t f), (a, b, c, d, e, f))
CALL(int, poll, Poll, ENOMEM, -1, (struct pollfd* files, nfds_t count, int time), (files, count, time))
CALL(int, ppoll, Poll, ENOMEM, -1, (struct pollfd* files, nfds_t count, const struct timespec* time, const sigset_t* mask), (files, count, time, mask))
CALL(int, mq_send, MqSend, EBADF, -1, (mqd_t queue, const char* from, size_t size, unsigned priority), (queue, from, size, priority))
CALL(ssize_t, mq_receive, MqReceive, EBADF, -1, (mqd_t queue, char* to, size_t size, unsigned* priority), (queue, to, size, priority))
CALL(int, mq_getattr, MqGetAttr, EBADF, -1, (mqd_t queue, struct mq_attr* to), (queue, to))
CALL(int, sem_trywait, SemTryWait, EINVAL, -1, (sem_t* semaphore), (semaphore))
CALL(int, sem_wait, SemWait, EINVAL, -1, (sem_t* semaphore), (semaphore))
CALL(int, sem_clockwait, SemClockWait, EINVAL, -1, (sem_t* semaphore, clockid_t clock, const struct timespec* until), (semaphore, clock, until))
CALL(int, sem_getvalue, SemGetValue, EINVAL, -1, (sem_t* semaphore, int* to), (semaphore, to))
CALL(int, socket, Socket, EMFILE, -1, (int a, int b, int c), (a, b, c))
CALL(int, connect, Connect, ECONNREFUSED, -1, (int file, const struct sockaddr* to, socklen_t size), (file, to, size))
CALL(int, accept4, Accept, EMFILE, -1, (int file, struct sockaddr* from, socklen_t* size, int flags), (file, from, size, flags))
CALL(ssize_t, recv, Recv, ECONNRESET, -1, (int file, void* to, size_t size, int flags), (file, to, size, flags))
CALL(ssize_t, recvmsg, RecvMsg, ECONNRESET, -1, (int file, struct msghdr* to, int flags), (file, to, flags))
CALL(ssize_t, send, Send, EPIPE, -1, (int file, const void* from, size_t size, int flags), (file, from, size, flags))
CALL(ssize_t, sendmsg, SendMsg, EPIPE, -1, (int file, const struct msghdr* from, int flags), (file, from, flags))
CALL(int, flock, Flock, ENOLCK, -1, (int file, int how), (file, how))
CALL(int, tcsetattr, TcSetAttr, EIO, -1, (int file, int when, const struct termios* state), (file, when, state))
CALL(int, tcgetattr, TcGetAttr, EIO, -1, (int file, struct termios* state), (file, state))
CALL(int, sem_post, SemPost, EOVERFLOW, -1, (sem_t* semaphore), (semaphore))
CALL(int, pthread_create, PthreadCreate, EAGAIN, EAGAIN, (pthread_t* thread, const pthread_attr_t* with, void* (*run)(void*), void* value), (thread, with, run, value))

#define MALLOC(function, declared, given)                       \
    extern void* __libc_##function declared;                    \
    void* function declared {                                   \
        return Fails(Malloc, ENOMEM) ? NULL : __libc_##function given; \
    }
MALLOC(malloc, (size_t size), (size))
MALLOC(calloc, (size_t count, size_t size), (count, size))
MALLOC(realloc, (void* old, size_t size), (old, size))
