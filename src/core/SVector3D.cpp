// SVector3D.cpp -- length, normalisation, cross product, rotation and angles of SVector3D.
#include <ostrum_core/SVector3D.h>

#include <cmath>
#include <cstdio>

float SVector3D::Length() const
{
    return std::sqrt(x * x + y * y + z * z);
}

float SVector3D::Normalize()
{
    float length = Length();
    if (length > 0.0f) {
        x /= length;
        y /= length;
        z /= length;
    }
    return length;
}

void SVector3D::SetLength(float& length)
{
    Normalize();
    x *= length;
    y *= length;
    z *= length;
}

void SVector3D::CrossProduct(const SVector3D& a, const SVector3D& b)
{
    float cx = a.y * b.z - a.z * b.y;
    float cy = a.z * b.x - a.x * b.z;
    float cz = a.x * b.y - a.y * b.x;
    x = cx;
    y = cy;
    z = cz;
}

void SVector3D::FRotate(float angle, const SVector3D& axis)
{
    // Rodrigues' formula: v cos t + (k x v) sin t + k (k . v)(1 - cos t)
    const double c = std::cos(static_cast<double>(angle));
    const double s = std::sin(static_cast<double>(angle));
    const double kx = axis.x, ky = axis.y, kz = axis.z;
    const double vx = x, vy = y, vz = z;
    const double dot = kx * vx + ky * vy + kz * vz;
    const double rx = vx * c + (ky * vz - kz * vy) * s + kx * dot * (1.0 - c);
    const double ry = vy * c + (kz * vx - kx * vz) * s + ky * dot * (1.0 - c);
    const double rz = vz * c + (kx * vy - ky * vx) * s + kz * dot * (1.0 - c);
    x = static_cast<float>(rx);
    y = static_cast<float>(ry);
    z = static_cast<float>(rz);
}

void SVector3D::Rotate(float angle, const SVector3D& axis)
{
    FRotate(angle, axis);
}

void SVector3D::GetAngles(double& a, double& b) const
{
    const double horizontal = std::sqrt(static_cast<double>(x) * x + static_cast<double>(z) * z);
    a = (x == 0.0f && z == 0.0f) ? 0.0 : std::atan2(static_cast<double>(x), -static_cast<double>(z));
    b = (horizontal == 0.0 && y == 0.0f) ? 0.0 : std::atan2(-static_cast<double>(y), horizontal);
}

std::string SVector3D::asString() const
{
    // The longest float in %f is 47 characters (-3.4e38 has 39 digits), four of them and the
    // separators take 196.
    char buf[256];
    std::snprintf(buf, sizeof buf, "(%f, %f, %f, %f)", x, y, z, w);
    return buf;
}
