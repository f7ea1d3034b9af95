#ifndef LUMO25D_CORE_VERTEXVAULT_H
#define LUMO25D_CORE_VERTEXVAULT_H

#include "core/CurveSort.h"
#include "core/IdxVtxAct.h"

#include "Bbox2.h"
#include "Point2.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class PointBlocks;
class Triangle2;
class WaitingPoints;

/// The registry of all vertices of one triangulation: which exist, which are in use, and which triangle lies near a
/// place on the Hilbert curve. Owned by its engine, which it calls back for memory and for the fake box.
///
/// Laws
/// 1. A vertex keeps its item while the item is active; once inactive (duplicate, removed) it is never handed out
///    again and its item may be forgotten by the next sort.
/// 2. When the triangulation has area and no insertion runs, an active vertex has an incident triangle and an
///    inactive one has none.
/// 3. dupIsClean() holds whenever no insertion runs.
/// 4. Items before numSorted are sorted along the curve (inactive ones may stand anywhere among them); later ones
///    were appended since and are found by scans only.
class VertexVault
{
public:
    explicit VertexVault(Dt2* pDt2_);
    ~VertexVault();
    VertexVault(const VertexVault&) = delete;
    VertexVault& operator=(const VertexVault&) = delete;

    /// True from the first triangle on.
    bool bFullDimensional = false;

    // ---- appending ----------------------------------------------------------------------------------------------

    /// Registers a vertex, at the end, with its curve index.
    void addVertex(std::uint32_t idx, Point2* pVtx);
    /// Makes a vertex for each point, in curve order, so that neighbours in the plane are neighbours in memory. With
    /// handles asked for, pVHandles is resized and filled in input order. numPreExisting receives the number of items
    /// before the call. Linear: the keys are sorted by radix.
    void addVertices(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pVHandles,
                     std::size_t& numPreExisting);
    /// The same from n triples x, y, z; aHandles may be null. Runs on the calling thread.
    void addCoordinates(std::size_t n, const double* aCoordinates, Point2** aHandles, std::size_t& numPreExisting);
    /// The same from the points of a cloud.
    void addCloud(const PointBlocks& points, std::size_t& numPreExisting);
    /// The same, and gives the points' memory back while the vertices are made. On the calling thread.
    void drainCloud(PointBlocks& points, std::size_t& numPreExisting);

    /// Makes n vertices of the pool, at places of their own, those of a vault that has no active ones.
    void adoptVertices(Point2* aVertices, std::size_t n);

    // ---- looking up ---------------------------------------------------------------------------------------------

    const IdxVtxAct* begin() const { return vItems.data(); }
    const IdxVtxAct* end() const { return vItems.data() + vItems.size(); }
    std::size_t numItems() const { return vItems.size(); }

    /// A triangle whose vertex lies near the curve position; never null. Without area: a failed condition.
    Triangle2* getCloseTriangle(std::uint32_t idx) const;
    /// The same for a position: of the vertices next to it on the curve, the nearest in the plane is taken.
    Triangle2* getCloseTriangle(const Point2& p) const;
    /// Three vertices, counterclockwise, that are not collinear: the first active one, the first that differs, and the
    /// first off their line, in item order. False when there are none.
    bool getThreeInitialPoints(Point2*& p0, Point2*& p1, Point2*& p2);
    /// The active vertex at p's x and y, or null. Finding none, or one that isn't sorted yet, takes a look at every item.
    Point2* getVertex(const Point2& p) const;
    /// True when pVtx has an active item; it must be a vertex of the engine's pool.
    bool isActive(const Point2* pVtx) const;
    /// While there is no area: the waiting vertex at p's x and y, or null. Amortised logarithmic for a stream of
    /// single insertions.
    Point2* findWaiting(const Point2& p);
    /// Appends them in item order.
    void getActiveVertices(std::vector<Point2*>& vVertices) const;
    std::size_t numActive() const { return numActiveItems; }
    /// The tight box of the active vertices.
    Bbox2 getBoundingBox() const;
    /// The incident triangle of the first active item; null with a warning when there is none.
    Triangle2* getOneValidTriangle() const;

    // ---- duplicates ---------------------------------------------------------------------------------------------

    /// Records that pDup stands where pExisting stands already; nothing when they are the same vertex. Thread-safe.
    void registerDup(Point2* pDup, Point2* pExisting);
    using Dups = std::vector<std::pair<Point2*, Point2*>>;
    /// The same for all pairs of a list.
    void registerDups(const Dups& vDups);
    std::size_t numDups() const { return vRedundant2Unique.size(); }
    /// Keeps the first numKept duplicates on record: the others will be found once more.
    void forgetDups(std::size_t numKept) { vRedundant2Unique.resize(numKept); }
    /// True when no unresolved duplicate is on record.
    bool dupIsClean() const { return vRedundant2Unique.empty(); }
    /// Ends a single insertion that found a duplicate: switches the last item off and returns the vertex that stays.
    Point2* treatOneDupGetHandle(const Point2* pDup);
    /// Ends a bulk insertion: rewrites the handles of duplicates to the vertices that stay and switches the duplicates
    /// off. Without area, duplicates are found here, and the earliest item wins.
    void treatDupsAndHandles(std::vector<Point2*>* pHandles);
    /// With area: replaces the handles of vertices that have no triangle by those of the vertices that stand there.
    void replaceDuplicateVertexHandlesFullDim(std::vector<Point2*>& vHandles);

    // ---- upkeep -------------------------------------------------------------------------------------------------

    /// Sorts the items along the curve. Conditional: only when the vault grew by more than 35 percent since the last
    /// sort, or when more than 1000 removals that are more than half of the sorted part have piled up.
    void sortIfNeeded(bool bConditional);
    /// Computes every item's curve index anew, then sorts.
    void reindexAll();
    /// Switches the item of a removed vertex off and takes the vertex's incident triangle away.
    void setInactive(Point2* pVtx);
    /// After a broken-off bulk insertion: switches off the vertices that have no triangle, of the items from a position on,
    /// and forgets the duplicates on record.
    void dropPointsWithoutTriangle(std::size_t firstToDrop);
    /// Forgets that waiting points were looked at; to be called when area comes or goes.
    void areaChanged();

    // ---- the fake box of a threaded bulk insertion --------------------------------------------------------------

    /// Four vertices around the working box, so that every input point lies strictly inside the hull. They have no items.
    /// False, and nothing done, when the box reaches the end of the doubles.
    bool createFakeBox(const Bbox2& box);
    void removeFakeBox();
    Point2* getFakeBoxCorner(std::size_t i) const;
    bool hasFakeBox() const { return !vFakeBoxHandles.empty(); }

    // ---- export -------------------------------------------------------------------------------------------------

    /// Fill arrays that have room for all active vertices, in item order: x, y, z of each; its custom index.
    void export_fetchCoordinates(double* aCoords) const;
    void export_fetchCustomIndices(std::int32_t* aCustomIndices) const;

    /// Checks law 2 and 3 and the count of active items; true when they hold, each violation is reported.
    bool checkVault() const;
    /// Bytes taken by the items and their lookup table.
    std::size_t bytes() const;

private:
    std::size_t lowerBound(std::uint32_t idx) const;
    std::size_t nearInRun(std::size_t begin, const Point2& p) const;
    void buildLookup();
    Triangle2* triangleAround(std::size_t pos) const;
    Triangle2* triangleFromTail(std::uint32_t idx) const;
    std::size_t findActive(const Point2& p, std::uint32_t idx, const Point2* pVtx) const;
    std::size_t getIdxOfActiveVtx(const Point2* pVtx) const;
    std::size_t replaceDupHandles(std::vector<Point2*>& vHandles) const;
    void findDupsWithoutArea();
    void findDupsInRun(std::vector<IdxVtxAct*>& vRun);
    void deactivate(IdxVtxAct& item);
    void keepEarliestData();
    template <class Source>
    Point2* appendInCurveOrder(const Source& source, Point2** aHandles, std::size_t& numPreExisting);

    IdxItems vItems;
    std::size_t numSorted = 0;
    std::size_t numActiveItems = 0;
    std::size_t numRemoved = 0; ///< items switched off by removal since the last sort
    Dt2* pDt2;

    /// Found duplicates of the running insertion: the redundant vertex and the one that stays.
    Dups vRedundant2Unique;
    std::mutex mtxDup;

    /// For each stretch of curve (the key without its low bits) the first sorted position that is not before it: a
    /// lookup touches one line of this table and a few items, where a binary search would touch twenty lines.
    std::vector<std::size_t> vFirstOfStretch;
    unsigned stretchShift = 0;

    /// The vertices of the last bulk append: one contiguous run, in which equal points stand in input order.
    const Point2* pBulkBegin = nullptr;
    const Point2* pBulkEnd = nullptr;

    std::vector<std::unique_ptr<Point2>> vFakeBoxHandles;

    /// Items known to lie on one line, while there is no area.
    std::size_t numKnownCollinear = 0;
    std::unique_ptr<WaitingPoints> pWaiting;
};

} // namespace ORBI_LUMO25D

#endif
