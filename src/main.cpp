#include <csignal>
#include <iostream>

#include <unistd.h>

#include "api/qxversion.h"

namespace {

// Only async-signal-safe calls: write(2) and _exit(2). A running solve is
// abandoned, not stopped cleanly.
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
    if (argc < 2) {
        std::cout << "Usage: quarrix file.qxm [global variables]" << std::endl << std::endl;
        return 0;
    }
    return 0;
}
