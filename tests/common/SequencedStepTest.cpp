#include "common/SequencedStep.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

using namespace std::chrono_literals;

TEST(SequencedStep, IsDoneForOnePieceAfterTheOther) {
    for (const std::size_t jobs : {1U, 2U, 5U}) {
        CSequencedStep step;
        std::vector<std::size_t> done; // unguarded: one thread at a time does the step
        ShareOut(60, jobs, [&](std::size_t piece) {
            if (piece % 7 == 0)
                std::this_thread::sleep_for(1ms); // some come behind those after them
            EXPECT_TRUE(step.Do(piece, [&] {
                done.push_back(piece);
                return true;
            }));
        });
        ASSERT_EQ(done.size(), 60U);
        for (std::size_t i = 0; i < done.size(); ++i)
            EXPECT_EQ(done[i], i);
    }
}

TEST(SequencedStep, TellsWhoseItIs) {
    CSequencedStep step;
    EXPECT_TRUE(step.IsNext(0));
    EXPECT_FALSE(step.IsNext(1));
    EXPECT_TRUE(step.Do(0, [&] {
        EXPECT_TRUE(step.IsNext(0)) << "it is not yet done";
        return true;
    }));
    EXPECT_FALSE(step.IsNext(0));
    EXPECT_TRUE(step.IsNext(1));
}

TEST(SequencedStep, HasStoppedWhereItWentWrong) {
    CSequencedStep step;
    EXPECT_FALSE(step.Do(0, [] { return false; }));
    EXPECT_TRUE(step.IsNext(0));
    bool isDone = false;
    EXPECT_FALSE(step.Do(1, [&] { return isDone = true; }));
    EXPECT_FALSE(isDone);
}

TEST(SequencedStep, ThoseBeforeAStoppedPieceGoOn) {
    CSequencedStep step;
    step.StopAt(2);
    step.StopAt(3); // nothing more: those behind 2 have stopped
    EXPECT_FALSE(step.Do(3, [] { return true; }));
    for (const std::size_t piece : {0U, 1U, 2U})
        EXPECT_TRUE(step.Do(piece, [] { return true; }));
}

TEST(SequencedStep, AStoppedPieceWaitsForThoseBeforeIt) {
    CSequencedStep step;
    step.StopAt(1);
    const std::jthread second([&] { EXPECT_TRUE(step.Do(1, [] { return true; })); });
    std::this_thread::sleep_for(5ms);
    EXPECT_TRUE(step.Do(0, [] { return true; }));
}

TEST(SequencedStep, StoppingWakesThoseThatWait) {
    CSequencedStep step;
    std::atomic<int> answered{0};
    const auto wait = [&](std::size_t piece) {
        EXPECT_FALSE(step.Do(piece, [] { return true; }));
        ++answered;
    };
    {
        const std::jthread second(wait, 1);
        const std::jthread third(wait, 2);
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(answered, 0);
        step.StopAt(0);
    }
    EXPECT_EQ(answered, 2);
}

} // namespace
} // namespace trevolt
