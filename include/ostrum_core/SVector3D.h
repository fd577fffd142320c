// SVector3D.h -- the vector of four floats used for positions, directions and sizes everywhere.
//
// Arithmetic works on x, y and z and keeps the left operand's w; vectors that the library builds from
// numbers carry w = 1. It is a plain value type (no virtual operations, no owned resources; copies
// copy the four floats): it is passed and copied by value everywhere.
//
// Choices recorded here:
//  - FRotate and Rotate both turn the vector by a right-handed rotation in radians about a unit axis
//    through the origin (counter-clockwise when looking down the axis towards the origin); Rotate is
//    the same rotation as FRotate, kept as a second name because callers use both.
//  - GetAngles returns radians: a is the heading about the y axis, 0 for a direction down -z and
//    growing as the direction turns towards +x (atan2(x, -z)); b is the pitch about the x axis,
//    positive when the direction points below the horizon (atan2(-y, |(x, z)|)). A quad in the xy
//    plane turned by -a about y and then by pi - b about x stands parallel to the view plane of a
//    camera looking along the vector, upright and unmirrored, which is what the camera-facing renders
//    of backdrops, particles and animated textures do with these angles. The zero vector gives 0, 0.
//  - Normalize of a zero vector leaves it zero and returns 0.
#pragma once

#include <string>

class SVector3D {
public:
    float x;
    float y;
    float z;
    float w;

    // Callers assign before they read; the components start at (0, 0, 0, 1) all the same.
    SVector3D() : x(0.0f), y(0.0f), z(0.0f), w(1.0f) {}
    SVector3D(float x_, float y_, float z_, float w_ = 1.0f) : x(x_), y(y_), z(z_), w(w_) {}

    const SVector3D& operator=(const SVector3D& other)
    {
        x = other.x;
        y = other.y;
        z = other.z;
        w = other.w;
        return *this;
    }
    SVector3D(const SVector3D& other) = default;

    const SVector3D& operator-=(const SVector3D& other)
    {
        x -= other.x;
        y -= other.y;
        z -= other.z;
        return *this;
    }
    const SVector3D& operator+=(const SVector3D& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    const SVector3D& operator*=(float factor)
    {
        x *= factor;
        y *= factor;
        z *= factor;
        return *this;
    }
    SVector3D operator+(const SVector3D& other) const { return SVector3D(x + other.x, y + other.y, z + other.z, w); }
    SVector3D operator-(const SVector3D& other) const { return SVector3D(x - other.x, y - other.y, z - other.z, w); }
    SVector3D operator*(float factor) const { return SVector3D(x * factor, y * factor, z * factor, w); }
    bool operator==(const SVector3D& other) const { return x == other.x && y == other.y && z == other.z; }
    bool operator!=(const SVector3D& other) const { return !(*this == other); }

    // Length of (x, y, z).
    float Length() const;
    float Dot(const SVector3D& other) const { return x * other.x + y * other.y + z * other.z; }

    // Scales x, y and z to length 1 and returns the former length; a zero vector stays zero.
    float Normalize();
    // Scales x, y and z to the given length; a negative length reverses the direction.
    void SetLength(float& length);
    // This vector := a x b (right-handed: x cross y = z).
    void CrossProduct(const SVector3D& a, const SVector3D& b);
    // Right-handed rotation by `angle` radians about the unit vector `axis` through the origin.
    void FRotate(float angle, const SVector3D& axis);
    void Rotate(float angle, const SVector3D& axis);
    // Heading and pitch of this direction in radians (see the header comment).
    void GetAngles(double& a, double& b) const;
    bool IsZero() const { return x == 0.0f && y == 0.0f && z == 0.0f; }
    // "(x, y, z, w)" with six decimals, for log lines.
    std::string asString() const;
};
