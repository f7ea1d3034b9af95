#ifndef LUMO25D_SUPPORT_PROGRESS_H
#define LUMO25D_SUPPORT_PROGRESS_H

#include "MsgBase.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// The publisher of a long operation's progress: it turns units of work into about a hundred reports per
/// step.
///
/// A step runs from start() to finish() and belongs to one thread, the caller's. Without a subscriber nothing
/// is counted and every call costs a test or two, so that step() may stand in inner loops.
///
/// Publishers can be nested: a child's fraction counts as part of its parent's, and a child that moves makes
/// its parents report. The links undo themselves when either side is destroyed.
///
/// A subscriber may throw from update(), which ends the step, and may subscribe and unsubscribe anybody there;
/// it must not destroy the publisher.
class Progress
{
public:
    explicit Progress(const char* publisherName) : name(publisherName) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// Adds the pair, once. NULL is ignored with a warning. Not owned.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    /// Removes the pair; one that isn't there is ignored.
    void unsubscribe(MsgType msgType, MsgBase* pMsg);
    /// Takes all subscribers over from another publisher.
    void takeSubscribers(Progress& other) { mSubscribers.swap(other.mSubscribers); }

    /// Makes pChild's fraction a part of this one's. A pair is linked once; a ring of publishers is a failed
    /// condition.
    void addChild(Progress* pChild);

    /// Announces a step of totalUnits units, reported at every hundredth of it. Does nothing when muted or
    /// unheard.
    void start(const char* newStepName, std::uint64_t totalUnits);
    /// Adds n units. Reports when the sum is a multiple of the report interval: steps larger than one unit
    /// may skip reports. A fraction of 1 or more is reported as 1.0, once, and ends the reports of this step.
    void step(std::uint64_t n)
    {
        if (bSuppressed) return;
        if (mSubscribers.empty() && vParents.empty()) return;
        stepHeard(n);
    }
    /// Raises the announced work by n, when there are subscribers. Does nothing when muted: the step is another's then.
    void addToTotal(std::uint64_t n)
    {
        if (!bSuppressed && !mSubscribers.empty()) total += n;
    }
    /// Ends the step; reports 1.0 unless that has been done. Does nothing when muted or unheard.
    void finish();

    /// Around a nested operation that would report itself. A flag, not a count.
    void suppress() { bSuppressed = true; }
    void unsuppress() { bSuppressed = false; }
    /// The same for a scope, after which the flag is as before.
    class Muted
    {
    public:
        explicit Muted(Progress& progress_) : progress(progress_), bBefore(progress_.bSuppressed)
        {
            progress.suppress();
        }
        ~Muted() { progress.bSuppressed = bBefore; }
        Muted(const Muted&) = delete;
        Muted& operator=(const Muted&) = delete;

    private:
        Progress& progress;
        const bool bBefore;
    };

    /// Calls every subscriber of that kind in the order of subscription, muted or not.
    void notify(MsgType msgType, const std::string& text, double d) const;

    /// current / total plus the children's fractions, not divided by their number; 1.0 once 1.0 was reported.
    double fraction() const;

    const std::string& getName() const { return name; }

private:
    void stepHeard(std::uint64_t n);
    void report();
    void endStep();
    bool isSubscribed(MsgType msgType, const MsgBase* pMsg) const;
    bool reaches(const Progress* pOther) const;

    std::vector<Progress*> vChildren;
    std::vector<Progress*> vParents;
    std::multimap<MsgType, MsgBase*> mSubscribers;
    std::uint64_t total = 0; ///< 0: no step runs
    std::uint64_t current = 0;
    std::uint64_t stepSize = 1; ///< report interval in units, never 0
    std::string stepName;
    bool bDone = false; ///< the running step has reported 1.0
    bool bSuppressed = false;
    std::string name;
};

} // namespace ORBI_LUMO25D

#endif
