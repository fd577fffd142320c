// TerrainObject.h -- one model placed on the terrain: which model, where, how turned, and the data
// kept for culling and level of detail.
//
// The terrain holds 10,000 of these inline and copies them member by member. The level pointers point
// into the game's model map and are not owned.
//
// Choices recorded here:
//  - A fresh record has an empty name, scale 1, position and rotations 0, the identity matrix,
//    distance 0, flag 0, no level models and no bounding-box samples.
//  - bbSamples holds plain float triples. The sample array is the bulk of the terrain's size (12 KB
//    per record), so the constructor does not write it: only the first numBBSamples entries have
//    meaning, and untouched pages of a new terrain cost no memory.
#pragma once

#include <ostrum_core/SVector3D.h>
#include <ostrum_gl/collision/LGLColMesh.h>

#include <string>

class Object3DS;

struct TerrainObject {
    static const int MAX_BB_SAMPLES = 1000;

    struct tBBSample {
        float x;
        float y;
        float z;
    };

    TerrainObject() = default;

    std::string modelName;
    double scale = 1.0;
    SVector3D pos{0.0f, 0.0f, 0.0f, 1.0f};
    int rotX = 0;
    int rotY = 0;
    int rotZ = 0;
    float matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    double camDist = 0.0;
    int flag = 0;
    Object3DS* lod[3] = {nullptr, nullptr, nullptr};
    tBBSample bbSamples[MAX_BB_SAMPLES];
    int numBBSamples = 0;
    LGLColMesh colMesh;
};
