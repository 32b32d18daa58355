#include <atomic>
#include <csignal>
#include <iostream>

#include <malloc.h>
#include <unistd.h>

#include "api/qxversion.h"
#include "modeler/launcher.h"

#ifdef QUARRIX_MPI
#include "api/mpiranklink.h"
#endif

namespace {

// Only async-signal-safe calls: write(2) and _exit(2). A running solve is
// abandoned, not stopped cleanly: no destructors, no output section.
// Signals that arrive together (on several threads, or one while the
// handler runs) print the notice once: the first handler writes it and ends
// the process, the others wait for that end.
std::atomic_flag interruptSeen = ATOMIC_FLAG_INIT;

extern "C" void interrupted(int) {
    if (interruptSeen.test_and_set()) {
        for (;;) pause();
    }
    static const char notice[] = "\n\n*** Quarrix interrupted ***\n\n";
    ssize_t ignored = write(STDERR_FILENO, notice, sizeof notice - 1);
    (void)ignored;
    _exit(1);
}

void onInterrupt(int signal) {
    struct sigaction action = {};
    action.sa_handler = interrupted;
    sigemptyset(&action.sa_mask);
    for (int blocked : {SIGTERM, SIGINT, SIGABRT}) sigaddset(&action.sa_mask, blocked);
    sigaction(signal, &action, nullptr);
}

// Building a large model allocates and frees arrays of many megabytes, one
// after the other (scratch per expression, lists per node). By default the
// largest go to the system and back at every allocation, each page faulted
// in and zeroed again; kept in the process instead, freed memory is reused
// as it is. The peak is the same: these arrays are freed before the next
// ones are made.
void keepFreedMemory() {
    mallopt(M_MMAP_THRESHOLD, 512 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_TOP_PAD, 64 << 20);
}

}  // namespace

int main(int argc, char** argv) {
    keepFreedMemory();
#ifdef QUARRIX_MPI
    // Under mpirun, this process is one rank of a search spread over all;
    // started alone, a plain run. Before the handlers: MPI sets its own.
    std::unique_ptr<MpiRankLink> ranks = MpiRankLink::open(argc, argv);
#endif
    for (int signal : {SIGTERM, SIGINT, SIGABRT}) onInterrupt(signal);
    std::cout << QXVersion::getInfo() << std::endl;
    Launcher* launcher = new Launcher(argc, argv);
#ifdef QUARRIX_MPI
    launcher->setRankLink(ranks.get());
#endif
    int status = launcher->run();
    delete launcher;
    return status;
}
