// Qt starts child processes by a kernel call that qemu's user emulation refuses, once a question has been
// answered that qemu hands to the real kernel. This answers as a kernel of before 5.4 does, and Qt takes
// fork() as there.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// The children are this machine's programs, and could not load it.
__attribute__((constructor)) static void leaveTheEnvironment(void)
{
    unsetenv("LD_PRELOAD");
}

long syscall(long number, ...)
{
    long a[6];
    va_list arguments;
    va_start(arguments, number);
    for (int i = 0; i < 6; ++i)
        a[i] = va_arg(arguments, long);
    va_end(arguments);
    if (number == SYS_waitid && a[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    static long (*real)(long, ...);
    if (!real)
        real = (long (*)(long, ...))dlsym(RTLD_NEXT, "syscall");
    return real(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

// Such a child waits for a word of its parent before it becomes the program, for ever where the parent is
// killed.
pid_t fork(void)
{
    pid_t (*real)(void) = (pid_t(*)(void))dlsym(RTLD_NEXT, "fork");
    const pid_t parent = getpid();
    const pid_t child = real();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(1);
    }
    return child;
}
