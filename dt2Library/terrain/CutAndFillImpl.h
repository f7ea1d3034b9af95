#ifndef LUMO25D_TERRAIN_CUTANDFILLIMPL_H
#define LUMO25D_TERRAIN_CUTANDFILLIMPL_H

#include "CAF_Component.h"
#include "support/Progress.h"
#include "terrain/SurfaceHeights.h"

#include <memory>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class SurfaceOverlay;
class Zone2;

/// The work behind CutAndFill: overlay, cut along the lines without difference, volumes of what hangs together.
///
/// The overlay is computed directly (MeshOverlay, OverlayCells), unless edges of both surfaces come as close to each other
/// as the rounding of places: then constraints do it (SurfaceOverlay, ZeroLineCutter), several times as slow, because they
/// unite what is that close.
class CutAndFillImpl
{
public:
    CutAndFillImpl(Zone2* pZone0, Zone2* pZone1, double threshold_);
    ~CutAndFillImpl();

    /// See CutAndFill.
    bool go();
    const std::vector<std::unique_ptr<CAF_Component>>& getComponents() const { return vComponents; }
    /// NULL when there is no result.
    Zone2* getCommonZone() { return pCombinedZone; }
    const SurfaceHeights& getHeights() const { return heights; }
    Progress& getProgress() { return progress; }

private:
    enum TriType
    {
        TT_INVALID = 0, ///< both signs: almost without area, and in no component
        TT_ZERO = 1,
        TT_POSITIVE = 2,
        TT_NEGATIVE = 3
    };

    bool runPipeline();
    bool overlayDirectly(std::vector<Triangle2*>& vT);
    bool overlayByConstraints(std::vector<Triangle2*>& vT);
    void cutAlongZeroLines(std::vector<Triangle2*>& vT, const SurfaceOverlay& overlay);
    static TriType getTriangleType(const Triangle2* pT);
    void postRound(const std::vector<Triangle2*>& vT);
    double volumeToRound(const Triangle2* pT, bool bNegative) const;
    void roundToZero(Point2* pVtx);
    void groupT2(const std::vector<Triangle2*>& vT);

    Zone2* aZones[2];
    std::unique_ptr<Dt2> pDt;
    SurfaceHeights heights;
    double threshold;
    Zone2* pCombinedZone = nullptr;
    Progress progress{"CutAndFill"};
    std::vector<std::unique_ptr<CAF_Component>> vComponents;
    bool bDone = false;
};

} // namespace ORBI_LUMO25D

#endif
