// A search spread over ranks, run in one process: each rank is a solver on
// its own thread, linked by an in-memory stand-in for the MPI transport, so
// that the exchange's logic is tested in every build.

#include "apitesting.h"

#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"
#include "api/ranklink.h"
#include "solver/kernel/portfolio.h"
#include "solver/kernel/quickrand.h"

#include <condition_variable>
#include <mutex>
#include <thread>

using Op = QXOperator;

namespace {

// The collectives over shared memory: every call is a rendezvous of all
// ranks.
class Rendezvous {
public:
    explicit Rendezvous(int size) : size(size), slots(size) {}

    std::vector<std::vector<long long>> exchange(int rank, const std::vector<long long>& mine) {
        std::unique_lock<std::mutex> lock(mutex);
        waitFor(lock, [&] { return !reading; });
        slots[rank] = mine;
        if (++arrived == size) {
            reading = true;
            result = slots;
            changed.notify_all();
        }
        waitFor(lock, [&] { return reading; });
        std::vector<std::vector<long long>> all = result;
        if (--arrived == 0) {
            reading = false;
            changed.notify_all();
        }
        return all;
    }

private:
    template <typename Ready>
    void waitFor(std::unique_lock<std::mutex>& lock, Ready ready) {
        while (!ready()) changed.wait(lock);
    }

    const int size;
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    bool reading = false;
    std::vector<std::vector<long long>> slots, result;
};

class MemoryLink : public RankLink {
public:
    MemoryLink(Rendezvous& rendezvous, int rank, int size) : rendezvous(rendezvous), myRank(rank), nbRanks(size) {}
    int rank() const override { return myRank; }
    int size() const override { return nbRanks; }
    std::vector<long long> allGather(const std::vector<long long>& mine) override {
        std::vector<long long> all;
        for (const auto& each : rendezvous.exchange(myRank, mine)) all.insert(all.end(), each.begin(), each.end());
        return all;
    }
    void broadcast(std::vector<long long>& values, int root) override {
        values = rendezvous.exchange(myRank, myRank == root ? values : std::vector<long long>())[root];
    }
    std::string firstFailure(const std::string& mine) override {
        for (const auto& each : rendezvous.exchange(myRank, std::vector<long long>(mine.begin(), mine.end())))
            if (!each.empty()) return std::string(each.begin(), each.end());
        return "";
    }
    [[noreturn]] void failAll(const std::string&) override { std::abort(); }
    void takeFailures() override {}
    void close(bool) override { rendezvous.exchange(myRank, {}); }

private:
    Rendezvous& rendezvous;
    int myRank, nbRanks;
};

// Max-cut on a random graph, searched by descent (annealing level 0), which
// stops in a seed's own local optimum (without the deep moves, which lead
// every seed to the same cut here).
struct CutSolve {
    CutSolve(unsigned int seed, int iterations, int restartShare, int period = 0) {
        QXModel* m = solver.getModel();
        const unsigned int n = 120;
        for (unsigned int i = 0; i < n; ++i) x.push_back(m->createExpression(Op::Bool));
        cut = m->createExpression(Op::Sum);
        Quickrand rand(17);
        for (int e = 0; e < 600; ++e) {
            unsigned int u = rand.nextInt(n), v = rand.nextInt(n, u);
            cut->addOperand(m->createExpression(Op::Neq, x[u], x[v]));
        }
        m->addObjective(cut, QXObjectiveDirection::Maximize);
        m->close();
        QXParam* param = solver.getParam();
        param->setNbThreads(1);
        param->setSeed(static_cast<int>(seed));
        param->setVerbosity(0);
        param->setAnnealingLevel(0);
        param->setAdvancedParam("restartShare", restartShare);
        param->setAdvancedParam("kDeepEnabled", 0);
        if (period > 0) param->setAdvancedParam("exchangeIterationPeriod", period);
        solver.setDisplayCallback(nullptr, nullptr);
        solver.createPhase()->setIterationLimit(iterations);
    }
    int64_t value() { return solver.getSolution()->getValue(cut); }
    std::vector<int64_t> decisions() { return solutionValues(solver, x); }

    Quarrix solver;
    std::vector<QXExpression*> x;
    QXExpression* cut;
};

// Solves on `size` ranks, each on its thread; the solves of every rank.
std::vector<std::unique_ptr<CutSolve>> solveOnRanks(int size, unsigned int seed, int iterations, int share,
                                                    int period = 0) {
    Rendezvous rendezvous(size);
    std::vector<std::unique_ptr<CutSolve>> solves;
    std::vector<std::unique_ptr<MemoryLink>> links;
    for (int r = 0; r < size; ++r) {
        solves.push_back(std::make_unique<CutSolve>(seed, iterations, share, period));
        links.push_back(std::make_unique<MemoryLink>(rendezvous, r, size));
        solves.back()->solver.setRankLink(links.back().get());
    }
    std::vector<std::thread> ranks;
    for (int r = 0; r < size; ++r) ranks.emplace_back([&solves, r] { solves[r]->solver.solve(); });
    for (std::thread& rank : ranks) rank.join();
    return solves;
}

int64_t plainValue(unsigned int seed, int iterations) {
    CutSolve alone(seed, iterations, 0);
    alone.solver.solve();
    return alone.value();
}

}  // namespace

TEST(Ranks, WithoutRestartsEachRankSearchesAsAloneAndRankZeroGetsTheBest) {
    const unsigned int seed = 3;
    std::vector<int64_t> alone;
    for (int r = 0; r < 3; ++r) alone.push_back(plainValue(Portfolio::rankSeed(seed, r), 4000));
    ASSERT_FALSE(alone[0] == alone[1] && alone[1] == alone[2]) << "the seeds must reach different cuts";

    std::vector<std::unique_ptr<CutSolve>> ranks = solveOnRanks(3, seed, 4000, 0);
    EXPECT_EQ(ranks[0]->value(), *std::max_element(alone.begin(), alone.end()));
    // The others keep their own results.
    EXPECT_EQ(ranks[1]->value(), alone[1]);
    EXPECT_EQ(ranks[2]->value(), alone[2]);
    // Every rank's statistics sum the iterations and moves of all.
    for (const auto& rank : ranks) {
        EXPECT_EQ(rank->solver.getStatistics()->getNbIterations(), 12000);
        EXPECT_EQ(rank->solver.getStatistics()->getNbMoves(), 12000);
    }
}

TEST(Ranks, RestartsAtIterationCountsAreReproducibleAndNeverWorseThanOneRank) {
    const int64_t oneRank = plainValue(5, 4000);
    std::vector<std::vector<int64_t>> results;
    for (int run = 0; run < 2; ++run) {
        std::vector<std::unique_ptr<CutSolve>> ranks = solveOnRanks(2, 5, 4000, 100, 500);
        std::vector<int64_t> result = ranks[0]->decisions();
        result.push_back(ranks[1]->value());
        results.push_back(result);
        // Rank 0 ends with the better of the two ranks' results, and it
        // never restarts: at least what it reaches alone.
        EXPECT_GE(ranks[0]->value(), ranks[1]->value());
        EXPECT_GE(ranks[0]->value(), oneRank);
        EXPECT_EQ(ranks[0]->solver.getStatistics()->getNbIterations(), 8000);
    }
    EXPECT_EQ(results[0], results[1]);
}
