#include "zones/ZoneQuality.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include "Color.h"
#include "Vector2.h"
#include "Visualizer2.h"
#include "Zone2.h"

#include <algorithm>
#include <iostream>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double maxGrowth = 3.0;
constexpr double minGrownArea = 0.25;
constexpr double aspectLimit = 10.0;

/// The side opposite corner i as a vector.
Vector2 side(const Triangle2& t, int i)
{
    return *t.corner(incIndexBy2(i)) - *t.corner(incIndexBy1(i));
}

} // namespace

ZoneQuality::ZoneQuality(Dt2& dt2_, const Zone2& zone, std::string name_)
    : dt2(dt2_), name(std::move(name_)), vT(trianglesByAge(zone))
{
}

void ZoneQuality::drawBad(const std::string& filename, const std::vector<const Triangle2*>& vBad) const
{
    Visualizer2 visualizer(filename.c_str());
    dt2.show(visualizer);
    for (const Triangle2* pT : vBad) {
        visualizer.addObject(pT->getBarycenter(), Color(CRED, 0.5F));
    }
    visualizer.writeFile();
}

// ---- growth ---------------------------------------------------------------------------------------------------------

/// Whether the triangle is too large for its neighbour, which it then tells.
bool ZoneQuality::reportGrowth(const Triangle2* pT, int ith) const
{
    const Triangle2* const pN = pT->neighbor(ith);
    const double area = pT->getArea25D();
    const double neighborArea = pN->getArea25D();
    if (!(neighborArea >= minGrownArea && area / neighborArea > maxGrowth)) return false;
    std::ostringstream text;
    text << "Bad grow factor, area=" << area << ", neigArea=" << neighborArea << ", grow=" << area / neighborArea;
    msgWarning("Dt2::checkZoneQuality()", text.str());
    std::cout << *pT << '\n' << *pN << '\n';
    const ConstraintSegment2* const pCSeg =
        dt2.getConstraintSegment(pT->corner(incIndexBy1(ith)), pT->corner(incIndexBy2(ith)));
    if (pCSeg == nullptr) {
        std::cout << "Have no pCSeg there\n";
    } else {
        std::cout << "Area in associated pCSeg is: " << pCSeg->getAdjacentArea() << '\n';
    }
    return true;
}

bool ZoneQuality::checkGrowFactor() const
{
    constexpr std::uint8_t member = 1;
    const PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, member);
    std::vector<const Triangle2*> vBad;
    for (const Triangle2* pT : vT) {
        bool bBad = false;
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN != nullptr && marks[pN] == member && reportGrowth(pT, i)) bBad = true;
        }
        if (bBad) vBad.push_back(pT);
    }
    if (!vBad.empty()) drawBad("badZone" + name + ".ps", vBad);
    return vBad.empty();
}

// ---- aspects and angles ---------------------------------------------------------------------------------------------

bool ZoneQuality::checkHeightAspect() const
{
    bool bGood = true;
    for (const Triangle2* pT : vT) {
        const double maxLen = std::max({side(*pT, 0).length(), side(*pT, 1).length(), side(*pT, 2).length()});
        const double height = crossProduct(side(*pT, 0), side(*pT, 1)).length();
        if (!(height > 0.0)) {
            std::ostringstream text;
            text << "oppositeHeight=" << height;
            msgWarning("Dt2::checkZoneQuality()", text.str());
        }
        const double ratio = maxLen / height;
        if (!(ratio > aspectLimit)) continue;
        if (bGood) std::cout << "\n\n\ncheckZoneQuality -> height aspects\n";
        bGood = false;
        std::cout << "Bad height ratio: " << *pT << " maxLen=" << maxLen << " height=" << height << " ratio=" << ratio
                  << '\n';
    }
    return bGood;
}

bool ZoneQuality::checkAspectAndAngle(double minAngle) const
{
    std::vector<const Triangle2*> vBad;
    double worstAngle = 180.0;
    for (const Triangle2* pT : vT) {
        const double aLength[3] = {side(*pT, 0).length(), side(*pT, 1).length(), side(*pT, 2).length()};
        const auto [pShortest, pLongest] = std::minmax_element(std::begin(aLength), std::end(aLength));
        const double aspect = *pLongest / *pShortest;
        if (aspect > aspectLimit) std::cout << "HHH: Bad Aspect " << aspect << " for triangle " << *pT << '\n';
        bool bBad = false;
        for (int i = 0; i < 3; ++i) {
            const double angle = pT->getInteriorAngle25D(i);
            worstAngle = std::min(worstAngle, angle);
            if (!(angle < minAngle || aspect > aspectLimit)) continue;
            bBad = true;
            std::cout << "HHH, Lumo2D::checkZoneQuality(" << name << "): angle(" << angle << ") (aspect=" << aspect
                      << "), oppLen=" << aLength[i] << '\n';
        }
        if (bBad) vBad.push_back(pT);
    }
    if (!vBad.empty()) {
        std::cout << "Lumo2D writes constraints to " << name << "[constraintnumber].con\n";
        dt2.getConstraintMgr().writeConstraints(name.c_str());
        drawBad("Dt2_checkZoneQuality_" + name + ".ps", vBad);
    }
    std::cout << "Lumo2D::checkZoneQuality() message: numTriangles: " << vT.size() << ", worst degree=" << worstAngle
              << "\n----------------------------------------\n";
    return vBad.empty();
}

} // namespace ORBI_LUMO25D
