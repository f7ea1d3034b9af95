#ifndef LUMO25D_TESTS_CLOUD_CLOUDTWIN_H
#define LUMO25D_TESTS_CLOUD_CLOUDTWIN_H

#include "Bbox2.h"
#include "CloudPrepare.h"
#include "Lumo_2D.h"

#include <gmpxx.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace cloud_test
{

using namespace ORBI_LUMO25D;
using Points = std::vector<Point2>;

/// The reduction of clouds once more, by maps of cells and without any sorting by codes.
class CloudTwin
{
public:
    explicit CloudTwin(const Points& vPoints_) : vPoints(vPoints_)
    {
        for (const Point2& p : vPoints) box.add(p);
        range = box.getMaxRange();
    }

    Points grid(double length, SumStrategy sum, const Points& vHull) const
    {
        return simplified(cells(vPoints, 4.0 * length, 1.0 / length), sum, vHull);
    }

    /// Level by level, without jumps.
    Points adaptive(double maxDiffZ, SumStrategy sum, const Points& vHull) const
    {
        const double margin = range / 0x1p29;
        const double perCell = 0x1p31 / (range + 2.0 * margin);
        std::vector<Points> vDone, vOpen = {vPoints};
        for (int level = 30; level >= 0; --level) {
            std::vector<Points> vNext;
            for (const Points& vCell : vOpen) {
                const auto zs = std::minmax_element(vCell.begin(), vCell.end(),
                                                    [](const Point2& a, const Point2& b) { return a.z() < b.z(); });
                if (!(zs.second->z() - zs.first->z() > maxDiffZ) || range == 0.0) {
                    vDone.push_back(vCell);
                    continue;
                }
                for (Points& v : cells(vCell, margin, perCell, level)) vNext.push_back(std::move(v));
            }
            vOpen = std::move(vNext);
        }
        vDone.insert(vDone.end(), vOpen.begin(), vOpen.end());
        return simplified(vDone, sum, vHull);
    }

    /// The hull that the engine finds; without area, the two ends.
    Points hull(bool bAllPoints, bool& bArea) const
    {
        Lumo_2D lumo;
        lumo.insert(vPoints);
        bArea = lumo.hasArea();
        Points v;
        if (!bArea) {
            v.push_back(*std::min_element(vPoints.begin(), vPoints.end()));
            v.push_back(*std::max_element(vPoints.begin(), vPoints.end()));
            if (v[0] == v[1]) v.pop_back();
            return v;
        }
        std::vector<Point2*> vHull;
        lumo.getConvexHull(bAllPoints, vHull);
        for (const Point2* p : vHull) v.push_back(*p);
        return v;
    }

private:
    std::vector<Points> cells(const Points& v, double margin, double perCell, int level = 0) const
    {
        std::map<std::pair<std::uint64_t, std::uint64_t>, Points> mCells;
        for (const Point2& p : v) {
            const auto cx =
                range == 0.0 ? 0 : static_cast<std::uint64_t>((p.x() - (box.get_minX() - margin)) * perCell);
            const auto cy =
                range == 0.0 ? 0 : static_cast<std::uint64_t>((p.y() - (box.get_minY() - margin)) * perCell);
            mCells[{cx >> level, cy >> level}].push_back(p);
        }
        std::vector<Points> vCells;
        for (const auto& cell : mCells) vCells.push_back(cell.second);
        return vCells;
    }

    static Points simplified(const std::vector<Points>& vCells, SumStrategy sum, Points vHull)
    {
        Points vResult;
        for (const Points& vCell : vCells) {
            const std::size_t before = vResult.size();
            for (const Point2& p : vCell) {
                const auto it = std::find_if(vHull.begin(), vHull.end(), [&p](const Point2& q) {
                    return p.samePoint(q) && p.getCustomIndex() == q.getCustomIndex();
                });
                if (it == vHull.end()) continue;
                vResult.push_back(p);
                vHull.erase(it); // another point that is the same in all is none of the hull
            }
            if (vResult.size() == before) vResult.push_back(summary(vCell, sum));
        }
        return vResult;
    }

    /// Rounded to nearest, ties to even: where doubles are sparse, another rounding would be another point.
    static double nearest(const mpq_class& exact)
    {
        const double toZero = exact.get_d();
        const double away = std::nextafter(toZero, sgn(exact) < 0 ? -HUGE_VAL : HUGE_VAL);
        const int side = cmp(abs(exact - toZero), abs(away - exact));
        const bool bEven = std::fmod(toZero, 2.0 * (away - toZero)) == 0.0;
        return side < 0 || (side == 0 && bEven) ? toZero : away;
    }

    static Point2 summary(Points vCell, SumStrategy sum)
    {
        std::sort(vCell.begin(), vCell.end(), [](const Point2& a, const Point2& b) { return a.z() < b.z(); });
        const double z = sum == SMS_MINIMUM   ? vCell.front().z()
                         : sum == SMS_MAXIMUM ? vCell.back().z()
                                              : vCell[vCell.size() / 2].z();
        mpq_class x, y, sumZ;
        Points vSame;
        for (const Point2& p : vCell) {
            if (sum != SMS_AVERAGE && p.z() != z) continue;
            vSame.push_back(p);
            x += mpq_class(p.x());
            y += mpq_class(p.y());
            sumZ += mpq_class(p.z());
        }
        if (vSame.size() == 1) return vSame.front();
        const mpq_class n(static_cast<unsigned long>(vSame.size()));
        const auto mean = [&n](const mpq_class& total) { return nearest(total / n); };
        return Point2(mean(x), mean(y), sum == SMS_AVERAGE ? mean(sumZ) : z);
    }

    const Points& vPoints;
    Bbox2 box;
    double range = 0.0;
};

} // namespace cloud_test

#endif
