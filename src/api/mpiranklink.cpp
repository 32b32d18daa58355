#include "api/mpiranklink.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <thread>
#include <unistd.h>

namespace {

const int FAILURE_TAG = 1;

// Whether an MPI launcher started this process: its environment says so.
// A plain `quarrix` run then never starts MPI, and behaves as without it.
bool launchedByMpi() {
    for (const char* name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK"})
        if (std::getenv(name) != nullptr) return true;
    return false;
}

// Every way out of the process (the usage message's exit included) ends
// MPI properly, except an abort's.
void finalize() {
    int finalized = 0;
    MPI_Finalized(&finalized);
    if (!finalized) MPI_Finalize();
}

[[noreturn]] void abortAll() {
    MPI_Abort(MPI_COMM_WORLD, 1);
    std::_Exit(1);
}

}  // namespace

std::unique_ptr<MpiRankLink> MpiRankLink::open(int& argc, char**& argv) {
    if (!launchedByMpi()) return nullptr;
    int provided = 0;
    MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &provided);
    std::atexit(finalize);
    int rank = 0, size = 1;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    MPI_Comm_size(MPI_COMM_WORLD, &size);
    if (size < 2) return nullptr;
    // Rank 0 alone prints; the others' sections and solver stay silent.
    if (rank != 0) {
        const int null = ::open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, STDOUT_FILENO);
            ::close(null);
        }
    }
    MPI_Comm failures;
    MPI_Comm_dup(MPI_COMM_WORLD, &failures);
    return std::unique_ptr<MpiRankLink>(new MpiRankLink(rank, size, failures));
}

std::vector<long long> MpiRankLink::allGather(const std::vector<long long>& mine) {
    std::vector<long long> all(mine.size() * static_cast<std::size_t>(nbRanks));
    const int count = static_cast<int>(mine.size());
    MPI_Request request;
    MPI_Iallgather(mine.data(), count, MPI_LONG_LONG, all.data(), count, MPI_LONG_LONG, MPI_COMM_WORLD,
                   &request);
    await(request);
    return all;
}

void MpiRankLink::broadcast(std::vector<long long>& values, int root) {
    long long count = static_cast<long long>(values.size());
    broadcast(&count, 1, MPI_LONG_LONG, root);
    values.resize(static_cast<std::size_t>(count));
    broadcast(values.data(), static_cast<int>(count), MPI_LONG_LONG, root);
}

void MpiRankLink::broadcast(void* data, int count, MPI_Datatype type, int root) {
    MPI_Request request;
    MPI_Ibcast(data, count, type, root, MPI_COMM_WORLD, &request);
    await(request);
}

std::string MpiRankLink::firstFailure(const std::string& mine) {
    const std::vector<long long> lengths = allGather({static_cast<long long>(mine.size())});
    int first = 0;
    while (first < nbRanks && lengths[first] == 0) ++first;
    if (first == nbRanks) return "";
    std::string text = rank() == first ? mine : std::string(static_cast<std::size_t>(lengths[first]), ' ');
    broadcast(&text[0], static_cast<int>(text.size()), MPI_CHAR, first);
    return text;
}

void MpiRankLink::close(bool failed) {
    printedOwn = failed;
    MPI_Request request;
    MPI_Ibarrier(MPI_COMM_WORLD, &request);
    await(request);
}

// The collectives are non-blocking so that rank 0, waiting in one for a
// rank that failed, still sees the failure: the polling is what MPI_Wait
// does anyway, with a probe of the failures' channel beside it.
void MpiRankLink::await(MPI_Request& request) {
    for (;;) {
        int done = 0;
        MPI_Test(&request, &done, MPI_STATUS_IGNORE);
        if (done) return;
        takeFailures();
    }
}

void MpiRankLink::takeFailures() {
    if (myRank != 0) return;
    int arrived = 0;
    MPI_Message message;
    MPI_Status status;
    MPI_Improbe(MPI_ANY_SOURCE, FAILURE_TAG, failures, &arrived, &message, &status);
    if (!arrived) return;
    int length = 0;
    MPI_Get_count(&status, MPI_CHAR, &length);
    std::string text(static_cast<std::size_t>(length), '\0');
    MPI_Mrecv(&text[0], length, MPI_CHAR, &message, MPI_STATUS_IGNORE);
    if (printedOwn) abortAll();
    printAndAbort(text);
}

void MpiRankLink::printAndAbort(const std::string& text) {
    std::cout.flush();
    std::cerr << text;
    std::cerr.flush();
    abortAll();
}

void MpiRankLink::failAll(const std::string& text) {
    if (myRank == 0) printAndAbort(text);
    // Rank 0 ends this rank: it cannot complete a collective without it,
    // and its last one, close(), comes after everything it does. Until
    // then the send is driven on, gently.
    MPI_Request request;
    MPI_Isend(text.data(), static_cast<int>(text.size()), MPI_CHAR, 0, FAILURE_TAG, failures, &request);
    for (;;) {
        int done = 0;
        if (request != MPI_REQUEST_NULL) MPI_Test(&request, &done, MPI_STATUS_IGNORE);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}
