/* Preloaded into the worker process: makes the driver's waits shorter, and ends processes at a given
   exchange. The driver calls these functions by their plain names.

   SHORTEN=N      every wait is an N-th as long
   KILL_AT=K      the K-th request to the register, counted from 1 ...
   KILL_WHEN=     before: it is not sent; sent: it is; answered: the wait behind its answer begins
   KILL_WHOM=     process numbers; 0 is the process itself
   COUNT_FILE=    receives one byte for each request, to know how many there are */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static long number(const char* name, long otherwise)
{
    const char* const text = getenv(name);
    return text != NULL && *text != '\0' ? strtol(text, NULL, 10) : otherwise;
}

static int is(const char* name, const char* value)
{
    const char* const text = getenv(name);
    return text != NULL && strcmp(text, value) == 0;
}

static long requests;
static int answered;

static void kill_them(void)
{
    const char* whom = getenv("KILL_WHOM");
    char* end = NULL;
    int myself = 0;
    while (whom != NULL && *whom != '\0') {
        const long pid = strtol(whom, &end, 10);
        if (end == whom) {
            break;
        }
        myself |= pid == 0;
        if (pid != 0) {
            kill((pid_t)pid, SIGKILL);
        }
        whom = *end == ',' ? end + 1 : end;
    }
    if (myself) {
        kill(getpid(), SIGKILL);
    }
}

int usleep(useconds_t us)
{
    static int (*real)(useconds_t);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "usleep");
    }
    if (answered && requests == number("KILL_AT", 0) && is("KILL_WHEN", "answered")) {
        answered = 0;
        kill_them();
    }
    return real(us / (useconds_t)number("SHORTEN", 1));
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
    const int now = requests == number("KILL_AT", 0);
    if (getenv("COUNT_FILE") != NULL) {
        const int file = open(getenv("COUNT_FILE"), O_WRONLY | O_CREAT | O_APPEND, 0600);
        if (real(file, "", 1) != 1) {
            abort();
        }
        close(file);
    }
    if (now && is("KILL_WHEN", "before")) {
        kill_them();
    }
    const ssize_t result = real(fd, from, count);
    if (now && is("KILL_WHEN", "sent")) {
        kill_them();
    }
    return result;
}
