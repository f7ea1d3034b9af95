#ifndef LUMO25D_CORE_MTCTRL_H
#define LUMO25D_CORE_MTCTRL_H

#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

/// Runs one member function on each of a list of tasks, on several threads.
///
/// Guarantees
/// 1. Tasks are started in the order of the list, each at most once; which thread takes one is open.
/// 2. All threads are joined when run() returns or throws.
/// 3. When a task throws, no further task is started, and the first exception comes out of run() once the running tasks
///    have ended.
///
/// The tasks are borrowed. A task that touches what another one touches must lock.
template <class T>
class MTCtrl
{
public:
    MTCtrl() = default;
    explicit MTCtrl(std::vector<T*> vTasks_) : vTasks(std::move(vTasks_)) {}
    MTCtrl(const MTCtrl&) = delete;
    MTCtrl& operator=(const MTCtrl&) = delete;

    void add(T* pTask) { vTasks.push_back(pTask); }

    /// Calls memberFunction on all tasks. The calling thread takes part: at most numThreads - 1 threads are started, and
    /// none for fewer than two, nor when the system has no thread to give. May be called again, for all tasks once more.
    void run(void (T::*memberFunction)(), int numThreads)
    {
        numStarted = 0;
        pException = nullptr;
        std::vector<std::thread> vThreads;
        vThreads.reserve(vTasks.size());
        try {
            for (std::size_t i = 1; i < vTasks.size() && static_cast<int>(i) < numThreads; ++i) {
                vThreads.emplace_back(&MTCtrl::work, this, memberFunction);
            }
        } catch (const std::exception&) {
            // The threads at hand, this one at least, do the work.
        }
        work(memberFunction);
        for (std::thread& thread : vThreads) {
            thread.join();
        }
        if (pException) std::rethrow_exception(std::exchange(pException, nullptr));
    }

private:
    void work(void (T::*memberFunction)()) noexcept
    {
        while (T* const pTask = next()) {
            try {
                (pTask->*memberFunction)();
            } catch (...) {
                const std::lock_guard<std::mutex> lock(mtx);
                if (!pException) pException = std::current_exception();
            }
        }
    }
    /// The next task, NULL when there is none left or one has failed.
    T* next()
    {
        const std::lock_guard<std::mutex> lock(mtx);
        return pException || numStarted == vTasks.size() ? nullptr : vTasks[numStarted++];
    }

    std::vector<T*> vTasks;
    std::mutex mtx; ///< guards what follows
    std::size_t numStarted = 0;
    std::exception_ptr pException;
};

} // namespace ORBI_LUMO25D

#endif
