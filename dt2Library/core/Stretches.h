#ifndef LUMO25D_CORE_STRETCHES_H
#define LUMO25D_CORE_STRETCHES_H

#include "core/MTCtrl.h"

#include <algorithm>
#include <cstddef>
#include <vector>

/// Loops over an array that are cut into stretches, one for each thread.
namespace ORBI_LUMO25D
{

/// Positions [begin, end) of an array; number counts the stretches.
struct Stretch
{
    std::size_t begin;
    std::size_t end;
    std::size_t number;
};

/// Nearly equal stretches, numParts at most and none of them empty.
inline std::vector<Stretch> cutIntoStretches(std::size_t n, std::size_t numParts)
{
    std::vector<Stretch> vStretches;
    const std::size_t length = n / numParts + 1;
    for (std::size_t begin = 0; begin < n; begin += length) {
        vStretches.push_back({begin, std::min(begin + length, n), vStretches.size()});
    }
    return vStretches;
}

/// How many threads a loop over n elements should have, at most numCPU: starting one takes as long as tens of thousands
/// of simple steps.
inline std::size_t threadsForScan(std::size_t n, int numCPU)
{
    constexpr std::size_t minPerThread = 25000;
    return std::clamp<std::size_t>(n / minPerThread, 1, static_cast<std::size_t>(std::max(numCPU, 1)));
}

/// Calls action(stretch) for each stretch of [0, n), one on each of numThreads threads. Exceptions: as MTCtrl.
template <class Action>
void forStretches(std::size_t n, std::size_t numThreads, const Action& action)
{
    if (numThreads <= 1) {
        if (n > 0) action(Stretch{0, n, 0});
        return;
    }
    struct StretchTask
    {
        void run() { (*pAction)(stretch); }
        Stretch stretch;
        const Action* pAction;
    };
    std::vector<StretchTask> vTasks;
    for (const Stretch& stretch : cutIntoStretches(n, numThreads)) {
        vTasks.push_back({stretch, &action});
    }
    MTCtrl<StretchTask> control;
    for (StretchTask& task : vTasks) {
        control.add(&task);
    }
    control.run(&StretchTask::run, static_cast<int>(numThreads));
}

/// True when condition(stretch) is true for all stretches of [0, n).
template <class Condition>
bool allStretches(std::size_t n, std::size_t numThreads, const Condition& condition)
{
    if (numThreads <= 1) return condition(Stretch{0, n, 0});
    std::vector<char> vResults(numThreads, 1); // not bool: each thread writes its own
    forStretches(n, numThreads, [&](const Stretch& s) { vResults[s.number] = condition(s) ? 1 : 0; });
    return std::find(vResults.begin(), vResults.end(), 0) == vResults.end();
}

} // namespace ORBI_LUMO25D

#endif
