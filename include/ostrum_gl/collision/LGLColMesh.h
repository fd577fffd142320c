// LGLColMesh.h -- a coarse collision volume of boxes (grouped under bounding groups), tubes and spheres,
// or a whole Object3DS model, placed in the world by a position and yaw, pitch and roll in radians.
//
// Kept on purpose:
//  - Only boxes inside a box group take part in the collision tests; boxes outside any group, tubes
//    and spheres are never tested (they serve for display and for the game's own use).
//  - The mesh test is not symmetric: only the box corners of the other mesh are tested against this one.
//  - save writes nothing. The text format has no way to write box groups.
//  - Spheres are drawn in the local frame, without position or angles; tubes ignore roll when drawn.
//  - The box grids measure each cell's y range downwards from -maxY (the model keeps its y extents on
//    the negated y).
//  - A keyword line with too few tokens prints "Error in colmesh file..." and ends the process with
//    exit(-1); a missing file is silent and keeps the mesh's boxes, tubes and spheres.
//
// Choices recorded here:
//  - The whole-model box grid passes extra = (0, 0, -1) to addBox, a direction whose two angles are
//    0, so the grid is drawn where it collides; the sub-object grid passes (0, 0, 1) as it always has,
//    which turns its boxes half a turn about y on screen only.
//  - The vertex list that the whole-model box grid fetches is dropped after fetching.
//  - endBoxGroup without any group does nothing; a group closed without boxes keeps the bounds it had
//    (zero) and, holding no box, never collides. The collision tests skip box indices that name no
//    box and world points that the mesh does not hold, so a hand-edited mesh never reads out of range.
//  - The box grids do nothing for a null model. The sub-object grid refuses an id outside the model's
//    table of bounding volumes (0 .. Object3DS::MAX_SUBOBJECTS - 1) with
//      ERROR: LGLColMesh::create3DSBoxGrid: sub-object <id> of "<model file>" has no bounding volume
//    and builds nothing; an id inside the table that names no sub-object gets an empty group.
//  - A file that exists but cannot be opened prints
//      ERROR: LGLColMesh::load: cannot read "<file>"
//    and returns with the mesh unchanged (apart from model, which load always clears).
//  - The angles that SVector3D::GetAngles gives (radians) are turned into degrees for glRotate with
//    the same factor as the mesh's own angles.
#pragma once

#include <ostrum_core/SVector3D.h>

#include <istream>
#include <string>
#include <vector>

class Object3DS;

class LGLColMesh {
public:
    struct tTube {
        SVector3D a;
        SVector3D b;
        double radiusA = 0.0;
        double radiusB = 0.0;
    };

    struct tSphere {
        SVector3D centre;
        double radius = 0.0;
    };

    struct tBox {
        SVector3D centre;
        SVector3D extra;
        double boundRadius = 0.0;
        SVector3D corners[8];  // (-,-,-), (-,-,+), (-,+,-), (-,+,+), (+,-,-), (+,-,+), (+,+,-), (+,+,+)
        SVector3D min;
        SVector3D max;
    };

    struct tBoxGroup {
        int firstBox = 0;
        int lastBox = 0;
        SVector3D centre;
        double size = 0.0;
        SVector3D min;
        SVector3D max;
    };

    // Radians to degrees for glRotate.
    static constexpr double RAD2DEG = 57.29577951308232;

    SVector3D position;
    SVector3D offset;
    Object3DS* model;
    double spareValue;
    double yaw;
    double pitch;
    double roll;
    std::vector<tTube> tubes;
    std::vector<tBox> boxes;
    std::vector<tSphere> spheres;
    std::vector<SVector3D> localPoints;
    std::vector<SVector3D> worldPoints;
    std::vector<tBoxGroup> boxGroups;

    LGLColMesh();
    LGLColMesh(const LGLColMesh& other) = default;
    LGLColMesh(LGLColMesh&& other) noexcept = default;
    LGLColMesh& operator=(const LGLColMesh& other) = default;
    LGLColMesh& operator=(LGLColMesh&& other) noexcept = default;
    ~LGLColMesh() = default;

    void init();
    void dispose();

    void addBox(SVector3D centre, SVector3D extra, double sx, double sy, double sz);
    void addBox(SVector3D centre, SVector3D extra, double size);
    void addTube(SVector3D a, SVector3D b, double radiusA, double radiusB);
    void addSphere(SVector3D centre, double radius);
    void beginBoxGroup(SVector3D centre, double size);
    void endBoxGroup();

    void updateWorldCoordinates();
    bool collidesWith(SVector3D p);
    bool collidesWith(const LGLColMesh& other);

    void assign3DSCollisionModel(Object3DS* obj);
    void create3DSBoxGrid(Object3DS* obj, int n);
    void create3DSBoxGrid(Object3DS* obj, int nx, int ny, int nz);
    void create3DSBoxGrid(Object3DS* obj, int sub, int nx, int ny, int nz);

    void load(std::string file);
    // The line reader of load over any stream: appends what the lines hold and returns false at the
    // first keyword line with too few tokens (load prints its message and ends the process there).
    bool read(std::istream& in);
    void save(std::string file);

    void render();
    void render(float r, float g, float b);
    void renderLines(SVector3D* points, int i, int j);

private:
    // Steps 1 to 3 of the point test, on a point already in world coordinates.
    bool pointInside(SVector3D p) const;
};
