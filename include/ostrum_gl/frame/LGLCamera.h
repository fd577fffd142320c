// LGLCamera.h -- the game's viewpoint: eye position, point looked at, up and strafe vectors.
//
// A plain value class: copying and assignment copy every member as it stands, derived vectors
// included. Angles are radians, handed straight to SVector3D::FRotate (a right-handed turn about the
// axis), so a positive pitch lifts the line of sight and a positive yaw turns it to the left.
//
// Kept on purpose:
//  - The constructor's up vector is (0, 0, 1) while ResetUpVector sets (0, 1, 0).
//  - accumulatedPitch is one value for the whole class: every camera's RotateView(yaw, pitch) and
//    RotateViewSteady add to it, so turning one camera changes the clamp state seen by all others.
//    The turn subtracts its pitch from it (a turn upwards drives it towards -maxPitch).
//  - The pitch clamp records the bound in accumulatedPitch but never stops the turn: with a positive
//    maxPitch the pitch is always applied in full, with a negative one it is never applied, and with
//    maxPitch 0 nothing is clamped at all.
//  - MorphTo's t is the weight of the current camera, not of the target: t = 0 takes the other
//    camera's vectors, t = 1 leaves this one as it is.
//  - strafe and viewDirection go stale whenever the vectors change; only Update and
//    UpdateViewPosNorm refresh them.
//
// Choices recorded here:
//  - strafe and viewDirection start as SVector3D's default (0, 0, 0, 1) until Update and
//    UpdateViewPosNorm first run; the design leaves them unset.
//  - Nothing in the library resets accumulatedPitch; a game that wants a fresh pitch budget (a new
//    level, a teleport) sets LGLCamera::accumulatedPitch = 0 itself.
//  - GetViewAngles hands on SVector3D::GetAngles unchanged: radians, a the heading about y (0 down
//    -z, growing towards +x), b the pitch about x (positive below the horizon).
#pragma once

#include <ostrum_core/SVector3D.h>

class LGLCamera {
public:
    SVector3D position;       // eye position
    SVector3D view;           // the point looked at (a point, not a direction)
    SVector3D upVector;       // up vector handed to gluLookAt
    SVector3D strafe;         // unit vector to the right of the line of sight, valid after Update
    SVector3D viewDirection;  // unit vector from position towards view, valid after UpdateViewPosNorm
    float maxPitch;           // bound on accumulatedPitch in radians; 0 means unbounded
    SVector3D referenceUp;    // set to (0, 1, 0) by the constructor; no camera operation reads it

    // The pitch turned so far by all cameras together (negated: a turn up subtracts).
    static float accumulatedPitch;

    LGLCamera();
    LGLCamera(const LGLCamera& other) = default;
    LGLCamera(LGLCamera&& other) = default;
    LGLCamera& operator=(const LGLCamera& other) = default;
    LGLCamera& operator=(LGLCamera&& other) = default;

    // Sets position, view and up vector, each with w = 1.
    void SetPosAndView(float posX, float posY, float posZ, float viewX, float viewY, float viewZ,
                       float upX, float upY, float upZ);

    // Free turn: pitch about the strafe axis (rotating the up vector too), then yaw about world y.
    void RotateView(float yaw, float pitch);
    // Turns the point looked at by `angle` about `axis` through the eye; the up vector stays.
    void RotateView(float angle, const SVector3D& axis);
    // Turn that keeps the up vector: pitch about the axis right of the sight in the world-up frame,
    // then yaw about world y; neither step touches upVector.
    void RotateViewSteady(float yaw, float pitch);
    // Rolls the up vector by `angle` about the line of sight.
    void BankView(float angle);
    void ResetUpVector();

    // Slides sideways along strafe (call Update first so that it is current).
    void Strafe(float distance);
    // Moves along the up vector.
    void Climb(float distance);
    // Moves along world y, whatever the up vector.
    void MoveUp(float distance);
    // Moves along the line of sight; 0 does nothing, a negative distance moves backwards.
    void Move(float distance);
    // Where Move(distance) would put the eye; the camera is not changed.
    SVector3D Moved(float distance) const;
    // Moves eye and view together by `step` towards `target`.
    void MoveTo(SVector3D target, double step);

    void UpdateViewPosNorm();
    void Update();

    // gluLookAt(position, view, upVector) on the current matrix.
    void Look() const;
    void GetViewAngles(double& a, double& b) const;

    // Blends position, view and up: other * (1 - t) + this * t.
    void MorphTo(LGLCamera other, double t);

    SVector3D GetPosition() const { return position; }
    SVector3D GetView() const { return view; }
    SVector3D GetUpVector() const { return upVector; }
    SVector3D GetStrafe() const { return strafe; }

private:
    // Adds -pitch to accumulatedPitch under the clamp rule; false when the pitch step is skipped.
    bool accumulatePitch(float pitch);
    // view := position + (view - position) turned by angle about axis.
    void turnViewAbout(float angle, const SVector3D& axis);
};
