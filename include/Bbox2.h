#ifndef LUMO25D_BBOX2_H
#define LUMO25D_BBOX2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

class OrbiTest;

/// An axis-parallel bounding box in the plane; heights play no part.
///
/// A new box is invalid: it holds nothing. Adding a point makes it valid. Coordinates that go in must be finite
/// numbers; then a box stays finite whatever is done to it: growth ends at the largest finite double.
class LUMO25D_API Bbox2
{
public:
    /// An invalid box.
    Bbox2() = default;
    /// The same, for the library's own use: the predicates are told when the box is doubled or enlarged. They must
    /// outlive the box and its copies. May be NULL.
    explicit Bbox2(OrbiTest* pOrbiTest_) : pOrbiTest(pOrbiTest_) {}

    /// True when anything has been set in x: a point, or the lower bound of x alone.
    bool isValid() const { return minX < std::numeric_limits<double>::max(); }

    /// Grows the box so that it holds p. True when a bound changed; always true for the first point. Bounds that were set
    /// before the first point stay as they are with it.
    bool add(const Point2& p)
    {
        if (bValid) return treatPointForValidBox(p);
        treatPointForInvalidBox(p);
        return true;
    }
    /// The same for a range of Point2 or of pointers to Point2; false for an empty range.
    template <typename Iterator>
    bool add(Iterator first, Iterator last)
    {
        bool bChanged = false;
        for (; first != last; ++first) {
            if (add(toPoint(*first))) bChanged = true;
        }
        return bChanged;
    }
    /// The same for n triples x, y, z; false for n = 0, which changes nothing.
    bool add(std::size_t n, const double* coords);

    /// The four bounds; of a new box, the largest double for the minima and the lowest for the maxima.
    void getBounds(double& minX_, double& minY_, double& maxX_, double& maxY_) const
    {
        minX_ = minX;
        minY_ = minY;
        maxX_ = maxX;
        maxY_ = maxY;
    }
    /// One bound each.
    double get_minX() const { return minX; }
    double get_minY() const { return minY; }
    double get_maxX() const { return maxX; }
    double get_maxY() const { return maxY; }

    /// Set one bound. The box becomes valid when both maxima are not below their minima.
    void setMinX(double value) { setBound(minX, value); }
    void setMinY(double value) { setBound(minY, value); }
    void setMaxX(double value) { setBound(maxX, value); }
    void setMaxY(double value) { setBound(maxY, value); }

    /// Extent in x, in y, and the larger of both; infinite where the difference of two doubles overflows.
    double getRangeX() const { return maxX - minX; }
    double getRangeY() const { return maxY - minY; }
    double getMaxRange() const { return getRangeX() < getRangeY() ? getRangeY() : getRangeX(); }
    /// The smaller of the two minima, the larger of the two maxima.
    double getMinCoord() const { return minY < minX ? minY : minX; }
    double getMaxCoord() const { return maxX < maxY ? maxY : maxX; }

    /// The lower left and the upper right corner, z 0.
    Point2 getMinPoint() const { return Point2(minX, minY, 0.0); }
    Point2 getMaxPoint() const { return Point2(maxX, maxY, 0.0); }
    /// The centre, z 0. An invalid box is warned about and gives a point without meaning.
    Point2 computeCenter() const;

    /// True when p lies in the box or on its border; false for an invalid box.
    bool isInBox(const Point2& p) const
    {
        return bValid && p.x() >= minX && p.x() <= maxX && p.y() >= minY && p.y() <= maxY;
    }
    /// True when the boxes share a point, be it on their borders. With an invalid box: a warning and false.
    bool doIntersect(const Bbox2& other) const;

    /// Grows THIS box by other and returns a copy of it. An invalid other is warned about and changes nothing.
    Bbox2 operator+(const Bbox2& other);

    /// Appends the four corners counterclockwise from the lower left one, z 0; nothing, with a warning, for an invalid
    /// box.
    void getCorners(std::vector<Point2>& vCorners) const;
    /// The same for a box that is larger by d on all sides.
    void getOffsetCorners(double d, std::vector<Point2>& vCorners) const;

    /// Gives a valid box without extent in x (in y) an extent of d there, by raising the maximum. Where d vanishes in
    /// rounding the extent is the smallest there is; so the box has an area afterwards, whatever d was.
    void inflateIfDegenerate(double d);
    /// Adds half of the range on each side. Nothing for an invalid box.
    void doubleTheBox();
    /// Multiplies the ranges by factor about the centre. A factor of 1 or more never loses a point of the box. An
    /// invalid box stays as it is, a factor that is negative or no finite number is warned about.
    void enlargeRanges(double factor);

private:
    static const Point2& toPoint(const Point2& p) { return p; }
    static const Point2& toPoint(const Point2* p) { return *p; }

    void setBound(double& bound, double value)
    {
        bound = value;
        if (maxX >= minX && maxY >= minY) bValid = true;
    }
    void treatPointForInvalidBox(const Point2& p);
    bool treatPointForValidBox(const Point2& p)
    {
        bool bChanged = false;
        if (p.x() < minX) {
            minX = p.x();
            bChanged = true;
        } else if (p.x() > maxX) {
            maxX = p.x();
            bChanged = true;
        }
        if (p.y() < minY) {
            minY = p.y();
            bChanged = true;
        } else if (p.y() > maxY) {
            maxY = p.y();
            bChanged = true;
        }
        return bChanged;
    }

    double minX = std::numeric_limits<double>::max();
    double minY = std::numeric_limits<double>::max();
    double maxX = std::numeric_limits<double>::lowest();
    double maxY = std::numeric_limits<double>::lowest();
    bool bValid = false;
    OrbiTest* pOrbiTest = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
