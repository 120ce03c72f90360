// PAUSE: units are written out, then the program waits. At a terminal it
// waits for "go"; otherwise for SIGINT, as the message tells the user.

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "frame/messages.h"
#include "frame/report.h"
#include "krm/program.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

extern "C" void waitpause(int) {}

namespace {

// Anything but exactly "go" and a newline ends the program.
void wait_for_go() {
    fputs(__f90_psfmt(5), stderr);
    fflush(stderr);
    for (const char *want = "go\n"; *want; ++want) {
        int c = getchar();
        if (c != *want) exit(0);
    }
}

// SIGINT is blocked from before the prompt until sigsuspend, so that one
// sent as soon as the prompt is seen waits for sigsuspend and is neither
// lost nor met by the program's own action.
void wait_for_sigint() {
    sigset_t sigint, before, mask;
    sigemptyset(&sigint);
    sigaddset(&sigint, SIGINT);
    sigprocmask(SIG_BLOCK, &sigint, &before);
    mask = before;
    sigdelset(&mask, SIGINT);
    struct sigaction act = {}, old;
    act.sa_handler = waitpause;
    sigemptyset(&act.sa_mask);
    sigaction(SIGINT, &act, &old);
    fprintf(stderr, __f90_psfmt(6), static_cast<int>(getpid()));
    fflush(stderr);
    sigsuspend(&mask);
    sigaction(SIGINT, &old, nullptr);
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

extern "C" KRM_API void __f90_pause(const char *text, int32_t length) {
    __f90_cleanup();
    if (text)
        fprintf(stderr, __f90_psfmt(4), static_cast<int>(length), text);
    else
        fputs(__f90_psfmt(3), stderr);
    fflush(stderr);
    if (isatty(fileno(stdin)))
        wait_for_go();
    else
        wait_for_sigint();
    fputs(__f90_psfmt(7), stderr);
    fflush(stderr);
}
