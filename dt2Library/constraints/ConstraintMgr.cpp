#include "constraints/ConstraintMgr.h"

#include "engine/Dt2.h"
#include "support/check.h"
#include "support/messages.h"

#include "Edge2.h"
#include "Segment2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <limits>
#include <string>

namespace ORBI_LUMO25D
{

ConstraintMgr::ConstraintMgr(Dt2* pDt_) : pDt(pDt_)
{
    poolSegments.init(64, -1);
    poolOwners.init(16, -1);
}

ConstraintMgr::~ConstraintMgr() = default;

// ---- the table ------------------------------------------------------------------------------------------------------

namespace
{

bool isOrdered(const Point2* pA, const Point2* pB)
{
    return std::less<const Point2*>()(pA, pB);
}

} // namespace

ConstraintSegment2* ConstraintMgr::find(const Point2* pA, const Point2* pB) const
{
    if (!isOrdered(pA, pB)) std::swap(pA, pB);
    return table.find(pA, pB);
}

ConstraintSegment2* ConstraintMgr::findAlive(const Point2* pA, const Point2* pB) const
{
    ConstraintSegment2* const pCSeg = find(pA, pB);
    return pCSeg != nullptr && pCSeg->isAlive() ? pCSeg : nullptr;
}

void ConstraintMgr::makeRoom(std::size_t numMore)
{
    if (table.isFull(numMore)) table.grow(numMore, [this](const auto& enter) { poolSegments.forEach(enter); });
}

ConstraintSegment2* ConstraintMgr::findOrAdd(Point2* pA, Point2* pB, ConstraintInsertionStrategy cis, bool& bNew)
{
    if (!isOrdered(pA, pB)) std::swap(pA, pB);
    ConstraintSegment2* pCSeg = table.find(pA, pB);
    bNew = pCSeg == nullptr;
    if (!bNew) return pCSeg;
    makeRoom(1);
    pCSeg = new (poolSegments.alloc()) ConstraintSegment2(pA, pB, cis);
    pA->bConstraintEnd = true;
    pB->bConstraintEnd = true;
    table.add(pCSeg);
    return pCSeg;
}

ConstraintSegment2* ConstraintMgr::addConstraintSegment(Point2* pA, Point2* pB, ConstraintInsertionStrategy cis)
{
    LUMO_CHECK(pA != pB, "p0<p1");
    bool bNew = false;
    return findOrAdd(pA, pB, cis, bNew);
}

void ConstraintMgr::getAliveSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    poolSegments.forEach([&vSegments](ConstraintSegment2* pCSeg) {
        if (pCSeg->isAlive()) vSegments.push_back(pCSeg);
    });
}

void ConstraintMgr::getAllSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    poolSegments.forEach([&vSegments](ConstraintSegment2* pCSeg) { vSegments.push_back(pCSeg); });
}

std::size_t ConstraintMgr::bytes() const
{
    return poolSegments.bytes() + poolOwners.bytes() + table.bytes();
}

// ---- creation -------------------------------------------------------------------------------------------------------

namespace
{

/// Reports the progress of a loop over n things in at most a hundred steps.
class Stepper
{
public:
    Stepper(Progress& progress_, std::size_t n) : progress(progress_), interval(std::max<std::size_t>(1, n / 100)) {}
    void operator()()
    {
        if (++count % interval == 0) progress.step(interval);
    }

private:
    Progress& progress;
    std::size_t interval;
    std::size_t count = 0;
};

/// The vertices of both ends of each segment, inserted in one go.
std::vector<ConstraintMgr::VertexPair> insertEnds(Dt2& dt2, const std::vector<Segment2>& vSegments)
{
    // In a chain, the source of a segment is the target of the one before: one point for both.
    std::vector<Point2> vPoints;
    vPoints.reserve(2 * vSegments.size());
    std::vector<std::size_t> vSources;
    vSources.reserve(vSegments.size());
    for (const Segment2& segment : vSegments) {
        if (vPoints.empty() || vPoints.back() != segment.src) vPoints.push_back(segment.src);
        vSources.push_back(vPoints.size() - 1);
        vPoints.push_back(segment.trg);
    }
    std::vector<Point2*> vHandles;
    {
        const Progress::Muted muted(dt2.progress);
        dt2.insertVector(vPoints, &vHandles);
    }
    LUMO_CHECK(vPoints.size() == vHandles.size(), "vPoints.size()==vHandles.size()");
    std::vector<ConstraintMgr::VertexPair> vPairs;
    vPairs.reserve(vSegments.size());
    for (const std::size_t i : vSources) {
        LUMO_CHECK(vHandles[i] != nullptr && vHandles[i + 1] != nullptr, "pHandle0!=NULL && pHandle1!=NULL");
        vPairs.emplace_back(vHandles[i], vHandles[i + 1]);
    }
    return vPairs;
}

} // namespace

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<Segment2>& vSegments,
                                                  ConstraintInsertionStrategy cis, bool bApply)
{
    if (vSegments.empty()) return nullptr;
    return createConstraint(insertEnds(*pDt, vSegments), cis, bApply);
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<Edge2>& vEdges, ConstraintInsertionStrategy cis,
                                                  bool bApply)
{
    if (vEdges.empty()) return nullptr;
    std::vector<VertexPair> vPairs;
    vPairs.reserve(vEdges.size());
    for (const Edge2& edge : vEdges) {
        vPairs.emplace_back(edge.getSrc(), edge.getTrg());
    }
    return createConstraint(vPairs, cis, bApply);
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<VertexPair>& vPairs,
                                                  ConstraintInsertionStrategy cis, bool bApply)
{
    if (vPairs.empty()) return nullptr;
    const std::size_t n = vPairs.size();
    pDt->progress.start("establish constraints", 3 * n);
    std::vector<VertexPair> vAccepted;
    vAccepted.reserve(n);
    Stepper seen(pDt->progress, n);
    for (const VertexPair& pair : vPairs) {
        seen();
        if (pair.first == pair.second) {
            reportDegenerate("ConstraingMgr::createConstraint", 0, pair.first, pair.second);
        } else {
            vAccepted.push_back(pair);
        }
    }
    // No subscriber, who may throw, is called before the segments have their owner.
    std::vector<ConstraintSegment2*> vCSegs;
    vCSegs.reserve(vAccepted.size());
    makeRoom(vAccepted.size());
    for (const VertexPair& pair : vAccepted) {
        vCSegs.push_back(addConstraintSegment(pair.first, pair.second, cis));
    }
    ConstraintGraph2* const pGraph = addGraph(std::make_unique<ConstraintGraph2>(pDt, vCSegs, cis));
    pDt->progress.step(n);
    if (bApply) establish(vCSegs);
    pDt->progress.finish();
    return pGraph;
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::set<VertexPair>& sPairs, ConstraintInsertionStrategy cis)
{
    if (sPairs.empty()) return nullptr;
    // By place: the order of the set is that of addresses, another one in each run.
    std::vector<VertexPair> vPairs(sPairs.begin(), sPairs.end());
    std::sort(vPairs.begin(), vPairs.end(), [](const VertexPair& a, const VertexPair& b) {
        return a.first != b.first ? *a.first < *b.first : *a.second < *b.second;
    });
    return addOriented(vPairs, cis, "ConstraingMgr::createConstraint()", 1).first;
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                           ConstraintInsertionStrategy cis)
{
    if (vSegments.empty()) return nullptr;
    // All ends are in the mesh before the first segment is made: none of them can split one.
    const auto [pGraph, vCSegs] =
        addOriented(insertEnds(*pDt, vSegments), cis, "ConstraingMgr::createConstraint_oriented(vSegments,...)", 2);
    establish(vCSegs);
    return pGraph;
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<VertexPair>& vPairs,
                                                           ConstraintInsertionStrategy cis)
{
    if (vPairs.empty()) return nullptr;
    return addOriented(vPairs, cis, "ConstraingMgr::createConstraint_oriented(vPairs,...)", 2).first;
}

/// Makes a graph that keeps the directions of the pairs; nothing is established.
std::pair<ConstraintGraph2*, std::vector<ConstraintSegment2*>>
ConstraintMgr::addOriented(const std::vector<VertexPair>& vPairs, ConstraintInsertionStrategy cis, const char* function,
                           int form)
{
    std::vector<ConstraintSegment2*> vCSegs;
    ConstraintGraph2::Directions mPPReverse;
    for (const VertexPair& pair : vPairs) {
        if (pair.first == pair.second) {
            reportDegenerate(function, form, pair.first, pair.second);
            continue;
        }
        ConstraintSegment2* const pCSeg = addConstraintSegment(pair.first, pair.second, cis);
        mPPReverse[{pCSeg->p0, pCSeg->p1}] = pair.first != pCSeg->p0;
        vCSegs.push_back(pCSeg);
    }
    return {addGraph(std::make_unique<ConstraintGraph2>(pDt, vCSegs, mPPReverse, cis)), vCSegs};
}

ConstraintGraph2* ConstraintMgr::addGraph(std::unique_ptr<ConstraintGraph2> pGraph)
{
    vConstraintGraphs.push_back(std::move(pGraph));
    return vConstraintGraphs.back().get();
}

void ConstraintMgr::reportDegenerate(const char* function, int form, const Point2* pA, const Point2* pB)
{
    msgWarning(function,
               "(" + std::to_string(form) + ") Identical source and endpoint, a constraint segment has been skipped.");
    std::cout << *pA << " <-> " << *pB << '\n';
}

// ---- into the mesh --------------------------------------------------------------------------------------------------

namespace
{

constexpr int maxRounds = 500;

void reportExhausted()
{
    msgWarning("ConstraintMgr::apply()", "insufficient numeric accuracy, need to skip last insertions");
}

} // namespace

void ConstraintMgr::establish(const std::vector<ConstraintSegment2*>& vCSegs)
{
    pDt->beginEstablishing();
    Stepper done(pDt->progress, vCSegs.size());
    for (ConstraintSegment2* pCSeg : vCSegs) {
        {
            const Progress::Muted muted(pDt->progress);
            if (!applyOne(pCSeg)) reportExhausted();
        }
        done();
    }
    pDt->endEstablishing();
}

bool ConstraintMgr::applyOne(ConstraintSegment2* pCSeg)
{
    if (!pDt->hasArea()) return true;
    if (pCSeg->isAlive()) return pDt->establishConstraint(pCSeg);
    if (!pCSeg->isDead()) return true;
    std::vector<ConstraintSegment2*> vLeaves;
    pCSeg->getChildrenRec(vLeaves);
    return std::all_of(vLeaves.begin(), vLeaves.end(), [this](ConstraintSegment2* pLeaf) {
        return !pLeaf->isAlive() || pDt->establishConstraint(pLeaf);
    });
}

void ConstraintMgr::apply()
{
    std::vector<ConstraintSegment2*> vCSegs;
    getAliveSegments(vCSegs);
    pDt->progress.start("apply", vCSegs.size());
    pDt->beginEstablishing();
    int numRoundsLeft = maxRounds;
    for (bool bStable = false; !bStable;) {
        if (--numRoundsLeft == 0 || !applyRound(vCSegs, bStable)) {
            reportExhausted();
            break;
        }
        vCSegs.clear();
        getAliveSegments(vCSegs);
    }
    pDt->endEstablishing();
    pDt->progress.finish();
}

/// bStable tells whether nothing was split; false is returned when a segment could not be established.
bool ConstraintMgr::applyRound(const std::vector<ConstraintSegment2*>& vCSegs, bool& bStable)
{
    bStable = true;
    for (ConstraintSegment2* pCSeg : vCSegs) {
        pDt->progress.step(1);
        if (pCSeg->isAlive()) {
            const Progress::Muted muted(pDt->progress);
            if (!applyOne(pCSeg)) return false;
        }
        if (pCSeg->isAlive()) continue;
        bStable = false;
        pDt->progress.addToTotal(4);
    }
    return true;
}

// ---- files ----------------------------------------------------------------------------------------------------------

template <class Write>
bool ConstraintMgr::writeGraphs(const char* function, const char* baseName, const char* ending,
                                const Write& write) const
{
    bool bOK = true;
    for (std::size_t i = 0; i < vConstraintGraphs.size(); ++i) {
        std::vector<ConstraintSegment2*> vOriginals;
        vConstraintGraphs[i]->getOriginalConstraintSegments(vOriginals);
        std::vector<ConstraintSegment2*> vLeaves;
        for (ConstraintSegment2* pCSeg : vOriginals) {
            if (pCSeg->isAlive()) vLeaves.push_back(pCSeg);
            if (pCSeg->isDead()) pCSeg->getChildrenRec(vLeaves);
        }
        std::vector<Segment2> vSegments;
        vSegments.reserve(vLeaves.size());
        for (const ConstraintSegment2* pCSeg : vLeaves) {
            vSegments.emplace_back(*pCSeg->getSrc(), *pCSeg->getTrg());
        }
        const std::string filename = std::string(baseName) + "_c" + std::to_string(i) + ending;
        msgInfo(function, "writes " + std::to_string(vSegments.size()) + " child segments to " + filename);
        if (!write(filename, vSegments)) {
            msgError(function, filename + " can't be written");
            bOK = false;
        }
    }
    return bOK;
}

bool ConstraintMgr::writeConstraints(const char* baseName) const
{
    const auto write = [](const std::string& filename, const std::vector<Segment2>& vSegments) {
        std::ofstream stream(filename);
        stream << std::setprecision(std::numeric_limits<double>::max_digits10);
        for (const Segment2& s : vSegments) {
            stream << s.src.x() << '\t' << s.src.y() << '\t' << s.src.z() << '\t';
            stream << s.trg.x() << '\t' << s.trg.y() << '\t' << s.trg.z() << '\n';
        }
        stream.close();
        return stream.good();
    };
    return writeGraphs("ConstraintMgr::writeConstraints()", baseName, ".con", write);
}

bool ConstraintMgr::writeConstraintsBIN(const char* baseName) const
{
    const auto write = [](const std::string& filename, const std::vector<Segment2>& vSegments) {
        return writeSegmentsBIN(filename.c_str(), vSegments);
    };
    return writeGraphs("ConstraintMgr::writeConstraintsBIN()", baseName, "_con.bin", write);
}

} // namespace ORBI_LUMO25D
