#include "api/mpiranklink.h"

#include <mpi.h>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Whether an MPI launcher started this process: its environment says so.
// A plain `quarrix` run then never starts MPI, and behaves as without it.
bool launchedByMpi() {
    for (const char* name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK"})
        if (std::getenv(name) != nullptr) return true;
    return false;
}

// Every way out of the process (the usage message's exit included) ends
// MPI properly, except abortAll's.
void finalize() {
    int finalized = 0;
    MPI_Finalized(&finalized);
    if (!finalized) MPI_Finalize();
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
            close(null);
        }
    }
    return std::unique_ptr<MpiRankLink>(new MpiRankLink(rank, size));
}

std::vector<long long> MpiRankLink::allGather(const std::vector<long long>& mine) {
    std::vector<long long> all(mine.size() * static_cast<std::size_t>(nbRanks));
    const int count = static_cast<int>(mine.size());
    MPI_Allgather(mine.data(), count, MPI_LONG_LONG, all.data(), count, MPI_LONG_LONG, MPI_COMM_WORLD);
    return all;
}

void MpiRankLink::broadcast(std::vector<long long>& values, int root) {
    long long count = static_cast<long long>(values.size());
    MPI_Bcast(&count, 1, MPI_LONG_LONG, root, MPI_COMM_WORLD);
    values.resize(static_cast<std::size_t>(count));
    MPI_Bcast(values.data(), static_cast<int>(count), MPI_LONG_LONG, root, MPI_COMM_WORLD);
}

std::string MpiRankLink::firstFailure(const std::string& mine) {
    const std::vector<long long> lengths = allGather({static_cast<long long>(mine.size())});
    int first = 0;
    while (first < nbRanks && lengths[first] == 0) ++first;
    if (first == nbRanks) return "";
    std::string text = rank() == first ? mine : std::string(static_cast<std::size_t>(lengths[first]), ' ');
    MPI_Bcast(&text[0], static_cast<int>(text.size()), MPI_CHAR, first, MPI_COMM_WORLD);
    return text;
}

void MpiRankLink::abortAll(int status) {
    MPI_Abort(MPI_COMM_WORLD, status);
    std::_Exit(status);
}
