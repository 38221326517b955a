/* Preloaded into the process that drives the register: makes the driver's waits shorter, and ends
   processes or cuts the line at a given exchange. The driver calls these functions by their plain
   names.

   SHORTEN=N          every pause is an N-th as long
   STRIKE_AT=K        something happens at the K-th request to the register, counted from 1:
   STRIKE_WHEN=       before it is sent, when it is sent, or when it is answered
   STRIKE=            the processes that are killed: worker, host, register in any combination;
                      or cut: the line is dead for STRIKE_FOR requests
   REGISTER_PID=      the register's process
   DISK_FULL_AT=K     the K-th writing of the journal and all behind it find the disk full ...
   DISK_FULL_IN=      in this program: host or worker
   SHORTEN also makes the worker's monotonic clock run N times as fast.
   UNREADABLE_FROM=K  no record of the tape is read from the K-th on, counted from 1
   TRACE_FILE=        receives what reaches the disk and the register, one event a line: "write PATH",
                      "sync PATH", "unlink PATH", "request COMMAND"
   COUNT_FILE=        receives one byte for each request, to know how many there are */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static long number(const char* name, long otherwise)
{
    const char* const text = getenv(name);
    return text != NULL && *text != '\0' ? strtol(text, NULL, 10) : otherwise;
}

static int says(const char* name, const char* word)
{
    const char* const text = getenv(name);
    return text != NULL && strstr(text, word) != NULL;
}

static int is_worker(void)
{
    return strstr(program_invocation_short_name, "kkmcheck-worker") != NULL;
}

/* The worker is no child of the host's. */
__attribute__((constructor)) static void tell_host(void)
{
    char text[16];
    if (!is_worker()) {
        snprintf(text, sizeof text, "%ld", (long)getpid());
        setenv("HOST_PID", text, 1);
    }
}

static long requests;
static int answered;
static int swallowed;

static int strikes_now(const char* when)
{
    return requests == number("STRIKE_AT", 0) && says("STRIKE_WHEN", when);
}

static void strike(void)
{
    if (says("STRIKE", "register")) {
        kill((pid_t)number("REGISTER_PID", getpid()), SIGKILL);
    }
    if (says("STRIKE", "host")) {
        kill((pid_t)number("HOST_PID", getpid()), SIGKILL);
    }
    if (says("STRIKE", "worker")) {
        kill(getpid(), SIGKILL);
    }
}

static int line_is_cut(void)
{
    const long first = number("STRIKE_AT", 0);
    return says("STRIKE", "cut") && requests >= first &&
           requests < first + number("STRIKE_FOR", 1);
}

/* Command 12 asks for a record by its number from 0, the high byte first. The last one of all stands
   before the first of an empty tape. */
static int is_unreadable(const unsigned char* request, size_t count)
{
    const long first = number("UNREADABLE_FROM", 0);
    const long asked = count > 5 && request[3] == 0x12 ? request[4] * 256 + request[5] + 1 : 0;
    return first != 0 && asked >= first && asked < 65536;
}

int usleep(useconds_t us)
{
    static int (*real)(useconds_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "usleep");
    }
    if (answered && strikes_now("answered")) {
        strike();
    }
    return real(us / (useconds_t)number("SHORTEN", 1));
}

int poll(struct pollfd* files, nfds_t count, int timeout)
{
    static int (*real)(struct pollfd*, nfds_t, int);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "poll");
    }
    /* An answer that cannot come is not waited for. */
    return real(files, count, swallowed ? 1 : timeout);
}

ssize_t read(int fd, void* to, size_t count)
{
    static ssize_t (*real)(int, void*, size_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "read");
    }
    const ssize_t result = real(fd, to, count);
    answered |= count == 1 && isatty(fd) == 1;
    return result;
}

static void trace(const char* event, const char* what)
{
    const int file = open(getenv("TRACE_FILE"), O_WRONLY | O_CREAT | O_APPEND, 0600);
    if (dprintf(file, "%s %s\n", event, what) < 0) {
        abort();
    }
    close(file);
}

static void trace_file(const char* event, int fd)
{
    char link[64];
    char path[512];
    ssize_t size;
    if (getenv("TRACE_FILE") == NULL) {
        return;
    }
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    size = readlink(link, path, sizeof path - 1);
    path[size > 0 ? size : 0] = '\0';
    trace(event, path);
}

int fsync(int fd)
{
    static int (*real)(int);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "fsync");
    }
    trace_file("sync", fd);
    return real(fd);
}

int fdatasync(int fd)
{
    static int (*real)(int);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "fdatasync");
    }
    trace_file("sync", fd);
    return real(fd);
}

int unlink(const char* path)
{
    static int (*real)(const char*);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "unlink");
    }
    if (getenv("TRACE_FILE") != NULL) {
        trace("unlink", path);
    }
    return real(path);
}

/* The journal and what SQLite puts beside it are the only regular files that are written in places. */
static int disk_is_full(void)
{
    static long writings;
    const long first = number("DISK_FULL_AT", 0);
    if (first == 0 || !says("DISK_FULL_IN", is_worker() ? "worker" : "host")) {
        return 0;
    }
    return ++writings >= first;
}

/* Alarms keep to the fast clock. */
int setitimer(__itimer_which_t which, const struct itimerval* restrict value,
              struct itimerval* restrict old)
{
    static int (*real)(__itimer_which_t, const struct itimerval*, struct itimerval*);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "setitimer");
    }
    const long long us =
        (value->it_value.tv_sec * 1000000LL + value->it_value.tv_usec) / number("SHORTEN", 1);
    struct itimerval sooner = {{0, 0}, {0, 0}};
    sooner.it_value.tv_sec = (time_t)(us / 1000000);
    sooner.it_value.tv_usec = (suseconds_t)(us % 1000000);
    return real(which, &sooner, old);
}

ssize_t pwrite(int fd, const void* from, size_t count, off_t at)
{
    static ssize_t (*real)(int, const void*, size_t, off_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "pwrite");
    }
    trace_file("write", fd);
    if (disk_is_full()) {
        errno = ENOSPC;
        return -1;
    }
    return real(fd, from, count, at);
}

ssize_t pwrite64(int fd, const void* from, size_t count, off64_t at)
{
    static ssize_t (*real)(int, const void*, size_t, off64_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "pwrite64");
    }
    trace_file("write", fd);
    if (disk_is_full()) {
        errno = ENOSPC;
        return -1;
    }
    return real(fd, from, count, at);
}

int clock_gettime(clockid_t clock, struct timespec* to)
{
    static int (*real)(clockid_t, struct timespec*);
    static long long begun;
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "clock_gettime");
    }
    const int result = real(clock, to);
    if (clock == CLOCK_MONOTONIC && is_worker()) {
        const long long now = to->tv_sec * 1000000000LL + to->tv_nsec;
        if (begun == 0) {
            begun = now;
        }
        const long long shown = begun + (now - begun) * number("SHORTEN", 1);
        to->tv_sec = (time_t)(shown / 1000000000LL);
        to->tv_nsec = (long)(shown % 1000000000LL);
    }
    return result;
}

ssize_t write(int fd, const void* from, size_t count)
{
    static ssize_t (*real)(int, const void*, size_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "write");
    }
    if (!isatty(fd)) {
        return real(fd, from, count);
    }
    ++requests;
    answered = 0;
    if (getenv("TRACE_FILE") != NULL && count > 3) {
        char command[8];
        snprintf(command, sizeof command, "%02X", ((const unsigned char*)from)[3]);
        trace("request", command);
    }
    if (getenv("COUNT_FILE") != NULL) {
        const int file = open(getenv("COUNT_FILE"), O_WRONLY | O_CREAT | O_APPEND, 0600);
        if (real(file, "", 1) != 1) {
            abort();
        }
        close(file);
    }
    if (strikes_now("before")) {
        strike();
    }
    swallowed = line_is_cut() || is_unreadable(from, count);
    if (swallowed) {
        return (ssize_t)count;
    }
    const ssize_t result = real(fd, from, count);
    if (strikes_now("sent")) {
        strike();
    }
    return result;
}
