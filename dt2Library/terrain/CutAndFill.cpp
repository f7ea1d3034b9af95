#include "CutAndFill.h"

#include "CAF_Component.h"
#include "Triangle2.h"
#include "Visualizer2.h"
#include "Zone2.h"
#include "support/messages.h"
#include "terrain/CutAndFillImpl.h"

#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

void showComponent(const CAF_Component& component, Visualizer2& vis)
{
    std::vector<Triangle2*> vT;
    component.getTriangles(vT);
    LUMO_CHECK(!vT.empty(), "!vT.empty()");
    const char* pType = "NULL";
    Color color(CGRAY, 0, true);
    if (component.getCAFType() == CT_CUT) {
        pType = "CUT";
        color = Color(CRED, 0, true);
    } else if (component.getCAFType() == CT_FILL) {
        pType = "FILL";
        color = Color(CGREEN, 0, true);
    }
    std::ostringstream text;
    text << "Component_" << component.getLabel() << "\nType: " << pType << "\nVolume: " << component.getVolume();
    vis.addObject(Label(vT.front()->getBarycenter(), text.str().c_str(), true, 8), Color(CBLACK, 0.001F, false));
    vis.addObject(vT, color);
}

} // namespace

CutAndFill::CutAndFill(Zone2* pZoneBefore, Zone2* pZoneAfter, double threshold)
    : pImpl(std::make_unique<CutAndFillImpl>(pZoneBefore, pZoneAfter, threshold))
{
}

CutAndFill::~CutAndFill() = default;

bool CutAndFill::go()
{
    return pImpl->go();
}

unsigned int CutAndFill::getNumberOfComponents() const
{
    return static_cast<unsigned int>(pImpl->getComponents().size());
}

CAF_Component* CutAndFill::getComponent(unsigned int i) const
{
    LUMO_CHECK(pImpl->getComponents().size() > i, "vComponents.size()>i");
    return pImpl->getComponents()[i].get();
}

bool CutAndFill::getDiffZone(Zone2*& pDiffZone, std::map<Point2*, std::pair<double, double>>& mVtx2BeforeAfter) const
{
    pDiffZone = pImpl->getCommonZone();
    if (pDiffZone == nullptr) {
        msgWarning("CutAndFill::getDiffZone()", "pCombinedZone is NULL. Setting pDiffZone=NULL.");
        return false;
    }
    std::vector<Point2*> vVertices;
    pDiffZone->getVertices(vVertices);
    for (Point2* pVtx : vVertices) { // by address: each goes behind the last one
        const SurfaceHeights::Pair pair = pImpl->getHeights().get(pVtx);
        mVtx2BeforeAfter.insert_or_assign(mVtx2BeforeAfter.end(), pVtx,
                                          std::make_pair(pair.aHeights[0], pair.aHeights[1]));
    }
    return true;
}

void CutAndFill::show(Visualizer2* pVis) const
{
    if (pVis == nullptr) {
        msgWarning("CutAndFill::show()", "pVis is NULL");
        return;
    }
    for (const auto& pComponent : pImpl->getComponents()) showComponent(*pComponent, *pVis);
}

void CutAndFill::subscribe(MsgType msgType, MsgBase* pMsg)
{
    pImpl->getProgress().subscribe(msgType, pMsg);
}

void CutAndFill::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    pImpl->getProgress().unsubscribe(msgType, pMsg);
}

} // namespace ORBI_LUMO25D
