// Names everything that the library offers, so that a name, a form or a symbol that got lost fails to compile or to link.
#include "AcceptExperimentalFeature.h"
#include "CAF_Component.h"
#include "CloudPrepare.h"
#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "CutAndFill.h"
#include "EfficientModel.h"
#include "Func_Rot3D.h"
#include "HoleFiller.h"
#include "IsoContours.h"
#include "Label.h"
#include "LumoExport.h"
#include "Lumo_2D.h"
#include "Mesh3.h"
#include "MeshGenParams.h"
#include "Plane.h"
#include "SegmentChecker.h"
#include "TriangleAroundVertexIterator.h"
#include "UserPredicateT.h"
#include "Vector2.h"
#include "VertexPair2.h"
#include "Visualizer2.h"
#include "Visualizer3.h"
#include "Zone2.h"
#include "freeFunctions.h"

#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// Takes the address of each: a form that doesn't fit is a compile error, a missing symbol a link error.
template <class... F>
std::size_t named(F... functions)
{
    return (... + static_cast<std::size_t>(functions != nullptr));
}

/// One form of an overloaded member or function.
template <class... A>
struct Form
{
    template <class R, class C>
    static auto of(R (C::*f)(A...))
    {
        return f;
    }
    template <class R, class C>
    static auto of(R (C::*f)(A...) const)
    {
        return f;
    }
    template <class R>
    static auto of(R (*f)(A...))
    {
        return f;
    }
};

using Points = std::vector<Point2>;
using Handles = std::vector<Point2*>;
using Segments = std::vector<Segment2>;
using Graphs = std::vector<ConstraintGraph2*>;

std::size_t triangulation()
{
    using L = Lumo_2D;
    return named(Form<const Point2&>::of(&L::insert), Form<const Points&>::of(&L::insert),
                 Form<const Points&, Handles&>::of(&L::insert), Form<int, double*, Point2**>::of(&L::insert),
                 Form<CloudPrepare*, bool>::of(&L::insert), &L::remove, &L::measureTriangulationTime, &L::setNumCPU,
                 &L::enableMultithreading, &L::setFastMode, &L::setName, &L::getName, &L::hasArea, &L::is2D,
                 &L::numberOfPoints, &L::numberOfTriangles, &L::getOrientation, &L::setDev, &L::internal, &L::locate,
                 &L::getHeight, &L::getConvexHull, &L::getAdjacentTriangle, &L::getIncidentTriangles,
                 &L::getIncidentVertices, &L::getVertexPointers, &L::getTrianglePointers, &L::computeBoundingBox,
                 &L::checkValidity, &L::statistics, &L::exportTriangulation, &L::subscribe, &L::unsubscribe,
                 Form<const std::string&>::of(&L::show), Form<Visualizer2*>::of(&L::show));
}

std::size_t constraintsAndZones()
{
    using L = Lumo_2D;
    using G = ConstraintGraph2;
    using S = ConstraintSegment2;
    return named(&L::createConstraint, Form<Triangle2*, int>::of(&L::isConstraint),
                 Form<Point2*, Point2*>::of(&L::isConstraint), Form<Point2*>::of(&L::isConstraint),
                 &L::getConstraintSegment, &L::getAliveConstraintSegments, &L::getAliveAndDeadConstraintSegments,
                 &L::applyConstraintsAndZones, Form<const Point2&, const Point2&, bool>::of(&L::cutTriangles),
                 Form<const Segments&, bool>::of(&L::cutTriangles), &L::importTriangles,
                 Form<G*, ZoneLocation, bool>::of(&L::createZone),
                 Form<const Graphs&, ZoneLocation, const Point2&, bool>::of(&L::createZone),
                 Form<G*, ZoneLocation, const Point2&, bool>::of(&L::createZone),
                 Form<const std::vector<Triangle2*>&, bool>::of(&L::createZone),
                 Form<const Segments&, bool>::of(&L::createZone_cookieCutter), &L::deleteZone, &L::checkZoneQuality,
                 &L::drape) +
           named(&G::isPolygon, &G::isOriented, &G::getInsertionStrategy, &G::getOriginalConstraintSegments,
                 &G::getChildConstraintSegments, &G::getPolygonVertices, &G::getDirectChildren, &G::isReverse,
                 Form<Point2*, Point2*>::of(&G::isConstraint), Form<S*>::of(&G::isConstraint), &G::makeDelaunay,
                 Form<const char*>::of(&G::show), &S::getSrc, &S::getTrg, &S::getCIS, &S::isAlive,
                 &S::getNumberOfOwners, &S::getAdjacentArea, &S::setAdjacentArea, &S::insertAndSplit,
                 &S::splitAndRemovePrev, &S::split_combinatorialOnly, &S::getChildrenRec, &S::getChildrenAndSplitPoint);
}

std::size_t zones()
{
    using Z = Zone2;
    return named(&Z::getTriangles, &Z::getVertices, &Z::getBoundingBox, &Z::getNumberOfTriangles, &Z::getArea2D,
                 &Z::getArea25D, &Z::getBoundaryEdges, &Z::getBorderEdges, &Z::getBoundarySegments,
                 &Z::convertToBoundedZone, &Z::getZoneLocation, &Z::getDelaunayTriangulation,
                 &Z::numberOfConstraintGraphs, &Z::getConstraintGraphs, &Z::getConstraintGraph,
                 &Z::slopeValleyRidgeOptimization, &Z::optimizeValleysAndRidges, &Z::smoothing, &Z::unifyGrid,
                 &Z::statistics, &Z::analyzeAngles, &Z::debug, &Z::subscribe, &Z::unsubscribe, &Z::save,
                 Form<const char*>::of(&Z::show), Form<Visualizer2*, const Color&>::of(&Z::show),
                 Form<const char*, const std::string&>::of(&Z::showGeomview),
                 Form<Visualizer3*, const std::string&>::of(&Z::showGeomview), &Z::writeObj) +
           named(&zoneUnion, &zoneIntersection, &zoneDifference, &zoneSymmetricDifference, &peelOffIf, &sortRing,
                 &sortRingCCW, &edgesToPolygons, &isSimplePolygon, &pointsToPolyline);
}

std::size_t meshesAndTerrain()
{
    using L = Lumo_2D;
    return named(&L::refine, &L::refineAdvanced, &MeshGenParams::getMaxTriangleArea, &MeshGenParams::getMaxEdgeLength,
                 &MeshGenParams::addLockedConstraint, &CutAndFill::go, &CutAndFill::getNumberOfComponents,
                 &CutAndFill::getComponent, &CutAndFill::getDiffZone, &CutAndFill::show, &CutAndFill::subscribe,
                 &CutAndFill::unsubscribe, &CAF_Component::getCAFType, &CAF_Component::getVolume,
                 &CAF_Component::getLabel, &CAF_Component::getTriangles, &CAF_Component::getBorder,
                 &IsoContours::getMinHeight, &IsoContours::getMaxHeight, &IsoContours::getContours,
                 &IsoContours::getProfile);
}

std::size_t cloudsAndMeshes()
{
    using C = CloudPrepare;
    using M = Mesh3;
    return named(Form<double, double, double, std::int32_t>::of(&C::add), Form<const Points&>::of(&C::add),
                 Form<std::size_t, const double*>::of(&C::add), &C::getNumPoints, &C::getPoints, &C::clear,
                 &C::getRangeX, &C::getRangeY, &C::getRangeZ, &C::getBounds, &C::computeConvexHull,
                 &C::uniformSimplifyGrid, &C::uniformSimplifyNum, &C::adaptiveSimplify, &EfficientModel::extract,
                 &EfficientModel::go, &M::createVertex, &M::createTriangle, &M::getBorderEdges, &M::getBorderRings,
                 &M::getNormalVector, &HoleFiller::fill, &HoleFiller::getNewTriangles, &Func_Rot3D::operator(),
                 &estimateNNV);
}

std::size_t filesAndPictures()
{
    using L = Lumo_2D;
    using Zones = std::vector<Zone2*>;
    return named(
        Form<const std::string&>::of(&L::showGeomview), Form<Visualizer3*, const std::string&>::of(&L::showGeomview),
        Form<const char*>::of(&L::writeObj), Form<const char*, const Zones&>::of(&L::writeObj),
        Form<const char*, const char*>::of(&L::writeWebScene),
        Form<const char*, const Zones&, const char*>::of(&L::writeWebScene), &L::saveTriangulation, &L::saveZones,
        &L::load, &readXY, &readXYZ, &readPointsBIN, &writeSegmentsBIN, &readSegmentsBIN,
        Form<const char*, const Handles&>::of(&writePointsASCII),
        Form<const char*, const Points&>::of(&writePointsASCII), Form<const char*, const Handles&>::of(&writePointsBIN),
        Form<const char*, const Points&>::of(&writePointsBIN), &Visualizer2::addHeaderLine, &Visualizer2::writeFile,
        &LumoExport::writeObj, &LumoExport::extractTriangleNeighborships);
}

std::size_t segmentsAndTools()
{
    using S = SegmentChecker;
    return named(&S::getNumberOfSegments, &S::getSegment, &S::getIndex, &S::getIllegalSegments, &S::getIntersectors,
                 &S::getIntersectionType, &S::getIntersectionTypeString, &S::getIntersectionPoint,
                 &S::getIntersectionSegment, &S::showSegments, &S::showIllegalSegments, &S::subscribe, &S::unsubscribe,
                 &getOrientation2, &getOrientation2_mt, &timer, &isRelease, &getLumo2DVersion, &getMajorVersionNumber,
                 &getMinorVersionNumber, &getRevisionNumber, &generateRandomPoints, &generateRandomPoints3D,
                 &generateRandomSegments, &generateRandomPolygon, &generateSineSegments,
                 Form<Points&, double>::of(&shear), Form<Segments&, double>::of(&shear));
}

} // namespace

int everyName()
{
    const std::size_t number = triangulation() + constraintsAndZones() + zones() + meshesAndTerrain() +
                               cloudsAndMeshes() + filesAndPictures() + segmentsAndTools();
    return number > 0 ? 0 : 1;
}
