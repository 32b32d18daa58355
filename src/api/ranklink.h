#pragma once

#include <string>
#include <vector>

// The transport between the ranks. Every operation but rank(), size(),
// failAll() and takeFailures() is collective: every rank calls it, in the
// same order.
class RankLink {
public:
    virtual ~RankLink() = default;
    virtual int rank() const = 0;
    virtual int size() const = 0;
    // Every rank's `mine` (all of one length), rank after rank.
    virtual std::vector<long long> allGather(const std::vector<long long>& mine) = 0;
    // Rank `root`'s `values` on every rank; the others' are resized to it.
    virtual void broadcast(std::vector<long long>& values, int root) = 0;
    // The message of the lowest rank whose `mine` is not empty, on every
    // rank; empty when no rank failed.
    virtual std::string firstFailure(const std::string& mine) = 0;
    // This rank's error once the ranks have gone their own ways (the search
    // and after it): `text` is printed once, on rank 0's standard error, and
    // every rank ends with status 1. Rank 0 prints it and ends them at once;
    // another rank hands it to rank 0, which takes it in whichever
    // collective it waits in for this rank (close() at the latest).
    [[noreturn]] virtual void failAll(const std::string& text) = 0;
    // Between collectives, on rank 0: ends every rank as failAll() does if
    // another rank has handed its failure; nothing otherwise, or elsewhere.
    virtual void takeFailures() = 0;
    // The last collective of a run, which every rank reaches unless it
    // called failAll(): a failure handed to rank 0 ends every rank here if
    // not before. `failed`: this rank has printed an error of its own, and
    // rank 0 then prints no other.
    virtual void close(bool failed) = 0;
};
