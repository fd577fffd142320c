// LGeom.cpp -- rectangles, distances, triangle normals and the sigmoid curve of LGeom.
#include <ostrum_core/LGeom.h>

#include <cmath>

void LGeom::setRect(tRect& rect, int left, int top, int right, int bottom)
{
    rect.left = left;
    rect.top = top;
    rect.right = right;
    rect.bottom = bottom;
}

void LGeom::setRectExt(tRect& rect, int left, int top, int width, int height)
{
    setRect(rect, left, top, left + width, top + height);
}

void LGeom::moveRect(tRect& rect, int dx, int dy)
{
    rect.left += dx;
    rect.right += dx;
    rect.top += dy;
    rect.bottom += dy;
}

double LGeom::pointDist(const SVector3D& a, const SVector3D& b)
{
    const double dx = static_cast<double>(a.x) - b.x;
    const double dy = static_cast<double>(a.y) - b.y;
    const double dz = static_cast<double>(a.z) - b.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double LGeom::pointDist(double x1, double y1, double x2, double y2)
{
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    return std::sqrt(dx * dx + dy * dy);
}

void LGeom::calcNormal(SVector3D a, SVector3D b, SVector3D c, SVector3D& normal)
{
    SVector3D ab = b - a;
    SVector3D ac = c - a;
    SVector3D n;
    n.CrossProduct(ab, ac);
    n.Normalize();
    n.w = 1.0f;
    normal = n;
}

double LGeom::sigmoid(double x)
{
    return 1.0 / (1.0 + std::exp(-4.0 * (2.0 * x - 1.0)));
}
