#include "Plane.h"

#include "support/check.h"
#include "support/messages.h"

namespace ORBI_LUMO25D
{

namespace
{

double scalarProduct(const Vector2& v, const Point2& p)
{
    return v.x() * p.x() + v.y() * p.y() + v.z() * p.z();
}

} // namespace

Plane::Plane(const Point2& p, const Vector2& n) : normal(normalize(n)), d(scalarProduct(normal, p)) {}

Plane::Plane(const Point2& p0, const Point2& p1, const Point2& p2)
{
    const Vector2 product = crossProduct(normalize(p1 - p0), normalize(p2 - p0));
    if (product.isDegenerate()) {
        msgWarning("Plane::Plane()", "Degenerate plane");
        return;
    }
    normal = normalize(product);
    const double vecLen = normal.length();
    LUMO_CHECK(vecLen > .99 && vecLen < 1.01, "vecLen>.99 && vecLen<1.01");
    d = scalarProduct(normal, p0);
}

bool Plane::canConstruct(const Point2& p0, const Point2& p1, const Point2& p2)
{
    const Vector2 v = p1 - p0;
    const Vector2 w = p2 - p0;
    if (v.isDegenerate() || w.isDegenerate()) return false;
    return crossProduct(normalize(v), normalize(w)).length() > 0.0;
}

} // namespace ORBI_LUMO25D
