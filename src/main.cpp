#include <csignal>
#include <iostream>

#include <unistd.h>

#include "api/qxversion.h"
#include "modeler/launcher.h"

namespace {

// Only async-signal-safe calls: write(2) and _exit(2). A running solve is
// abandoned, not stopped cleanly: no destructors, no output section.
extern "C" void interrupted(int) {
    static const char notice[] = "\n\n*** Quarrix interrupted ***\n\n";
    ssize_t ignored = write(STDERR_FILENO, notice, sizeof notice - 1);
    (void)ignored;
    _exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGTERM, interrupted);
    std::signal(SIGINT, interrupted);
    std::signal(SIGABRT, interrupted);
    std::cout << QXVersion::getInfo() << std::endl;
    Launcher* launcher = new Launcher(argc, argv);
    int status = launcher->run();
    delete launcher;
    return status;
}
