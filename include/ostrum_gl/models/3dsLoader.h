// 3dsLoader.h -- the 3DS chunk reader (Load3DS) and the records of an imported model.
//
// Load3DS::import3DS reads the object/mesh tree and the materials of a binary 3DS file into a
// t3DSModel: sub-object names, vertices, faces, face-material groups and texture coordinates, and per
// material its name, texture map file, diffuse colour, transparency, self-illumination ("emissive")
// and shininess strength ("specular"). Everything else is read past. Vertices are turned from the
// file's Z-up frame into the library's Y-up frame and per-vertex normals are computed.
//
// Kept on purpose, because the models and the code built on them depend on it:
//  - Only the face list of a faces chunk (0x4120) is consumed; the face-material groups and
//    smoothing groups inside it are then met by the object loop as if they were siblings.
//  - The first child of OBJECTINFO (normally the mesh version) is read and thrown away, whatever it
//    is: a file whose first OBJECTINFO child is a material loses that material.
//  - A faces chunk of 0 faces prints the "Illegal 3DS subobject without faces! Exiting..." lines and
//    reading simply goes on.
//  - A face-material group naming no known material leaves materialID alone and gives its faces
//    matID 0; with several groups, materialID is the last group that matched.
//  - A percentage is the low byte of its 16-bit value divided by 100.0 (a float percentage gives the
//    low byte of the float).
//  - A vertex used by no face gets a normal from a zero sum divided by zero: not a finite vector.
//    Normals are the face cross products summed and divided by minus the number of faces sharing
//    the vertex, which makes them point out of the model after the axis conversion.
//  - Only an unknown object-level chunk larger than the scratch buffer is fatal (exit -1); a file
//    that cannot be opened is fatal too (exit -12).
//
// Choices recorded here:
//  - A damaged file never makes the reader go out of bounds or loop forever. Every chunk length is
//    checked against what is left of its parent and of the file: a longer chunk is cut to what is
//    left, a chunk shorter than its 6-byte header counts as just its header, and fewer than 6 bytes
//    left in a parent are skipped. Every count times its element size is checked against what is
//    left of its chunk: a count that does not fit is cut to the entries that do. Faces naming a
//    vertex that their sub-object does not have are dropped, face-material indices beyond the face
//    list are ignored, and chunks nested more than MAX_NESTING levels deep are skipped. The first
//    such fault of an import prints one line
//      ERROR: Load3DS::import3DS: "<file>" is damaged (<what>); the model keeps what could be read
//    and reading goes on with what is there. A well-formed file never prints it.
//  - A model gets at most MAX_SUBOBJECTS (50) sub-objects, the number whose bounding volumes an
//    Object3DS keeps. Further OBJECT chunks are skipped after one line
//      ERROR: Load3DS::import3DS: "<file>" has more than 50 sub-objects; the others are skipped
//  - Skipped bodies go into the scratch buffer; a body larger than the buffer fills the buffer with
//    its first bytes and the rest is passed over with a seek.
//  - The file is closed (and nothing leaks) on the "PRIMARY" failure path too.
//  - A colour sub-chunk gives its first three data bytes to `color`; further data bytes (a float
//    colour carries twelve) are read past. A percentage sub-chunk without data gives 0.0.
//  - Names (sub-object, material, texture file, face-material group) keep at most 254 characters
//    and are always zero-terminated; longer names are read to their end and cut.
//  - The byte count of the verbose material lines is the number of data bytes read for that value
//    (name or file name bytes with their terminator, 3 for a 24-bit colour, 2 for a percentage).
//  - import3DS expects an empty model; if the counts of an earlier import are still set, new
//    sub-objects and materials go to the entries after them, and entries beyond the counts are
//    reused before the arrays grow.
//  - pTexVerts may hold fewer entries than pVerts (a file without mapping coordinates has none):
//    index it with a vertex index only below numOfTexVertex.
//  - computeNormals is public, so that code which moves vertices can recompute the normals. It runs
//    in time linear in faces plus vertices and gives bit for bit the sums of the plain definition
//    (per vertex, the faces that use it, in face order, each face once).
//  - importStream reads an already open stream and returns a status instead of ending the process;
//    import3DS opens the file, calls it and ends the process where a fault is fatal.
//  - Data is little-endian in the file; big-endian hosts swap after reading.
//
// The scratch buffer is one class-wide buffer, so two imports must never run at the same time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

// A plain point of three floats: vertices and normals of the imported model.
struct CVector3 {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

// A texture coordinate: x is u, y is v.
struct CVector2 {
    float x = 0.0f;
    float y = 0.0f;
};

// The reader's bookkeeping for one chunk while it is being read.
struct t3DSChunk {
    unsigned short ID = 0;       // chunk id as read from the file
    unsigned int length = 0;     // chunk length in bytes, header included
    unsigned int bytesRead = 0;  // bytes of this chunk consumed so far, header included
};

// One triangle.
struct t3DSFace {
    int vertIndex[3] = {0, 0, 0};   // indices into the sub-object's pVerts
    int coordIndex[3] = {0, 0, 0};  // left 0 by the reader
    int matID = 0;                  // material of the face (0 when no face-material group names one)
};

// One named sub-object (mesh).
struct t3DSObject {
    int numOfVerts = 0;
    int numOfFaces = 0;
    int numOfTexVertex = 0;
    int materialID = 0;       // the last face-material group whose name matched a material
    bool hasTexture = false;  // a matching group named a material with a texture file
    char name[255] = {};
    std::vector<CVector3> pVerts;    // numOfVerts points
    std::vector<CVector3> pNormals;  // numOfVerts unit normals (see computeNormals)
    std::vector<CVector2> pTexVerts; // numOfTexVertex texture coordinates
    std::vector<t3DSFace> pFaces;    // numOfFaces faces
    std::vector<t3DSFace> transparentFaces;  // left empty by the reader
};

// One material.
struct t3DSMaterial {
    char name[255] = {};
    char fileName[255] = {};              // texture map file name, empty without a texture map
    unsigned char color[3] = {0, 0, 0};   // diffuse colour as stored in the file
    int reserved = 0;                     // left 0
    double transparency = 0.0;            // 0.0 .. 1.0
    double emissive = 0.0;                // self-illumination, 0.0 .. 1.0
    double specular = 0.0;                // shininess strength, 0.0 .. 1.0
    int textureId = 0;                    // index into the model's texture table, set by Object3DS
    // Texture tiling and offsets for the model code; the reader leaves them 0.
    float uTile = 0.0f;
    float vTile = 0.0f;
    float uOffset = 0.0f;
    float vOffset = 0.0f;
};

// The whole imported file.
struct t3DSModel {
    int numOfObjects = 0;
    int numOfMaterials = 0;
    std::vector<t3DSMaterial> pMaterials;  // in file order
    std::vector<t3DSObject> pObject;       // in file order
};

class Load3DS {
public:
    // What importStream made of a stream.
    enum cImportStatus {
        Imported = 0,        // the model holds what the file holds (or what could be read of it)
        NoPrimaryChunk = 1,  // the first chunk is not 0x4D4D; the model is empty
        ChunkOverBuffer = 2  // an unknown object-level chunk was larger than the scratch buffer
    };

    static constexpr int BUFFER_SIZE = 200000;  // bytes of the class-wide scratch buffer
    static constexpr int MAX_SUBOBJECTS = 50;   // sub-objects an Object3DS keeps bounding volumes for
    static constexpr int MAX_NESTING = 64;      // chunk levels read before deeper chunks are skipped

    // The one scratch buffer of the library: skipped chunk bodies and percentage data land here.
    static unsigned char buffer[BUFFER_SIZE];

    bool verbose = false;                   // print the progress lines
    std::FILE* m_FilePointer = nullptr;     // the open file during an import
    t3DSChunk* m_CurrentChunk = nullptr;    // the chunk being read during an import
    t3DSChunk* m_TempChunk = nullptr;       // inline sub-chunks (colour, percentage, mesh version)
    int faceGroupCount = 0;                 // face-material groups seen (informational)

    // Reads the 3DS file into `model` (expected empty). Ends the process with -12 when the file cannot
    // be opened and with -1 when an object-level chunk does not fit the scratch buffer. Returns false.
    bool import3DS(t3DSModel& model, const char* fileName);

    // Reads an open 3DS stream from its current position to its end into `model`; `fileName` only
    // names it in messages. Prints the same lines as import3DS but never ends the process.
    cImportStatus importStream(t3DSModel& model, std::FILE* file, const char* fileName);

    // Per-vertex normals of every sub-object from its vertices and faces (see the header comment).
    void computeNormals(t3DSModel& model);

private:
    void processNextChunk(t3DSModel& model, t3DSChunk* previousChunk);
    void processNextObjectChunk(t3DSModel& model, t3DSObject& object, t3DSChunk* previousChunk);
    void processNextMaterialChunk(t3DSModel& model, t3DSChunk* previousChunk);
    // Reads the 2-byte id and 4-byte length; bytesRead is the number of header bytes actually read.
    void readChunk(t3DSChunk* chunk);

    // Reads the header of the next child of `parent` and checks its length (see the header comment);
    // false when no complete header is left in the parent or the file.
    bool readChildChunk(t3DSChunk* chunk, t3DSChunk* parent);
    // Reads the one sub-chunk of `chunk` (colour, percentage, mesh version) into m_TempChunk.
    bool readInlineChunk(t3DSChunk* chunk);
    t3DSObject& appendObject(t3DSModel& model);
    void appendMaterial(t3DSModel& model);
    void readVertices(t3DSObject& object, t3DSChunk* chunk);
    void readVertexIndices(t3DSObject& object, t3DSChunk* chunk);
    void readObjectMaterial(t3DSModel& model, t3DSObject& object, t3DSChunk* chunk);
    void readUVCoordinates(t3DSObject& object, t3DSChunk* chunk);
    void readColorChunk(t3DSMaterial& material, t3DSChunk* chunk);
    double readPercentageChunk(t3DSChunk* chunk, unsigned int& dataBytes);
    unsigned int readRestIntoString(char* text, t3DSChunk* chunk);
    unsigned int readString(char* text, t3DSChunk* chunk);
    bool readU16(unsigned short& value, t3DSChunk* chunk);
    // Consumes the rest of the chunk into the scratch buffer (see the header comment).
    void skipRest(t3DSChunk* chunk);
    // Consumes n bytes: into the scratch buffer, the part beyond its size by a seek. Returns the
    // bytes consumed.
    unsigned int consume(unsigned int n);
    size_t readBytes(void* data, size_t n);
    bool enterLevel(t3DSChunk* chunk);
    void dropFacesWithoutVertices(t3DSModel& model);
    void convertToYUp(t3DSModel& model);
    int findMaterial(t3DSModel& model, const char* name);
    void damaged(const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;
    void resetImport(std::FILE* file, const char* fileName);

    std::string m_FileName;                 // the file of the running import, for messages
    unsigned long long m_Pos = 0;           // bytes consumed from the stream's start
    unsigned long long m_FileSize = 0;      // bytes in the stream (~0 when it cannot be told)
    unsigned long long m_ChunkStart = 0;    // stream offset of the chunk header last read
    int m_Depth = 0;                        // chunk levels being read
    bool m_Stop = false;                    // end of data or a fatal fault: every loop ends
    bool m_Fatal = false;                   // an object-level chunk did not fit the scratch buffer
    bool m_Damaged = false;                 // the damage line was printed
    bool m_TooManyObjects = false;          // the sub-object line was printed
    bool m_MaterialsChanged = true;         // the name index must be rebuilt
    std::unordered_map<std::string, int> m_MaterialIndex;  // first material of each name
    std::vector<unsigned char> m_Bytes;     // bulk data of faces and face-material groups
};
