// LGLColMesh.cpp -- collision mesh: boxes, groups, tubes, spheres, box grids over models, the point and
// mesh tests, the wire-frame display and the text file reader.
#include <ostrum_gl/collision/LGLColMesh.h>

#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/models/Object3DS.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LString.h>

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

const SVector3D kAxisX(1.0f, 0.0f, 0.0f);
const SVector3D kAxisY(0.0f, 1.0f, 0.0f);
const SVector3D kAxisZ(0.0f, 0.0f, 1.0f);

// Corner pairs of a box's twelve edges, in drawing order.
const int kEdges[12][2] = {{0, 1}, {0, 2}, {0, 4}, {1, 3}, {1, 5}, {2, 3},
                           {2, 6}, {3, 7}, {4, 5}, {4, 6}, {5, 7}, {6, 7}};

bool within(const SVector3D& q, const SVector3D& lo, const SVector3D& hi)
{
    return lo.x <= q.x && q.x <= hi.x && lo.y <= q.y && q.y <= hi.y && lo.z <= q.z && q.z <= hi.z;
}

SVector3D vec(const std::vector<std::string>& t, size_t first)
{
    return SVector3D(static_cast<float>(std::atof(t[first].c_str())), static_cast<float>(std::atof(t[first + 1].c_str())),
                     static_cast<float>(std::atof(t[first + 2].c_str())), 1.0f);
}

}  // namespace

LGLColMesh::LGLColMesh() : model(nullptr), spareValue(0.0), yaw(0.0), pitch(0.0), roll(0.0) {}

void LGLColMesh::init() {}

void LGLColMesh::dispose()
{
    tubes.clear();
    boxes.clear();
    spheres.clear();
    localPoints.clear();
    worldPoints.clear();
    boxGroups.clear();
    model = nullptr;
}

void LGLColMesh::addBox(SVector3D centre, SVector3D extra, double sx, double sy, double sz)
{
    tBox box;
    box.centre = centre;
    box.extra = extra;
    box.boundRadius = sx;
    if (sy > box.boundRadius)
        box.boundRadius = sy;
    if (sz > box.boundRadius)
        box.boundRadius = sz;
    for (int c = 0; c < 8; ++c) {
        const double x = (c & 4) ? centre.x + sx : centre.x - sx;
        const double y = (c & 2) ? centre.y + sy : centre.y - sy;
        const double z = (c & 1) ? centre.z + sz : centre.z - sz;
        box.corners[c] = SVector3D(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z), centre.w);
    }
    box.min = box.corners[0];
    box.max = box.corners[7];
    boxes.push_back(box);

    for (const SVector3D& corner : box.corners) {
        bool known = false;
        for (const SVector3D& p : localPoints)
            if (p.x == corner.x && p.y == corner.y && p.z == corner.z) {
                known = true;
                break;
            }
        if (!known)
            localPoints.push_back(corner);
    }
    worldPoints.resize(localPoints.size());
}

void LGLColMesh::addBox(SVector3D centre, SVector3D extra, double size)
{
    addBox(centre, extra, size, size, size);
}

void LGLColMesh::addTube(SVector3D a, SVector3D b, double radiusA, double radiusB)
{
    tTube tube;
    tube.a = a;
    tube.b = b;
    tube.radiusA = radiusA;
    tube.radiusB = radiusB;
    tubes.push_back(tube);
}

void LGLColMesh::addSphere(SVector3D centre, double radius)
{
    tSphere sphere;
    sphere.centre = centre;
    sphere.radius = radius;
    spheres.push_back(sphere);
}

void LGLColMesh::beginBoxGroup(SVector3D centre, double size)
{
    tBoxGroup group;
    group.firstBox = static_cast<int>(boxes.size());
    group.lastBox = static_cast<int>(boxes.size());
    group.centre = centre;
    group.size = size;
    boxGroups.push_back(group);
}

void LGLColMesh::endBoxGroup()
{
    if (boxGroups.empty())
        return;
    tBoxGroup& group = boxGroups.back();
    group.lastBox = static_cast<int>(boxes.size()) - 1;
    if (group.firstBox < 0 || group.firstBox > group.lastBox)
        return;
    SVector3D lo = boxes[group.firstBox].corners[0];
    SVector3D hi = lo;
    for (int b = group.firstBox; b <= group.lastBox; ++b)
        for (const SVector3D& c : boxes[b].corners) {
            if (c.x < lo.x) lo.x = c.x;
            if (c.y < lo.y) lo.y = c.y;
            if (c.z < lo.z) lo.z = c.z;
            if (c.x > hi.x) hi.x = c.x;
            if (c.y > hi.y) hi.y = c.y;
            if (c.z > hi.z) hi.z = c.z;
        }
    group.min = lo;
    group.max = hi;
}

void LGLColMesh::updateWorldCoordinates()
{
    worldPoints.resize(localPoints.size());
    for (size_t i = 0; i < localPoints.size(); ++i) {
        SVector3D w = localPoints[i];
        w.Rotate(static_cast<float>(roll), kAxisZ);
        w.Rotate(static_cast<float>(pitch), kAxisX);
        w.Rotate(static_cast<float>(yaw), kAxisY);
        w += position;
        worldPoints[i] = w;
    }
}

bool LGLColMesh::pointInside(SVector3D p) const
{
    SVector3D q = p;
    q -= position;
    q.Rotate(static_cast<float>(-yaw), kAxisY);
    q.Rotate(static_cast<float>(-pitch), kAxisX);
    q.Rotate(static_cast<float>(-roll), kAxisZ);

    if (model != nullptr) {
        CVector3 c;
        c.x = q.x;
        c.y = q.y;
        c.z = q.z;
        if (model->collidesWith(c))
            return true;
    }
    const int count = static_cast<int>(boxes.size());
    for (const tBoxGroup& group : boxGroups) {
        if (!within(q, group.min, group.max))
            continue;
        for (int b = group.firstBox < 0 ? 0 : group.firstBox; b <= group.lastBox && b < count; ++b)
            if (within(q, boxes[b].min, boxes[b].max))
                return true;
    }
    return false;
}

bool LGLColMesh::collidesWith(SVector3D p)
{
    return pointInside(p);
}

bool LGLColMesh::collidesWith(const LGLColMesh& other)
{
    for (size_t i = 0; i < other.localPoints.size() && i < other.worldPoints.size(); ++i)
        if (pointInside(other.worldPoints[i]))
            return true;
    return false;
}

void LGLColMesh::assign3DSCollisionModel(Object3DS* obj)
{
    model = obj;
}

void LGLColMesh::create3DSBoxGrid(Object3DS* obj, int n)
{
    create3DSBoxGrid(obj, n, n, n);
}

void LGLColMesh::create3DSBoxGrid(Object3DS* obj, int nx, int ny, int nz)
{
    if (nx == 0 || ny == 0 || nz == 0 || obj == nullptr)
        return;
    const double dx = (obj->maxX - obj->minX) / nx;
    const double dy = (obj->maxY - obj->minY) / ny;
    const double dz = (obj->maxZ - obj->minZ) / nz;
    offset = SVector3D(static_cast<float>(obj->centerX), static_cast<float>(obj->centerY),
                       static_cast<float>(obj->centerZ), 1.0f);
    spareValue = obj->radius;
    beginBoxGroup(offset, obj->radius);
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j)
            for (int k = 0; k < nz; ++k) {
                const double x0 = obj->minX + i * dx, x1 = obj->minX + (i + 1) * dx;
                const double y0 = j * dy - obj->maxY, y1 = (j + 1) * dy - obj->maxY;
                const double z0 = obj->minZ + k * dz, z1 = obj->minZ + (k + 1) * dz;
                const SVector3D lo(static_cast<float>(x0), static_cast<float>(y0), static_cast<float>(z0));
                const SVector3D hi(static_cast<float>(x1), static_cast<float>(y1), static_cast<float>(z1));
                if (obj->anyVertexInBox(lo, hi))
                    addBox(SVector3D(static_cast<float>((x0 + x1) * 0.5), static_cast<float>((y0 + y1) * 0.5),
                                     static_cast<float>((z0 + z1) * 0.5)),
                           SVector3D(0.0f, 0.0f, -1.0f), dx * 0.5, dy * 0.5, dz * 0.5);
            }
    std::vector<SVector3D> vertices;
    obj->getVertices(vertices);
    endBoxGroup();
}

void LGLColMesh::create3DSBoxGrid(Object3DS* obj, int sub, int nx, int ny, int nz)
{
    if (nx == 0 || ny == 0 || nz == 0 || obj == nullptr)
        return;
    if (sub < 0 || sub >= Object3DS::MAX_SUBOBJECTS) {
        std::printf("ERROR: LGLColMesh::create3DSBoxGrid: sub-object %i of \"%s\" has no bounding volume\n", sub,
                    obj->fileName);
        return;
    }
    const double dx = (obj->subMaxX[sub] - obj->subMinX[sub]) / nx;
    const double dy = (obj->subMaxY[sub] - obj->subMinY[sub]) / ny;
    const double dz = (obj->subMaxZ[sub] - obj->subMinZ[sub]) / nz;
    spareValue = obj->radius;
    offset = SVector3D(static_cast<float>(obj->centerX), static_cast<float>(obj->centerY),
                       static_cast<float>(obj->centerZ), 1.0f);
    beginBoxGroup(SVector3D(static_cast<float>(obj->subCenterX[sub]), static_cast<float>(obj->subCenterY[sub]),
                            static_cast<float>(obj->subCenterZ[sub]), 1.0f),
                  obj->subRadius[sub]);
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j)
            for (int k = 0; k < nz; ++k) {
                const double x0 = obj->subMinX[sub] + i * dx, x1 = obj->subMinX[sub] + (i + 1) * dx;
                const double y0 = j * dy - obj->subMaxY[sub], y1 = (j + 1) * dy - obj->subMaxY[sub];
                const double z0 = obj->subMinZ[sub] + k * dz, z1 = obj->subMinZ[sub] + (k + 1) * dz;
                const SVector3D lo(static_cast<float>(x0), static_cast<float>(y0), static_cast<float>(z0));
                const SVector3D hi(static_cast<float>(x1), static_cast<float>(y1), static_cast<float>(z1));
                if (obj->anyVertexInBox(sub, lo, hi))
                    addBox(SVector3D(static_cast<float>((x0 + x1) * 0.5), static_cast<float>((y0 + y1) * 0.5),
                                     static_cast<float>((z0 + z1) * 0.5)),
                           SVector3D(0.0f, 0.0f, 1.0f), dx * 0.5, dy * 0.5, dz * 0.5);
            }
    endBoxGroup();
}

bool LGLColMesh::read(std::istream& in)
{
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        const std::vector<std::string> t = LString::split(line, " ");
        if (t.empty())
            continue;
        if (t[0] == "tube") {
            if (t.size() < 9)
                return false;
            addTube(vec(t, 1), vec(t, 4), std::atof(t[7].c_str()), std::atof(t[8].c_str()));
        } else if (t[0] == "box") {
            if (t.size() < 8)
                return false;
            addBox(vec(t, 1), vec(t, 4), std::atof(t[7].c_str()));
        } else if (t[0] == "sphere") {
            if (t.size() < 5)
                return false;
            addSphere(vec(t, 1), std::atof(t[4].c_str()));
        }
    }
    return true;
}

void LGLColMesh::load(std::string file)
{
    model = nullptr;
    if (!LFile::fileExist(file))
        return;
    std::ifstream in(file.c_str(), std::ios::binary);
    if (!in) {
        std::printf("ERROR: LGLColMesh::load: cannot read \"%s\"\n", file.c_str());
        return;
    }
    if (!read(in)) {
        std::printf("Error in colmesh file...\n");
        std::fflush(stdout);
        std::exit(-1);
    }
}

void LGLColMesh::save(std::string file)
{
    // Kept on purpose: nothing is written.
    (void)file;
}

void LGLColMesh::render()
{
    render(0.0f, 1.0f, 0.0f);
}

void LGLColMesh::renderLines(SVector3D* points, int i, int j)
{
    glVertex3f(points[i].x, points[i].y, points[i].z);
    glVertex3f(points[j].x, points[j].y, points[j].z);
}

void LGLColMesh::render(float r, float g, float b)
{
    glColor3f(r, g, b);
    glPushMatrix();

    for (const tTube& tube : tubes) {
        glPushMatrix();
        glTranslatef(position.x, position.y, position.z);
        glRotated(yaw * RAD2DEG, 0.0, 1.0, 0.0);
        glRotated(pitch * RAD2DEG, 1.0, 0.0, 0.0);
        glTranslatef(tube.a.x, tube.a.y, tube.a.z);
        double a1 = 0.0, a2 = 0.0;
        tube.b.GetAngles(a1, a2);
        glRotated(a1 * RAD2DEG, 0.0, 1.0, 0.0);
        glRotated(a2 * RAD2DEG, 1.0, 0.0, 0.0);
        LGL::drawTube(tube.radiusA, tube.radiusB, 20);
        glPopMatrix();
    }

    const int count = static_cast<int>(boxes.size());
    for (const tBoxGroup& group : boxGroups)
        for (int n = group.firstBox < 0 ? 0 : group.firstBox; n <= group.lastBox && n < count; ++n) {
            const tBox& box = boxes[n];
            double a1 = 0.0, a2 = 0.0;
            box.extra.GetAngles(a1, a2);
            SVector3D c[8];
            for (int i = 0; i < 8; ++i) {
                c[i] = box.corners[i];
                c[i].Rotate(static_cast<float>(a2), kAxisX);
                c[i].Rotate(static_cast<float>(a1), kAxisY);
                c[i].Rotate(static_cast<float>(roll), kAxisZ);
                c[i].Rotate(static_cast<float>(pitch), kAxisX);
                c[i].Rotate(static_cast<float>(yaw), kAxisY);
                c[i] += position;
            }
            glLineWidth(2.0f);
            glBegin(GL_LINES);
            for (const auto& edge : kEdges)
                renderLines(c, edge[0], edge[1]);
            glEnd();
            glLineWidth(1.0f);
        }

    for (const tSphere& sphere : spheres) {
        glPushMatrix();
        glTranslatef(sphere.centre.x, sphere.centre.y, sphere.centre.z);
        glutSolidSphere(sphere.radius, 30, 30);
        glPopMatrix();
    }

    if (model != nullptr) {
        glPushMatrix();
        glTranslatef(position.x, position.y, position.z);
        glRotated(yaw * RAD2DEG, 0.0, 1.0, 0.0);
        glRotated(pitch * RAD2DEG, 1.0, 0.0, 0.0);
        glRotated(roll * RAD2DEG, 0.0, 0.0, 1.0);
        model->render();
        for (int k = 0; k < model->getNumSubObjects(); ++k)
            model->renderSubObjectNormalsNonDL(k);
        glPopMatrix();
    }

    glPopMatrix();
    glColor3f(1.0f, 1.0f, 1.0f);
}
