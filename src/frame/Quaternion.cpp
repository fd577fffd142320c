// Quaternion.cpp -- construction, normalisation, conversions, product and text of Quaternion.
#include <ostrum_gl/frame/Quaternion.h>

#include <ostrum_core/LString.h>

#include <cmath>
#include <cstdio>

namespace {

// Degrees to radians, halved for the half-angle terms.
const double kDegreesToRadians = 0.017453292519943295;
// Components and vector lengths below this count as zero.
const float kZeroThreshold = 0.005f;

float clampUnit(float value)
{
    // Written with comparisons so that a not-a-number component stays not-a-number.
    if (value > 1.0f) return 1.0f;
    if (value < -1.0f) return -1.0f;
    return value;
}

}  // namespace

Quaternion::Quaternion(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_)
{
    Normalize();
}

Quaternion::Quaternion(float a1, float a2, float a3)
{
    EulerToQuat(a1, a2, a3);
}

Quaternion::Quaternion(const SVector3D& axis, float angle)
{
    AxisToQuat(axis, angle);
}

void Quaternion::Identity()
{
    x = 0.0f;
    y = 0.0f;
    z = 0.0f;
    w = 1.0f;
}

void Quaternion::Zero_Clamp()
{
    if (std::fabs(x) < kZeroThreshold) x = 0.0f;
    if (std::fabs(y) < kZeroThreshold) y = 0.0f;
    if (std::fabs(z) < kZeroThreshold) z = 0.0f;
    if (std::fabs(w) < kZeroThreshold) w = 0.0f;
}

double Quaternion::Norm() const
{
    const double dx = x, dy = y, dz = z, dw = w;
    return std::sqrt(dx * dx + dy * dy + dz * dz + dw * dw);
}

void Quaternion::Normalize()
{
    // Kept on purpose: no test for a zero norm, the zero quaternion turns into not-a-number.
    const double n = Norm();
    x = clampUnit(static_cast<float>(x / n));
    y = clampUnit(static_cast<float>(y / n));
    z = clampUnit(static_cast<float>(z / n));
    w = clampUnit(static_cast<float>(w / n));
}

void Quaternion::GetValues(float& x_, float& y_, float& z_, float& w_) const
{
    x_ = x;
    y_ = y;
    z_ = z;
    w_ = w;
}

void Quaternion::AxisToQuat(const SVector3D& axis, float angle)
{
    if (axis.IsZero()) {
        // Kept as it stands: only w is set, the vector part keeps its previous values.
        w = 1.0f;
        return;
    }
    const double half = static_cast<double>(angle) / 2.0;
    const double s = std::sin(half);
    w = static_cast<float>(std::cos(half));
    x = static_cast<float>(axis.x * s);
    y = static_cast<float>(axis.y * s);
    z = static_cast<float>(axis.z * s);
    Normalize();
}

void Quaternion::EulerToQuat(float a1, float a2, float a3)
{
    // Degrees on purpose, unlike AxisToQuat.
    const double h1 = a1 * kDegreesToRadians * 0.5;
    const double h2 = a2 * kDegreesToRadians * 0.5;
    const double h3 = a3 * kDegreesToRadians * 0.5;
    const double c1 = std::cos(h1), s1 = std::sin(h1);
    const double c2 = std::cos(h2), s2 = std::sin(h2);
    const double c3 = std::cos(h3), s3 = std::sin(h3);
    w = static_cast<float>(c1 * c2 * c3 + s1 * s2 * s3);
    x = static_cast<float>(s1 * c2 * c3 - c1 * s2 * s3);
    y = static_cast<float>(c1 * s2 * c3 + s1 * c2 * s3);
    z = static_cast<float>(c1 * c2 * s3 - s1 * s2 * c3);
    Normalize();
}

void Quaternion::GetAxisAngle(SVector3D& axis, float& angle) const
{
    const double half = std::acos(static_cast<double>(w));
    const double dx = x, dy = y, dz = z;
    const double s = std::sqrt(dx * dx + dy * dy + dz * dz);
    const double limit = kZeroThreshold;
    if (-limit < s && s < limit) {
        angle = 0.0f;
        axis = SVector3D(0.0f, 0.0f, 1.0f);
        return;
    }
    angle = static_cast<float>(2.0 * half);
    axis = SVector3D(static_cast<float>(dx / s), static_cast<float>(dy / s), static_cast<float>(dz / s));
    axis.Normalize();
}

Quaternion Quaternion::operator*(const Quaternion& q) const
{
    // Kept on purpose: the cross terms are those of q.p, so composition reads left to right.
    Quaternion r;
    r.x = w * q.x + x * q.w + z * q.y - y * q.z;
    r.y = w * q.y + y * q.w + x * q.z - z * q.x;
    r.z = w * q.z + z * q.w + y * q.x - x * q.y;
    r.w = w * q.w - x * q.x - y * q.y - z * q.z;
    r.Normalize();
    return r;
}

void Quaternion::Print() const
{
    std::printf("Quaternion is %g %g %g w is %g\n", x, y, z, w);
}

std::string Quaternion::asString() const
{
    return "(" + LString::dtoa(x) + ", " + LString::dtoa(y) + ", " + LString::dtoa(z) + ", " + LString::dtoa(w) + ")";
}
