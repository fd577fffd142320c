// LGLCamera.cpp -- turning, moving, blending and loading the camera.
#include <ostrum_gl/frame/LGLCamera.h>

#include <GL/glu.h>

float LGLCamera::accumulatedPitch = 0.0f;

namespace {
const SVector3D kWorldUp(0.0f, 1.0f, 0.0f);
}

LGLCamera::LGLCamera()
    : position(0.0f, 0.0f, 0.0f),
      view(0.0f, 1.0f, 0.5f),
      upVector(0.0f, 0.0f, 1.0f),
      strafe(),
      viewDirection(),
      maxPitch(1.0f),
      referenceUp(0.0f, 1.0f, 0.0f)
{
}

void LGLCamera::SetPosAndView(float posX, float posY, float posZ, float viewX, float viewY, float viewZ,
                              float upX, float upY, float upZ)
{
    position = SVector3D(posX, posY, posZ, 1.0f);
    view = SVector3D(viewX, viewY, viewZ, 1.0f);
    upVector = SVector3D(upX, upY, upZ, 1.0f);
}

bool LGLCamera::accumulatePitch(float pitch)
{
    accumulatedPitch -= pitch;
    if (maxPitch == 0.0f)
        return true;
    if (accumulatedPitch > maxPitch)
        accumulatedPitch = maxPitch;
    if (-maxPitch > accumulatedPitch)
        accumulatedPitch = -maxPitch;
    // Kept on purpose: the clamp records the bound but does not stop the turn. After clamping the
    // value only lies outside [-maxPitch, maxPitch] when the bound is negative.
    return !(accumulatedPitch > maxPitch || accumulatedPitch < -maxPitch);
}

void LGLCamera::turnViewAbout(float angle, const SVector3D& axis)
{
    SVector3D sight = view - position;
    sight.FRotate(angle, axis);
    view = position + sight;
}

void LGLCamera::RotateView(float yaw, float pitch)
{
    if (accumulatePitch(pitch)) {
        SVector3D axis;
        axis.CrossProduct(view - position, upVector);
        axis.Normalize();
        turnViewAbout(pitch, axis);
        upVector.FRotate(pitch, axis);
    }
    turnViewAbout(yaw, kWorldUp);
    upVector.FRotate(yaw, kWorldUp);
}

void LGLCamera::RotateView(float angle, const SVector3D& axis)
{
    turnViewAbout(angle, axis);
}

void LGLCamera::RotateViewSteady(float yaw, float pitch)
{
    // Kept on purpose: the pitch axis is taken against world up, and the up vector is never turned.
    if (accumulatePitch(pitch)) {
        SVector3D axis;
        axis.CrossProduct(view - position, kWorldUp);
        axis.Normalize();
        turnViewAbout(pitch, axis);
    }
    turnViewAbout(yaw, kWorldUp);
}

void LGLCamera::BankView(float angle)
{
    SVector3D sight = view - position;
    sight.Normalize();
    upVector.FRotate(angle, sight);
}

void LGLCamera::ResetUpVector()
{
    upVector = SVector3D(0.0f, 1.0f, 0.0f, 1.0f);
}

void LGLCamera::Strafe(float distance)
{
    const SVector3D step = strafe * distance;
    position += step;
    view += step;
}

void LGLCamera::Climb(float distance)
{
    const SVector3D step = upVector * distance;
    position += step;
    view += step;
}

void LGLCamera::MoveUp(float distance)
{
    position.y += distance;
    view.y += distance;
}

void LGLCamera::Move(float distance)
{
    if (distance == 0.0f)
        return;
    SVector3D step = view - position;
    step.SetLength(distance);
    position += step;
    view += step;
}

SVector3D LGLCamera::Moved(float distance) const
{
    SVector3D step = view - position;
    step.SetLength(distance);
    return position + step;
}

void LGLCamera::MoveTo(SVector3D target, double step)
{
    SVector3D d = target - position;
    d.Normalize();
    position.x = static_cast<float>(position.x + d.x * step);
    position.y = static_cast<float>(position.y + d.y * step);
    position.z = static_cast<float>(position.z + d.z * step);
    view.x = static_cast<float>(view.x + d.x * step);
    view.y = static_cast<float>(view.y + d.y * step);
    view.z = static_cast<float>(view.z + d.z * step);
}

void LGLCamera::UpdateViewPosNorm()
{
    viewDirection = view - position;
    viewDirection.Normalize();
}

void LGLCamera::Update()
{
    strafe.CrossProduct(view - position, upVector);
    strafe.Normalize();
}

void LGLCamera::Look() const
{
    gluLookAt(position.x, position.y, position.z, view.x, view.y, view.z, upVector.x, upVector.y, upVector.z);
}

void LGLCamera::GetViewAngles(double& a, double& b) const
{
    (view - position).GetAngles(a, b);
}

void LGLCamera::MorphTo(LGLCamera other, double t)
{
    auto blend = [t](float target, float current) {
        return static_cast<float>(target * (1.0 - t) + current * t);
    };
    auto blendVector = [&blend](const SVector3D& target, SVector3D& current) {
        current.x = blend(target.x, current.x);
        current.y = blend(target.y, current.y);
        current.z = blend(target.z, current.z);
    };
    blendVector(other.position, position);
    blendVector(other.view, view);
    blendVector(other.upVector, upVector);
}
