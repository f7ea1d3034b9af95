#ifndef LUMO25D_CUTANDFILL_H
#define LUMO25D_CUTANDFILL_H

#include "Lumo25DApi.h"
#include "MsgBase.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class CAF_Component;
class CutAndFillImpl;
class Point2;
class Visualizer2;
class Zone2;

/// Compares two surfaces over the same ground: where earth was removed (cut), where it was added (fill), and how much.
///
/// Both surfaces are overlaid in a private triangulation whose triangles lie in one triangle of each, and are cut along the
/// lines where the surfaces meet. Over each of the triangles that result, the difference is linear and has one sign, so
/// that the volume is that of the surfaces but for rounding: points and edges within 2^-50 of the largest coordinate count as
/// meeting; where that leaves places that can't be told apart, within 2^-42.
///
/// Guarantees, when go() gives true
/// 1. The components cover the area that both zones have in common, without overlap; each hangs together across edges.
///    What is missing are triangles at cliffs as narrow as the rounding of places: each is told, and left out where that
///    changes the volume less than flattening the cliff.
/// 2. Exchanging the zones exchanges cut and fill.
///
/// The components, their triangles and the zone of differences belong to this object. The input zones must live until
/// go() returns; they aren't changed.
///
///     CutAndFill caf(pBefore, pAfter, 0.001);
///     if (caf.go()) {
///         for (unsigned int i = 0; i < caf.getNumberOfComponents(); ++i) sum += caf.getComponent(i)->getVolume();
///     }
class LUMO25D_API CutAndFill
{
public:
    /// Differences in height up to the threshold count as none: both surfaces are taken to be at their mean there.
    CutAndFill(Zone2* pZoneBefore, Zone2* pZoneAfter, double threshold);
    ~CutAndFill();
    CutAndFill(const CutAndFill&) = delete;
    CutAndFill& operator=(const CutAndFill&) = delete;

    /// Does the work. False, without components, when the zones have no area in common, which is told, and when a condition
    /// fails; nothing is thrown. A second call only gives the result of the first. O(n log n) in the edges of both zones
    /// and their crossings.
    bool go();

    /// Areas without difference come first, then cuts, then fills. An index that is too large is a failed condition.
    unsigned int getNumberOfComponents() const;
    CAF_Component* getComponent(unsigned int i) const;
    /// The common area, with the difference before minus after as the height of its vertices, and the heights of each
    /// vertex before and after, added to the map. False and NULL, with a warning, when there is no result.
    bool getDiffZone(Zone2*& pDiffZone, std::map<Point2*, std::pair<double, double>>& mVtx2BeforeAfter) const;
    /// Draws the components, cuts in red, fills in green and the others in grey, labelled with their volumes.
    void show(Visualizer2* pVis) const;

    /// A listener stays the caller's and must live until it is unsubscribed or this object ends.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

private:
    std::unique_ptr<CutAndFillImpl> pImpl;
};

} // namespace ORBI_LUMO25D

#endif
