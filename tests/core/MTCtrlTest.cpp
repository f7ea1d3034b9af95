#include "core/MTCtrl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// What the tasks of one run tell.
struct Board
{
    std::mutex mtx;
    std::condition_variable changed;
    std::vector<int> vStarted;
    std::set<std::thread::id> sThreads;
    int numRunning = 0;
};

struct Task
{
    void note()
    {
        const std::lock_guard<std::mutex> lock(pBoard->mtx);
        pBoard->vStarted.push_back(id);
        pBoard->sThreads.insert(std::this_thread::get_id());
    }
    /// Ends only when three tasks run at the same time: a runner that keeps tasks apart hangs here.
    void meetTwoOthers()
    {
        note();
        std::unique_lock<std::mutex> lock(pBoard->mtx);
        ++pBoard->numRunning;
        pBoard->changed.notify_all();
        pBoard->changed.wait(lock, [this] { return pBoard->numRunning >= 3; });
    }
    void failAtFive()
    {
        note();
        if (id >= 5) throw std::runtime_error("task " + std::to_string(id));
    }

    int id = 0;
    Board* pBoard = nullptr;
};

/// Runs on so many threads and returns the text of the exception, if any.
std::string runTasks(int numTasks, int numThreads, void (Task::*function)(), Board& board)
{
    std::vector<Task> vTasks;
    for (int i = 0; i < numTasks; ++i) vTasks.push_back(Task{i, &board});
    MTCtrl<Task> ctrl;
    for (Task& task : vTasks) ctrl.add(&task);
    try {
        ctrl.run(function, numThreads);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(MTCtrl, EveryTaskRunsOnceWhateverTheNumberOfThreads)
{
    for (const int numTasks : {0, 1, 7, 500}) {
        for (const int numThreads : {-3, 0, 1, 2, 4, 16}) {
            Board board;
            EXPECT_EQ(runTasks(numTasks, numThreads, &Task::note, board), "");
            if (numThreads < 2) {
                EXPECT_TRUE(std::is_sorted(board.vStarted.begin(), board.vStarted.end())) << "not in list order";
                EXPECT_LE(board.sThreads.size(), 1u);
                EXPECT_EQ(board.sThreads.count(std::this_thread::get_id()), board.sThreads.size());
            }
            std::sort(board.vStarted.begin(), board.vStarted.end());
            std::vector<int> vAll(static_cast<std::size_t>(numTasks));
            std::iota(vAll.begin(), vAll.end(), 0);
            EXPECT_EQ(board.vStarted, vAll);
            EXPECT_LE(board.sThreads.size(), static_cast<std::size_t>(std::max(1, numThreads)));
        }
    }
}

TEST(MTCtrl, TasksOfSeveralThreadsRunAtTheSameTime)
{
    Board board;
    runTasks(3, 3, &Task::meetTwoOthers, board);
    EXPECT_EQ(board.sThreads.size(), 3u);
}

TEST(MTCtrl, FirstExceptionEndsAllThreadsAndReachesTheCaller)
{
    Board inlineBoard;
    EXPECT_EQ(runTasks(100, 1, &Task::failAtFive, inlineBoard), "task 5");
    EXPECT_EQ(inlineBoard.vStarted.size(), 6u) << "a task was started after the failure";
    for (int repetition = 0; repetition < 20; ++repetition) {
        Board board;
        EXPECT_EQ(runTasks(10000, 4, &Task::failAtFive, board).substr(0, 5), "task ");
        EXPECT_LT(board.vStarted.size(), 10000u);
    }
}
