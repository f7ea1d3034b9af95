#ifndef LUMO25D_MESHING_REFINEMENT_H
#define LUMO25D_MESHING_REFINEMENT_H

#include "meshing/CandidateQueue.h"
#include "meshing/RefCand3.h"
#include "meshing/RefinementLimits.h"

#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintGraph2;
class ConstraintSegment2;
class Dt2;
class MeshGenParams;
class Point2;
class Triangle2;

/// The running refinement of one zone: Delaunay refinement (Ruppert 1995) in the form of Chew (1993), where a circumcentre
/// that no constraint hides is inserted, and one behind a constraint splits it.
///
/// The zone's graph must be one. Vertices that are inserted inside the zone are unknown to the vault until finish(): most
/// of them would be looked up there for nothing, and some are taken out again.
class Refinement
{
public:
    /// pGuide gives the heights of new vertices inside; null: the surface itself.
    Refinement(Dt2& dt2_, MeshGenParams& params, Dt2* pGuide);
    Refinement(const Refinement&) = delete;
    Refinement& operator=(const Refinement&) = delete;

    /// Runs rounds until one changes nothing. What is done so far is valid should something throw.
    void run();
    /// Hands the new vertices over to the vault; to be called once, whatever became of run().
    void finish();

private:
    enum Warning : unsigned
    {
        NO_HEIGHT = 1,
        NO_SEGMENT = 2,
        NO_SPLIT_POINT = 4,
        PRECISION = 8
    };

    void getInitialRefineCandidates();
    bool hasBorderInside(const std::vector<Triangle2*>& vT) const;
    void addRefCand(Triangle2* pT);
    bool runRound(bool& bChanged);
    bool tryRefine(const RefCand3& candidate);
    void insertCircumcenter(const RefCand3& candidate);
    void insertVertexForRefinement(Point2* pVtx, Triangle2* pT, int edge);
    Point2* newVertex(double x, double y, double z);
    double heightAt(double x, double y, const Triangle2& t);
    bool splitSegment(const RefCand3& candidate);
    void removeEncroaching(Point2* pSplit, double sqRadius);
    void addRefCandsAround(Point2* pSplit, const Point2* pSrc, Point2* pTrg, bool bBorder);
    bool getSplitPoint(const Triangle2* pT, int ith, Point2& splitPoint) const;
    void rememberAreas() const;
    bool warnOnce(Warning kind, const char* function, const char* message);

    Dt2& dt2;
    RefinementLimits limits;
    ConstraintGraph2* pCG;
    CandidateQueue queue;
    bool bAllAreCandidates;       ///< because the limits ask for the neighbours, too
    bool bBorderInside = false;   ///< there is zone on both sides of a part of its border
    bool bLookAgain = false;      ///< something bad was left, or may have been
    unsigned warned = 0;          ///< what has been told already
    double numForcedLeft = -1.0;  ///< insertions that may be made for other reasons than size; -1 until the first round
    std::vector<Point2*> vNew;    ///< inserted inside, in use or not any more
    std::vector<Point2*> vUnused; ///< of these, those that were taken out again
    std::vector<Triangle2*> vArisen; ///< scratch
};

} // namespace ORBI_LUMO25D

#endif
