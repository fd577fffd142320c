// ostrum_gl.h -- umbrella header: every public class of ostrum_gl, and ostrum_core beneath it.
#pragma once

#include <ostrum_core/ostrum_core.h>

#include <ostrum_gl/platform/LGLPlatform.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLCamera.h>
#include <ostrum_gl/frame/LGLApp.h>
#include <ostrum_gl/frame/LGLFrustum.h>
#include <ostrum_gl/frame/Quaternion.h>
#include <ostrum_gl/interface/LGLFont.h>
