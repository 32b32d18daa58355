#pragma once

#include <string>
#include <vector>

// The transport between the ranks. Every operation but rank(), size() and
// abortAll() is collective: every rank calls it, in the same order.
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
    // Ends every rank at once with `status`.
    [[noreturn]] virtual void abortAll(int status) = 0;
};
