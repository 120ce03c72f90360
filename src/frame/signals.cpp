// A fatal signal under the compatibility start-up: units are written out, a
// short report names the program and the signal, and the signal is raised
// again with its default action so that the parent sees how the process died.

#include "frame/signals.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "frame/program_state.h"
#include "frame/report.h"

extern "C" {

const int f90_signals_id[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,  SIGTRAP, SIGBUS,  SIGSEGV,
                              SIGSYS,  SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ, 0};

const char *const f90_signals_name[34] = {
    "",          "SIGHUP",  "SIGINT",    "SIGQUIT", "SIGILL",    "SIGTRAP", "SIGABRT",
    "SIGBUS",    "SIGFPE",  "SIGKILL",   "SIGUSR1", "SIGSEGV",   "SIGUSR2", "SIGPIPE",
    "SIGALRM",   "SIGTERM", "SIGSTKFLT", "SIGCHLD", "SIGCONT",   "SIGSTOP", "SIGTSTP",
    "SIGTTIN",   "SIGTTOU", "SIGURG",    "SIGXCPU", "SIGXFSZ",   "SIGVTALRM", "SIGPROF",
    "SIGWINCH",  "SIGPOLL", "SIGPWR",    "SIGSYS",  "SIG32",     "SIG33",
};
const int f90_signals_name_length = 34;

}  // extern "C"

namespace {

pthread_mutex_t __f90_signal_pv = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t __f90_stderr_pv = PTHREAD_MUTEX_INITIALIZER;
int already_terminating;

void write_report(int sig, const siginfo_t *info) {
    pthread_mutex_lock(&__f90_stderr_pv);
    fputs("\n", stderr);
    if (__xargv && __xargv[0])
        fprintf(stderr, "*** TERMINATING  %s\n", __xargv[0]);
    else
        fputs("*** TERMINATING\n", stderr);
    if (sig == SIGSEGV && info && info->si_code == SEGV_ACCERR) {
        fprintf(stderr, "*** Received signal %d\n", sig);
        fputs("POSSIBLE ATTEMPT TO MODIFY CONSTANT\n", stderr);
    } else if (sig >= 1 && sig <= 33) {
        fprintf(stderr, "*** Received signal %d %s\n", sig, f90_signals_name[sig]);
    } else {
        fprintf(stderr, "*** Received signal %d\n", sig);
    }
    fflush(stderr);
    pthread_mutex_unlock(&__f90_stderr_pv);
}

}  // namespace

extern "C" void __f90_signals_f77compat(int sig, siginfo_t *info, void *) {
    pid_t pid = getpid();
    pthread_mutex_lock(&__f90_signal_pv);
    if (already_terminating) {
        // A second fatal signal while the first is being reported.
        pthread_mutex_unlock(&__f90_signal_pv);
        kill(pid, SIGKILL);
    }
    already_terminating = 1;

    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    __f90_cleanup();
    write_report(sig, info);
    pthread_mutex_unlock(&__f90_signal_pv);

    if (sig > 48) abort();
    struct sigaction dfl = {};
    dfl.sa_handler = SIG_DFL;
    sigemptyset(&dfl.sa_mask);
    sigaction(sig, &dfl, nullptr);
    sigset_t just_this;
    sigemptyset(&just_this);
    sigaddset(&just_this, sig);
    sigprocmask(SIG_UNBLOCK, &just_this, nullptr);
    kill(pid, sig);
    abort();
}

namespace krm {

void install_fatal_signal_handler() {
    struct sigaction act = {};
    act.sa_sigaction = __f90_signals_f77compat;
    act.sa_flags = SA_SIGINFO;
    sigfillset(&act.sa_mask);
    for (const int *s = f90_signals_id; *s; ++s) {
        struct sigaction present;
        if (sigaction(*s, nullptr, &present) != 0) continue;
        if (!(present.sa_flags & SA_SIGINFO) && present.sa_handler == SIG_DFL) sigaction(*s, &act, nullptr);
    }
}

}  // namespace krm
