// TerrainTile.h -- one tile of the terrain surface: two ground textures and the weight between them.
//
// A tile shows texA * blend + texB * (1 - blend): blend 1 shows only texA, blend 0 only texB. The
// terrain holds a 256 x 256 grid of these, a backup grid for one level of undo, and one record per far
// plain. A tile made by the default constructor is (0, 0, 0.0), so a grid that was never filled reads
// as all zero.
#pragma once

struct TerrainTile {
    int texA = 0;
    int texB = 0;
    double blend = 0.0;
};
