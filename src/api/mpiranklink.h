#pragma once

#include "api/ranklink.h"

#include <mpi.h>

#include <memory>

// The ranks of an MPI job (mpirun), over MPI_COMM_WORLD; built only with
// -DQUARRIX_MPI=ON. MPI is called from the main thread only.
class MpiRankLink : public RankLink {
public:
    // Under a launcher with more than one rank: MPI started, the standard
    // output of every rank but 0 sent to /dev/null, and the link. Otherwise
    // null, and the process runs as a plain one (MPI not even started when
    // no MPI launcher started it).
    static std::unique_ptr<MpiRankLink> open(int& argc, char**& argv);

    int rank() const override { return myRank; }
    int size() const override { return nbRanks; }
    std::vector<long long> allGather(const std::vector<long long>& mine) override;
    void broadcast(std::vector<long long>& values, int root) override;
    std::string firstFailure(const std::string& mine) override;
    [[noreturn]] void failAll(const std::string& text) override;
    void takeFailures() override;
    void close(bool failed) override;

private:
    MpiRankLink(int rank, int size, MPI_Comm failures) : myRank(rank), nbRanks(size), failures(failures) {}

    // Rank `root`'s `count` values of `type` at `data`, on every rank.
    void broadcast(void* data, int count, MPI_Datatype type, int root);
    // Waits for a collective to complete; rank 0 meanwhile takes a failure
    // handed by a rank that will never join it.
    void await(MPI_Request& request);
    [[noreturn]] void printAndAbort(const std::string& text);

    int myRank;
    int nbRanks;
    // The failures' own channel, apart from the collectives' traffic.
    MPI_Comm failures;
    bool printedOwn = false;
};
