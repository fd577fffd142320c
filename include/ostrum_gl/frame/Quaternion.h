// Quaternion.h -- the small rotation quaternion: Euler angles and axis-angle in, products, axis-angle out.
//
// Components are x, y, z (vector part) and w (scalar part); every constructor and every product
// leaves the quaternion normalised. Euler angles are degrees, the axis-angle forms radians.
//
// Kept on purpose:
//  - operator* has the cross terms of the usual Hamilton product reversed, so p * q is the Hamilton
//    product q.p: composition reads left to right (EulerToQuat(a1, a2, a3) equals
//    Quaternion(a1, 0, 0) * Quaternion(0, a2, 0) * Quaternion(0, 0, a3)).
//  - AxisToQuat with a zero axis sets only w to 1 and leaves x, y and z as they were.
//  - Normalize does not guard against a zero quaternion: its components become not-a-number.
//
// Choices recorded here:
//  - Every quaternion starts as the identity before a constructor body runs, so the axis-angle
//    constructor with a zero axis yields the identity rather than undefined x, y and z.
//  - Print writes the four numbers with printf's %g (six significant digits, the default of a C++
//    stream): "Quaternion is 0 0 0.707107 w is 0.707107".
//  - asString gives "(x, y, z, w)", each number made by LString::dtoa, like SVector3D::asString.
#pragma once

#include <ostrum_core/SVector3D.h>

#include <string>

class Quaternion {
public:
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 1.0f;

    // The identity (0, 0, 0, 1).
    Quaternion() = default;
    // Sets the four values, then normalises.
    Quaternion(float x, float y, float z, float w);
    // EulerToQuat(a1, a2, a3): degrees.
    Quaternion(float a1, float a2, float a3);
    // AxisToQuat(axis, angle): radians.
    Quaternion(const SVector3D& axis, float angle);
    Quaternion(const Quaternion& other) = default;
    Quaternion& operator=(const Quaternion& other) = default;

    // (0, 0, 0, 1).
    void Identity();
    // Every component whose absolute value is below 0.005 becomes 0.
    void Zero_Clamp();
    // Divides by the norm (no test for zero), then clamps each component to [-1, 1].
    void Normalize();
    void GetValues(float& x, float& y, float& z, float& w) const;
    // Rotation by angle radians about axis (the axis is not normalised first), then normalised.
    void AxisToQuat(const SVector3D& axis, float angle);
    // Rotation about x by a1, then about y by a2, then about z by a3, all in degrees; normalised.
    void EulerToQuat(float a1, float a2, float a3);
    // Angle in radians and unit axis for glRotatef-style use; (0, 0, 1) and 0 for a vector part
    // shorter than 0.005.
    void GetAxisAngle(SVector3D& axis, float& angle) const;
    // The product with the reversed cross terms (see the header comment), normalised.
    Quaternion operator*(const Quaternion& q) const;

    // "Quaternion is x y z w is w" and a line end on standard output.
    void Print() const;
    std::string asString() const;

private:
    double Norm() const;
};
