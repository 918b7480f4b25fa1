/* Preloaded into the program: lets the n-th call of one function fail.

   FAULT_CALL  the function (a name of the table below), none when it is missing
   FAULT_N     which call of it fails, from 1
   FAULT_FILE  a file of one 64-bit number per function, of the table's length, which counts the calls

   FAULT_LOG   a file that gets a line for each write, fsync and rename, with the files' paths

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
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

static const char* const Names[] = {"open",   "read",    "write",   "fsync",      "rename",  "mmap",     "poll",
                                    "ioctl",  "malloc",  "mq_open", "mq_send",    "sem_open", "sem_trywait", "sem_post",
                                    "mq_receive", "pthread_create", "mq_getattr", "sem_wait", "sem_clockwait", "sem_getvalue",
                                    "socket", "connect", "accept4", "recv", "recvmsg", "send", "sendmsg", "flock",
                                    "tcsetattr", "tcgetattr"};
enum { Open, Read, Write, Fsync, Rename, Mmap, Poll, Ioctl, Malloc, MqOpen, MqSend, SemOpen, SemTryWait, SemPost,
       MqReceive, PthreadCreate, MqGetAttr, SemWait, SemClockWait, SemGetValue, Socket, Connect, Accept, Recv, RecvMsg, Send,
       SendMsg, Flock, TcSetAttr, TcGetAttr, Count };

static _Atomic uint64_t* Calls;
static int Chosen = -1;
static uint64_t Nth;

__attribute__((constructor)) static void Prepare(void) {
    const char* path = getenv("FAULT_FILE");
    if (path == NULL) {
        return;
    }
    const int file = (int)syscall(SYS_openat, AT_FDCWD, path, O_RDWR, 0);
    void* shared = file < 0 ? MAP_FAILED
                            : (void*)syscall(SYS_mmap, NULL, Count * 8, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (shared == MAP_FAILED) {
        abort();
    }
    syscall(SYS_close, file);
    const char* call = getenv("FAULT_CALL");
    for (int at = 0; at < Count; ++at) {
        if (call != NULL && strcmp(call, Names[at]) == 0) {
            Chosen = at;
        }
    }
    Nth = getenv("FAULT_N") ? strtoull(getenv("FAULT_N"), NULL, 10) : 0;
    Calls = shared;
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

static int Fails(int call, int error) {
    if (Calls == NULL || atomic_fetch_add(&Calls[call], 1) + 1 != Nth || call != Chosen) {
        return 0;
    }
    errno = error;
    return 1;
}

#define REAL(function)                                                   \
    static __typeof__(function)* real;                                   \
    if (real == NULL) {                                                  \
        real = (__typeof__(function)*)dlsym(RTLD_NEXT, #function);       \
    }

#define COMMA ,
#define OPEN(function, declared, given)                                  \
    int function(declared const char* path, int flags, ...) {            \
        va_list more;                                                    \
        va_start(more, flags);                                           \
        const mode_t mode = va_arg(more, mode_t);                        \
        va_end(more);                                                    \
        REAL(function)                                                   \
        return Fails(Open, EMFILE) ? -1 : real(given path, flags, mode); \
    }
OPEN(open, , )
OPEN(open64, , )
OPEN(openat, int folder COMMA, folder COMMA)
OPEN(openat64, int folder COMMA, folder COMMA)

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

int ioctl(int file, unsigned long request, ...) {
    va_list more;
    va_start(more, request);
    void* value = va_arg(more, void*);
    va_end(more);
    REAL(ioctl)
    return Fails(Ioctl, EIO) ? -1 : real(file, request, value);
}

mqd_t mq_open(const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    struct mq_attr* shape = va_arg(more, struct mq_attr*);
    va_end(more);
    REAL(mq_open)
    return Fails(MqOpen, ENOSPC) ? (mqd_t)-1 : real(name, flags, mode, shape);
}

sem_t* sem_open(const char* name, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    const unsigned value = va_arg(more, unsigned);
    va_end(more);
    REAL(sem_open)
    return Fails(SemOpen, ENOSPC) ? SEM_FAILED : real(name, flags, mode, value);
}

extern void* __libc_malloc(size_t size);
void* malloc(size_t size) {
    return Fails(Malloc, ENOMEM) ? NULL : __libc_malloc(size);
}
