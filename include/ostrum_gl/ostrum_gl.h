// ostrum_gl.h -- umbrella header: every public class of ostrum_gl, and ostrum_core beneath it.
#pragma once

#include <ostrum_core/ostrum_core.h>

// platform
#include <ostrum_gl/platform/LGLPlatform.h>

// rendering frame
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLApp.h>
#include <ostrum_gl/frame/LGLCamera.h>
#include <ostrum_gl/frame/LGLFrustum.h>
#include <ostrum_gl/frame/LGLTextureBlending.h>
#include <ostrum_gl/frame/Quaternion.h>

// models
#include <ostrum_gl/models/3dsLoader.h>
#include <ostrum_gl/models/Object3DS.h>

// scenery
#include <ostrum_gl/scenery/LGLBackdrop.h>
#include <ostrum_gl/scenery/LGLSkybox.h>
#include <ostrum_gl/scenery/LGLTerrain.h>
#include <ostrum_gl/scenery/TerrainObject.h>
#include <ostrum_gl/scenery/TerrainTile.h>

// collision
#include <ostrum_gl/collision/LGLColMesh.h>

// interface
#include <ostrum_gl/interface/LGLFont.h>
#include <ostrum_gl/interface/LGLMenu.h>
#include <ostrum_gl/interface/LGLUI.h>

// effects
#include <ostrum_gl/effects/LGLAVI.h>
#include <ostrum_gl/effects/LGLAnimTexture.h>
#include <ostrum_gl/effects/LGLParticleSystem.h>
#include <ostrum_gl/effects/LGLScreenTransition.h>
