// ostrum_core.h -- umbrella header: every public class of ostrum_core.
#pragma once

#include <ostrum_core/WinTypes.h>
#include <ostrum_core/SVector3D.h>
#include <ostrum_core/tRect.h>
