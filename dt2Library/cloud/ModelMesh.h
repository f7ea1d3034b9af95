#ifndef LUMO25D_CLOUD_MODELMESH_H
#define LUMO25D_CLOUD_MODELMESH_H

#include "Point2.h"

#include <cstddef>
#include <memory>
#include <queue>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Progress;
class Triangle2;

/// The Delaunay surface of some of the points of a terrain, and under each triangle the list of the other points there.
///
/// A list moves on when its triangle changes: an insertion changes the star of the new vertex, a removal what was the star
/// of the old one, and nothing else.
///
/// Where more than three vertices lie on one circle, the diagonals between them are a matter of chance, and somebody
/// else's triangulation of the same vertices may have others. All triangles of such a circle are looked at together, as a
/// face, and a point counts with its worst height over all triangles that the face's vertices can form.
class ModelMesh
{
public:
    /// The points are all different and must outlive the object. vCorners, the corners of the convex hull by position,
    /// become vertices for good; they must have area.
    ModelMesh(const std::vector<Point2>& vPoints, const std::vector<std::size_t>& vCorners);
    ~ModelMesh();

    /// Inserts the worst point of all triangles as long as one is off by more than maxError; after that, the worst of each
    /// face.
    void insertWorst(double maxError, Progress& progress);
    /// Takes out vertices as long as all points stay within maxError.
    void removeSuperfluous(double maxError, Progress& progress);

    /// Makes points vertices, and then what insertWorst() does about faces.
    void insert(const std::vector<std::size_t>& vPositions, double maxError);
    bool isVertex(std::size_t i) const { return vVertices[i] != nullptr; }
    std::size_t numVertices() const;

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// What a triangle has: a list of points, and the worst of them.
    struct Slot
    {
        std::size_t first = none;
        std::size_t worst = none;
        double error = 0.0;
    };
    struct Candidate
    {
        double error;
        std::size_t point;
        Triangle2* pT;
        bool operator<(const Candidate& other) const
        {
            return error != other.error ? error < other.error : point > other.point;
        }
    };

    Slot& slotOf(const Triangle2* pT);
    double error(const Point2& a, const Point2& b, const Point2& c, const Point2& p) const;
    void takeList(const Triangle2* pT);
    void assign(std::size_t i, Triangle2*& pT);
    bool assignWithin(double maxError, Triangle2* pT);
    void insertVertex(std::size_t i);
    bool removeVertex(std::size_t i, double maxError);
    void offerChanged();
    void settleFaces(std::vector<Triangle2*> vQueue, double maxError);
    void collectFace(Triangle2* pT);
    Candidate worstOfFace(Triangle2* pT, double maxError);
    double worstError(std::size_t i) const;
    bool areFacesWithin(double maxError);

    const std::vector<Point2>& vPoints;
    std::unique_ptr<Dt2> pDt;
    double scale = 1.0;                   ///< a power of two: it makes areas finite and larger than 0
    std::vector<Point2*> vVertices;       ///< by point; NULL for those that are none
    std::vector<bool> vPermanent;         ///< by point
    std::vector<std::size_t> vInOrder;    ///< vertices in the order of insertion, not the permanent ones
    std::vector<std::size_t> vNext;       ///< by point: the next in its triangle's list
    std::vector<Slot> vSlots;             ///< by triangle
    std::priority_queue<Candidate> queue; ///< entries may be out of date

    // Scratch lists, kept so that no step allocates.
    std::vector<std::size_t> vLoose;         ///< points that are in no list
    std::vector<Triangle2*> vStar, vChanged; ///< vChanged: those that got points
    std::vector<Triangle2*> vFace;
    std::vector<const Point2*> vFaceVertices;
};

} // namespace ORBI_LUMO25D

#endif
