// ostrum_core.h -- umbrella header: every public class of ostrum_core.
#pragma once

#include <ostrum_core/WinTypes.h>
#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>
#include <ostrum_core/LString.h>
#include <ostrum_core/LFile.h>
#include <ostrum_core/LGeom.h>
#include <ostrum_core/LRandom.h>
#include <ostrum_core/LTime.h>
#include <ostrum_core/LImage.h>
#include <ostrum_core/TGAImage.h>
