#include "support/Progress.h"

#include "support/check.h"
#include "support/messages.h"

#include <algorithm>

namespace ORBI_LUMO25D
{

namespace
{

void eraseFrom(std::vector<Progress*>& v, const Progress* p)
{
    v.erase(std::remove(v.begin(), v.end(), p), v.end());
}

} // namespace

Progress::~Progress()
{
    for (Progress* pChild : vChildren) {
        eraseFrom(pChild->vParents, this);
    }
    for (Progress* pParent : vParents) {
        eraseFrom(pParent->vChildren, this);
    }
}

bool Progress::isSubscribed(MsgType msgType, const MsgBase* pMsg) const
{
    const auto range = mSubscribers.equal_range(msgType);
    return std::any_of(range.first, range.second, [pMsg](const auto& entry) { return entry.second == pMsg; });
}

void Progress::subscribe(MsgType msgType, MsgBase* pMsg)
{
    if (pMsg == nullptr) {
        msgWarning("Progress::subscribe()", "Subscriber is NULL, ignored");
        return;
    }
    if (!isSubscribed(msgType, pMsg)) mSubscribers.emplace(msgType, pMsg);
}

void Progress::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    const auto range = mSubscribers.equal_range(msgType);
    const auto it = std::find_if(range.first, range.second, [pMsg](const auto& entry) { return entry.second == pMsg; });
    if (it != range.second) mSubscribers.erase(it);
}

bool Progress::reaches(const Progress* pOther) const
{
    return this == pOther || std::any_of(vChildren.begin(), vChildren.end(),
                                         [pOther](const Progress* pChild) { return pChild->reaches(pOther); });
}

void Progress::addChild(Progress* pChild)
{
    LUMO_CHECK(pChild != nullptr, "pChild != NULL");
    LUMO_CHECK(!pChild->reaches(this), "!pChild->reaches(this)");
    if (std::find(vChildren.begin(), vChildren.end(), pChild) != vChildren.end()) return;
    vChildren.push_back(pChild);
    pChild->vParents.push_back(this);
}

void Progress::start(const char* newStepName, std::uint64_t totalUnits)
{
    if (bSuppressed || mSubscribers.empty()) return;
    total = totalUnits;
    current = 0;
    stepName = newStepName;
    stepSize = std::max<std::uint64_t>(total / 100, 1);
    bDone = false;
}

void Progress::stepHeard(std::uint64_t n)
{
    if (total == 0 || bDone) return;
    current += n;
    if (current % stepSize != 0) return;
    try {
        report();
    } catch (...) {
        endStep(); // what comes next is no part of it
        throw;
    }
}

void Progress::report()
{
    // By index: a parent's subscriber may unlink publishers.
    for (std::size_t i = 0; i < vParents.size(); ++i) {
        vParents[i]->step(0);
    }
    double d = fraction();
    if (d >= 1.0) {
        d = 1.0;
        bDone = true;
    }
    notify(MSG_PROGRESS, stepName, d);
}

void Progress::finish()
{
    if (bSuppressed || mSubscribers.empty()) return;
    const std::string endedStep = stepName;
    endStep();
    if (!bDone) notify(MSG_PROGRESS, endedStep, 1.0);
}

void Progress::endStep()
{
    stepName.clear();
    total = 0;
    current = 0;
}

void Progress::notify(MsgType msgType, const std::string& text, double d) const
{
    // Copies of both: update() may change the subscriptions, and, by a nested call, the step's name.
    const std::string textCopy = text;
    std::vector<MsgBase*> vListeners;
    const auto range = mSubscribers.equal_range(msgType);
    for (auto it = range.first; it != range.second; ++it) {
        vListeners.push_back(it->second);
    }
    for (MsgBase* pMsg : vListeners) {
        if (isSubscribed(msgType, pMsg)) pMsg->update(msgType, textCopy.c_str(), d);
    }
}

double Progress::fraction() const
{
    if (bDone) return 1.0;
    double sum = total == 0 ? 0.0 : static_cast<double>(current) / static_cast<double>(total);
    for (const Progress* pChild : vChildren) {
        sum += pChild->fraction();
    }
    return sum;
}

} // namespace ORBI_LUMO25D
