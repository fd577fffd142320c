// 3dsLoader.cpp -- the 3DS chunk reader: chunk walk, materials, meshes, axis conversion and normals.
#include <ostrum_gl/models/3dsLoader.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/SVector3D.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

unsigned char Load3DS::buffer[Load3DS::BUFFER_SIZE];

namespace {

// Chunk ids the reader handles; every other id is read past.
constexpr unsigned short PRIMARY = 0x4D4D;
constexpr unsigned short VERSION = 0x0002;
constexpr unsigned short OBJECTINFO = 0x3D3D;
constexpr unsigned short MATERIAL = 0xAFFF;
constexpr unsigned short OBJECT = 0x4000;
constexpr unsigned short EDITKEYFRAME = 0xB000;
constexpr unsigned short OBJECT_MESH = 0x4100;
constexpr unsigned short OBJECT_VERTICES = 0x4110;
constexpr unsigned short OBJECT_FACES = 0x4120;
constexpr unsigned short OBJECT_MATERIAL = 0x4130;
constexpr unsigned short OBJECT_UV = 0x4140;
constexpr unsigned short MATNAME = 0xA000;
constexpr unsigned short MATDIFFUSE = 0xA020;
constexpr unsigned short MATSPECULAR = 0xA041;
constexpr unsigned short MATTRANSPARENCY = 0xA050;
constexpr unsigned short MATEMISSIVE = 0xA084;
constexpr unsigned short MATMAP = 0xA200;
constexpr unsigned short MATMAPFILE = 0xA300;

constexpr unsigned int HEADER_SIZE = 6;
constexpr unsigned int NAME_SIZE = 255;
constexpr unsigned int FACE_SIZE = 8;  // three vertex indices and the edge flags, u16 each

// Single-precision -pi/2 about x turns the file's Z-up frame into the library's Y-up frame.
constexpr float TO_Y_UP = -1.5707964f;

static_assert(sizeof(CVector3) == 12, "vertices are read straight into CVector3 arrays");
static_assert(sizeof(CVector2) == 8, "texture coordinates are read straight into CVector2 arrays");

// Bytes of a chunk not consumed yet; the reader keeps bytesRead <= length.
unsigned int left(const t3DSChunk* chunk)
{
    return chunk->length - chunk->bytesRead;
}

unsigned int le16(const unsigned char* p)
{
    return static_cast<unsigned int>(p[0]) | (static_cast<unsigned int>(p[1]) << 8);
}

unsigned int le32(const unsigned char* p)
{
    return le16(p) | (le16(p + 2) << 16);
}

// Floats are stored little-endian; on a big-endian host each 4-byte group is reversed.
void floatsFromLittleEndian(void* data, size_t count)
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    unsigned char* p = static_cast<unsigned char*>(data);
    for (size_t i = 0; i < count; ++i, p += 4) {
        std::swap(p[0], p[3]);
        std::swap(p[1], p[2]);
    }
#else
    (void)data;
    (void)count;
#endif
}

}  // namespace

// ---------------------------------------------------------------- import

bool Load3DS::import3DS(t3DSModel& model, const char* fileName)
{
    const std::string name = fileName ? fileName : "";
    std::FILE* file = nullptr;
    if (LFile::fileExist(name))
        file = LFile::openFile(name, "rb");
    if (file == nullptr) {
        std::printf("3ds file: \"%s\" not found.\n", name.c_str());
        std::fflush(stdout);
        std::exit(-12);
    }
    const cImportStatus status = importStream(model, file, name.c_str());
    std::fclose(file);
    if (status == ChunkOverBuffer) {
        // The "Buffer overrun" line is out; the chunk is the end of this process.
        std::fflush(stdout);
        std::exit(-1);
    }
    return false;
}

void Load3DS::resetImport(std::FILE* file, const char* fileName)
{
    m_FilePointer = file;
    m_FileName = fileName ? fileName : "";
    m_Pos = 0;
    m_FileSize = ~0ULL;
    m_ChunkStart = 0;
    m_Depth = 0;
    m_Stop = false;
    m_Fatal = false;
    m_Damaged = false;
    m_TooManyObjects = false;
    m_MaterialsChanged = true;
    m_MaterialIndex.clear();
    // The bytes from here to the end of the stream are the file; a stream that cannot seek keeps an
    // unknown size and relies on short reads alone.
    const long start = std::ftell(file);
    if (start >= 0 && std::fseek(file, 0, SEEK_END) == 0) {
        const long end = std::ftell(file);
        if (end >= start)
            m_FileSize = static_cast<unsigned long long>(end - start);
        if (std::fseek(file, start, SEEK_SET) != 0)
            m_FileSize = 0;
    }
}

Load3DS::cImportStatus Load3DS::importStream(t3DSModel& model, std::FILE* file, const char* fileName)
{
    resetImport(file, fileName);
    // Counts of an earlier import that do not match the arrays are brought back into their range.
    model.numOfObjects = std::clamp(model.numOfObjects, 0, static_cast<int>(model.pObject.size()));
    model.numOfMaterials = std::clamp(model.numOfMaterials, 0, static_cast<int>(model.pMaterials.size()));

    t3DSChunk current;
    t3DSChunk temp;
    m_CurrentChunk = &current;
    m_TempChunk = &temp;
    cImportStatus status = Imported;

    m_ChunkStart = m_Pos;
    readChunk(m_CurrentChunk);
    if (current.ID != PRIMARY) {
        std::printf("Unable to load PRIMARY chuck from file \n");
        std::fflush(stdout);
        status = NoPrimaryChunk;
    } else if (current.bytesRead < HEADER_SIZE) {
        damaged("the file ends inside the header of chunk 0x%04X at byte 0", current.ID);
    } else {
        if (current.length < HEADER_SIZE) {
            damaged("chunk 0x%04X at byte 0 claims %u bytes, less than its header", current.ID, current.length);
            current.length = HEADER_SIZE;
        } else if (current.length > m_FileSize) {
            damaged("chunk 0x%04X at byte 0 claims %u bytes but the file holds %llu", current.ID, current.length,
                    m_FileSize);
            current.length = static_cast<unsigned int>(m_FileSize);
        }
        m_Depth = 1;
        processNextChunk(model, m_CurrentChunk);
        if (m_Fatal) {
            status = ChunkOverBuffer;
        } else {
            dropFacesWithoutVertices(model);
            convertToYUp(model);
            computeNormals(model);
        }
    }

    m_CurrentChunk = nullptr;
    m_TempChunk = nullptr;
    m_FilePointer = nullptr;
    return status;
}

// ---------------------------------------------------------------- chunk walk

void Load3DS::processNextChunk(t3DSModel& model, t3DSChunk* previousChunk)
{
    t3DSChunk* const saved = m_CurrentChunk;
    t3DSChunk chunk;
    m_CurrentChunk = &chunk;

    while (!m_Stop && previousChunk->bytesRead < previousChunk->length) {
        if (verbose)
            std::printf("\n");
        if (!readChildChunk(m_CurrentChunk, previousChunk))
            break;

        switch (m_CurrentChunk->ID) {
        case VERSION: {
            if (verbose)
                std::printf("Reading VERSION...\n");
            unsigned char bytes[4] = {0, 0, 0, 0};
            const unsigned int n = std::min(left(m_CurrentChunk), 4u);
            m_CurrentChunk->bytesRead += static_cast<unsigned int>(readBytes(bytes, n));
            skipRest(m_CurrentChunk);
            const int version = static_cast<int>(le32(bytes));
            if (version > 3)
                std::printf("This 3DS file is over version 3 so it may load incorrectly \n");
            break;
        }
        case OBJECTINFO:
            if (verbose)
                std::printf("Reading OBJECTINFO...\n");
            // The first child, normally the mesh version, is read and thrown away whatever it is.
            if (readInlineChunk(m_CurrentChunk)) {
                skipRest(m_TempChunk);
                m_CurrentChunk->bytesRead += m_TempChunk->bytesRead;
            }
            if (enterLevel(m_CurrentChunk)) {
                processNextChunk(model, m_CurrentChunk);
                --m_Depth;
            }
            break;
        case MATERIAL:
            appendMaterial(model);
            if (enterLevel(m_CurrentChunk)) {
                processNextMaterialChunk(model, m_CurrentChunk);
                --m_Depth;
            }
            break;
        case OBJECT: {
            if (model.numOfObjects >= MAX_SUBOBJECTS) {
                if (!m_TooManyObjects) {
                    std::printf("ERROR: Load3DS::import3DS: \"%s\" has more than %d sub-objects; the others are skipped\n",
                                m_FileName.c_str(), MAX_SUBOBJECTS);
                    m_TooManyObjects = true;
                }
                skipRest(m_CurrentChunk);
                break;
            }
            t3DSObject& object = appendObject(model);
            readString(object.name, m_CurrentChunk);
            if (verbose)
                std::printf("Reading OBJECT #%i \"%s\"...\n", model.numOfObjects, object.name);
            if (enterLevel(m_CurrentChunk)) {
                processNextObjectChunk(model, object, m_CurrentChunk);
                --m_Depth;
            }
            break;
        }
        case EDITKEYFRAME:
            if (verbose) {
                std::printf("Reading EDITKEYFRAME...\n");
                std::printf("m_CurrentChunk->length = %i\n", static_cast<int>(m_CurrentChunk->length));
                std::printf("m_CurrentChunk->bytesRead = %i\n", static_cast<int>(m_CurrentChunk->bytesRead));
            }
            skipRest(m_CurrentChunk);
            if (verbose)
                std::printf("Reading EDITKEYFRAME done.\n");
            break;
        default:
            if (verbose)
                std::printf("Skipping chunks...\n");
            skipRest(m_CurrentChunk);
            break;
        }
        previousChunk->bytesRead += m_CurrentChunk->bytesRead;
    }
    m_CurrentChunk = saved;
}

void Load3DS::processNextObjectChunk(t3DSModel& model, t3DSObject& object, t3DSChunk* previousChunk)
{
    t3DSChunk* const saved = m_CurrentChunk;
    t3DSChunk chunk;
    m_CurrentChunk = &chunk;

    while (!m_Stop && previousChunk->bytesRead < previousChunk->length) {
        if (!readChildChunk(&chunk, previousChunk))
            break;

        switch (chunk.ID) {
        case OBJECT_MESH:
            if (enterLevel(&chunk)) {
                processNextObjectChunk(model, object, &chunk);
                --m_Depth;
            }
            break;
        case OBJECT_VERTICES:
            readVertices(object, &chunk);
            break;
        case OBJECT_FACES:
            readVertexIndices(object, &chunk);
            break;
        case OBJECT_MATERIAL:
            readObjectMaterial(model, object, &chunk);
            break;
        case OBJECT_UV:
            readUVCoordinates(object, &chunk);
            break;
        default: {
            const unsigned int remaining = left(&chunk);
            if (remaining > static_cast<unsigned int>(BUFFER_SIZE)) {
                std::printf("ERROR: Buffer overrun (chunk data = %i bytes, buffer size = %i)!\n",
                            static_cast<int>(remaining), BUFFER_SIZE);
                std::fflush(stdout);
                m_Fatal = true;
                m_Stop = true;
                break;
            }
            if (verbose)
                std::printf("Skipping %i bytes\n", static_cast<int>(remaining));
            skipRest(&chunk);
            break;
        }
        }
        previousChunk->bytesRead += chunk.bytesRead;
    }
    m_CurrentChunk = saved;
}

void Load3DS::processNextMaterialChunk(t3DSModel& model, t3DSChunk* previousChunk)
{
    t3DSChunk* const saved = m_CurrentChunk;
    t3DSChunk chunk;
    m_CurrentChunk = &chunk;
    t3DSMaterial& material = model.pMaterials[model.numOfMaterials - 1];

    while (!m_Stop && previousChunk->bytesRead < previousChunk->length) {
        if (!readChildChunk(&chunk, previousChunk))
            break;

        switch (chunk.ID) {
        case MATNAME: {
            const unsigned int n = readRestIntoString(material.name, &chunk);
            m_MaterialsChanged = true;
            if (verbose)
                std::printf("Reading material (%i bytes) \"%s\"\n", static_cast<int>(n), material.name);
            break;
        }
        case MATDIFFUSE:
            readColorChunk(material, &chunk);
            break;
        case MATSPECULAR: {
            unsigned int n = 0;
            material.specular = readPercentageChunk(&chunk, n);
            if (verbose)
                std::printf("Reading specular = %f (%i bytes)\n", material.specular, static_cast<int>(n));
            break;
        }
        case MATTRANSPARENCY: {
            unsigned int n = 0;
            material.transparency = readPercentageChunk(&chunk, n);
            if (verbose)
                std::printf("Reading transparency = %f (%i bytes)\n", material.transparency, static_cast<int>(n));
            break;
        }
        case MATEMISSIVE: {
            unsigned int n = 0;
            material.emissive = readPercentageChunk(&chunk, n);
            if (verbose)
                std::printf("Reading emissive = %f (%i bytes)\n", material.emissive, static_cast<int>(n));
            break;
        }
        case MATMAP:
            if (enterLevel(&chunk)) {
                processNextMaterialChunk(model, &chunk);
                --m_Depth;
            }
            break;
        case MATMAPFILE: {
            const unsigned int n = readRestIntoString(material.fileName, &chunk);
            if (verbose)
                std::printf("Reading MATMAPFILE (%i bytes) \"%s\"\n", static_cast<int>(n), material.fileName);
            break;
        }
        default:
            skipRest(&chunk);
            break;
        }
        previousChunk->bytesRead += chunk.bytesRead;
    }
    m_CurrentChunk = saved;
}

// ---------------------------------------------------------------- chunk headers

void Load3DS::readChunk(t3DSChunk* chunk)
{
    unsigned char header[HEADER_SIZE] = {0, 0, 0, 0, 0, 0};
    *chunk = t3DSChunk();
    // A short header is judged by the caller: at the start of a file it is not a PRIMARY chunk.
    const size_t n = std::fread(header, 1, HEADER_SIZE, m_FilePointer);
    m_Pos += n;
    if (n >= 2)
        chunk->ID = static_cast<unsigned short>(le16(header));
    if (n >= HEADER_SIZE)
        chunk->length = le32(header + 2);
    chunk->bytesRead = static_cast<unsigned int>(n);
}

bool Load3DS::readChildChunk(t3DSChunk* chunk, t3DSChunk* parent)
{
    *chunk = t3DSChunk();
    const unsigned long long parentLeft = left(parent);
    const unsigned long long fileLeft = m_FileSize > m_Pos ? m_FileSize - m_Pos : 0;
    if (fileLeft == 0) {
        if (parentLeft > 0)
            damaged("the file ends at byte %llu inside chunk 0x%04X", m_Pos, parent->ID);
        m_Stop = true;
        return false;
    }
    const unsigned long long available = std::min(parentLeft, fileLeft);
    if (available < HEADER_SIZE) {
        damaged("%llu stray bytes at byte %llu inside chunk 0x%04X", available, m_Pos, parent->ID);
        parent->bytesRead += consume(static_cast<unsigned int>(available));
        return false;
    }

    m_ChunkStart = m_Pos;
    readChunk(chunk);
    if (chunk->bytesRead < HEADER_SIZE) {
        damaged("the file ends at byte %llu inside the header of a chunk", m_Pos);
        m_Stop = true;
        parent->bytesRead += chunk->bytesRead;
        chunk->bytesRead = 0;
        return false;
    }
    if (chunk->length < HEADER_SIZE) {
        damaged("chunk 0x%04X at byte %llu claims %u bytes, less than its header", chunk->ID, m_ChunkStart,
                chunk->length);
        chunk->length = HEADER_SIZE;
    } else if (chunk->length > available) {
        damaged("chunk 0x%04X at byte %llu claims %u bytes but only %llu are left", chunk->ID, m_ChunkStart,
                chunk->length, available);
        chunk->length = static_cast<unsigned int>(available);
    }
    return true;
}

bool Load3DS::readInlineChunk(t3DSChunk* chunk)
{
    if (left(chunk) == 0) {
        damaged("chunk 0x%04X at byte %llu has no sub-chunk", chunk->ID, m_ChunkStart);
        return false;
    }
    return readChildChunk(m_TempChunk, chunk);
}

bool Load3DS::enterLevel(t3DSChunk* chunk)
{
    if (m_Depth >= MAX_NESTING) {
        damaged("chunk 0x%04X at byte %llu is nested more than %d levels deep", chunk->ID, m_ChunkStart,
                MAX_NESTING);
        skipRest(chunk);
        return false;
    }
    ++m_Depth;
    return true;
}

// ---------------------------------------------------------------- model records

t3DSObject& Load3DS::appendObject(t3DSModel& model)
{
    ++model.numOfObjects;
    if (static_cast<int>(model.pObject.size()) < model.numOfObjects)
        model.pObject.emplace_back();
    else
        model.pObject[model.numOfObjects - 1] = t3DSObject();
    return model.pObject[model.numOfObjects - 1];
}

void Load3DS::appendMaterial(t3DSModel& model)
{
    ++model.numOfMaterials;
    if (static_cast<int>(model.pMaterials.size()) < model.numOfMaterials)
        model.pMaterials.emplace_back();
    else
        model.pMaterials[model.numOfMaterials - 1] = t3DSMaterial();
    m_MaterialsChanged = true;
}

int Load3DS::findMaterial(t3DSModel& model, const char* name)
{
    // An index by name keeps a file of many groups and many materials linear; materials do not
    // change while a sub-object is read, so it is rebuilt at most once per sub-object.
    if (m_MaterialsChanged) {
        m_MaterialIndex.clear();
        for (int i = 0; i < model.numOfMaterials; ++i)
            m_MaterialIndex.emplace(model.pMaterials[i].name, i);
        m_MaterialsChanged = false;
    }
    const auto found = m_MaterialIndex.find(name);
    return found == m_MaterialIndex.end() ? -1 : found->second;
}

// ---------------------------------------------------------------- mesh data

void Load3DS::readVertices(t3DSObject& object, t3DSChunk* chunk)
{
    unsigned short count = 0;
    if (!readU16(count, chunk)) {
        skipRest(chunk);
        return;
    }
    unsigned int n = count;
    const unsigned int room = left(chunk) / sizeof(CVector3);
    if (n > room) {
        damaged("chunk 0x%04X at byte %llu holds %u bytes for %u vertices", chunk->ID, m_ChunkStart, left(chunk), n);
        n = room;
    }
    object.pVerts.assign(n, CVector3());
    const size_t got = readBytes(object.pVerts.data(), n * sizeof(CVector3));
    chunk->bytesRead += static_cast<unsigned int>(got);
    floatsFromLittleEndian(object.pVerts.data(), got / 4);
    object.numOfVerts = static_cast<int>(n);
    if (left(chunk) > 0 && n == count)
        damaged("chunk 0x%04X at byte %llu holds %u bytes after its %u vertices", chunk->ID, m_ChunkStart,
                left(chunk), n);
    skipRest(chunk);
}

void Load3DS::readUVCoordinates(t3DSObject& object, t3DSChunk* chunk)
{
    unsigned short count = 0;
    if (!readU16(count, chunk)) {
        skipRest(chunk);
        return;
    }
    unsigned int n = count;
    const unsigned int room = left(chunk) / sizeof(CVector2);
    if (n > room) {
        damaged("chunk 0x%04X at byte %llu holds %u bytes for %u texture coordinates", chunk->ID, m_ChunkStart,
                left(chunk), n);
        n = room;
    }
    object.pTexVerts.assign(n, CVector2());
    const size_t got = readBytes(object.pTexVerts.data(), n * sizeof(CVector2));
    chunk->bytesRead += static_cast<unsigned int>(got);
    floatsFromLittleEndian(object.pTexVerts.data(), got / 4);
    object.numOfTexVertex = static_cast<int>(n);
    if (left(chunk) > 0 && n == count)
        damaged("chunk 0x%04X at byte %llu holds %u bytes after its %u texture coordinates", chunk->ID,
                m_ChunkStart, left(chunk), n);
    skipRest(chunk);
}

void Load3DS::readVertexIndices(t3DSObject& object, t3DSChunk* chunk)
{
    unsigned short count = 0;
    if (!readU16(count, chunk)) {
        skipRest(chunk);
        return;
    }
    if (count == 0) {
        // Kept on purpose: despite its wording the message does not end the program.
        std::printf("\n*** ERROR: 3dsLoader, readVertexIndices: pObject->numOfFaces = %i\n", 0);
        std::printf("             Illegal 3DS subobject without faces! Exiting...\n");
    }
    unsigned int n = count;
    const unsigned int room = left(chunk) / FACE_SIZE;
    if (n > room) {
        damaged("chunk 0x%04X at byte %llu holds %u bytes for %u faces", chunk->ID, m_ChunkStart, left(chunk), n);
        n = room;
    }
    m_Bytes.resize(static_cast<size_t>(n) * FACE_SIZE);
    const size_t got = readBytes(m_Bytes.data(), m_Bytes.size());
    chunk->bytesRead += static_cast<unsigned int>(got);
    n = static_cast<unsigned int>(got / FACE_SIZE);
    object.pFaces.assign(n, t3DSFace());
    for (unsigned int i = 0; i < n; ++i) {
        const unsigned char* p = &m_Bytes[static_cast<size_t>(i) * FACE_SIZE];
        t3DSFace& face = object.pFaces[i];
        face.vertIndex[0] = static_cast<int>(le16(p));
        face.vertIndex[1] = static_cast<int>(le16(p + 2));
        face.vertIndex[2] = static_cast<int>(le16(p + 4));
        // p + 6 holds the edge-visibility flags, which are dropped.
    }
    object.numOfFaces = static_cast<int>(n);
    // Kept on purpose: the rest of the chunk (face-material and smoothing groups) is not consumed
    // here; the object loop meets those chunks as siblings.
}

void Load3DS::readObjectMaterial(t3DSModel& model, t3DSObject& object, t3DSChunk* chunk)
{
    char name[NAME_SIZE] = {};
    readString(name, chunk);
    const int match = findMaterial(model, name);
    if (match >= 0) {
        object.materialID = match;
        if (model.pMaterials[match].fileName[0] != '\0')
            object.hasTexture = true;
    }

    unsigned short count = 0;
    if (readU16(count, chunk)) {
        unsigned int n = count;
        const unsigned int room = left(chunk) / 2;
        if (n > room) {
            damaged("chunk 0x%04X at byte %llu holds %u bytes for %u face indices", chunk->ID, m_ChunkStart,
                    left(chunk), n);
            n = room;
        }
        m_Bytes.resize(static_cast<size_t>(n) * 2);
        const size_t got = readBytes(m_Bytes.data(), m_Bytes.size());
        chunk->bytesRead += static_cast<unsigned int>(got);
        n = static_cast<unsigned int>(got / 2);
        const int matID = match >= 0 ? match : 0;
        const size_t faces = object.pFaces.size();
        for (unsigned int i = 0; i < n; ++i) {
            const unsigned int index = le16(&m_Bytes[static_cast<size_t>(i) * 2]);
            if (index < faces)
                object.pFaces[index].matID = matID;
            else
                damaged("face-material group \"%s\" at byte %llu names face %u of a sub-object with %zu faces", name,
                        m_ChunkStart, index, faces);
        }
    }
    skipRest(chunk);
    ++faceGroupCount;
}

// ---------------------------------------------------------------- material data

void Load3DS::readColorChunk(t3DSMaterial& material, t3DSChunk* chunk)
{
    if (!readInlineChunk(chunk))
        return;
    const unsigned int data = left(m_TempChunk);
    const size_t got = readBytes(material.color, std::min(data, 3u));
    m_TempChunk->bytesRead += static_cast<unsigned int>(got);
    skipRest(m_TempChunk);
    if (verbose)
        std::printf("Reading color chunk %i bytes (%i,%i,%i)\n", static_cast<int>(data), material.color[0],
                    material.color[1], material.color[2]);
    chunk->bytesRead += m_TempChunk->bytesRead;
}

double Load3DS::readPercentageChunk(t3DSChunk* chunk, unsigned int& dataBytes)
{
    dataBytes = 0;
    if (!readInlineChunk(chunk))
        return 0.0;
    dataBytes = consume(left(m_TempChunk));
    m_TempChunk->bytesRead += dataBytes;
    chunk->bytesRead += m_TempChunk->bytesRead;
    // Kept on purpose: the low byte of the 16-bit percentage is the whole value.
    return dataBytes > 0 ? buffer[0] / 100.0 : 0.0;
}

// ---------------------------------------------------------------- low-level reads

unsigned int Load3DS::readRestIntoString(char* text, t3DSChunk* chunk)
{
    const unsigned int rest = left(chunk);
    const size_t got = readBytes(text, std::min(rest, NAME_SIZE));
    chunk->bytesRead += static_cast<unsigned int>(got);
    std::memset(text + got, 0, NAME_SIZE - got);
    text[NAME_SIZE - 1] = '\0';
    skipRest(chunk);
    return rest - left(chunk);
}

unsigned int Load3DS::readString(char* text, t3DSChunk* chunk)
{
    const unsigned long long start = m_Pos;
    unsigned int count = 0;
    unsigned int stored = 0;
    bool terminated = false;
    while (left(chunk) > 0) {
        unsigned char c = 0;
        if (readBytes(&c, 1) != 1)
            break;
        ++chunk->bytesRead;
        ++count;
        if (c == 0) {
            terminated = true;
            break;
        }
        if (stored < NAME_SIZE - 1)
            text[stored++] = static_cast<char>(c);
    }
    text[stored] = '\0';
    if (!terminated)
        damaged("the name at byte %llu in chunk 0x%04X has no terminating zero", start, chunk->ID);
    return count;
}

bool Load3DS::readU16(unsigned short& value, t3DSChunk* chunk)
{
    if (left(chunk) < 2) {
        damaged("chunk 0x%04X at byte %llu is too short for its count", chunk->ID, m_ChunkStart);
        return false;
    }
    unsigned char bytes[2] = {0, 0};
    const size_t got = readBytes(bytes, 2);
    chunk->bytesRead += static_cast<unsigned int>(got);
    value = static_cast<unsigned short>(le16(bytes));
    return got == 2;
}

void Load3DS::skipRest(t3DSChunk* chunk)
{
    chunk->bytesRead += consume(left(chunk));
}

unsigned int Load3DS::consume(unsigned int n)
{
    const unsigned int first = std::min(n, static_cast<unsigned int>(BUFFER_SIZE));
    unsigned int done = static_cast<unsigned int>(readBytes(buffer, first));
    if (done < first)
        return done;
    unsigned int rest = n - first;
    if (rest == 0)
        return done;
    // The part beyond the scratch buffer is passed over; the chunk lengths were checked against the
    // file, so the seek stays inside it.
    if (std::fseek(m_FilePointer, static_cast<long>(rest), SEEK_CUR) == 0) {
        m_Pos += rest;
        return done + rest;
    }
    while (rest > 0) {
        const unsigned int piece = std::min(rest, static_cast<unsigned int>(BUFFER_SIZE));
        const unsigned int got = static_cast<unsigned int>(readBytes(buffer, piece));
        done += got;
        rest -= got;
        if (got < piece)
            break;
    }
    return done;
}

size_t Load3DS::readBytes(void* data, size_t n)
{
    if (n == 0)
        return 0;
    const size_t got = std::fread(data, 1, n, m_FilePointer);
    m_Pos += got;
    if (got < n) {
        // Nothing more comes from this stream: every loop ends.
        damaged("the file ends at byte %llu", m_Pos);
        m_Stop = true;
    }
    return got;
}

void Load3DS::damaged(const char* format, ...)
{
    if (m_Damaged)
        return;
    m_Damaged = true;
    char what[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(what, sizeof what, format, args);
    va_end(args);
    std::printf("ERROR: Load3DS::import3DS: \"%s\" is damaged (%s); the model keeps what could be read\n",
                m_FileName.c_str(), what);
}

// ---------------------------------------------------------------- after reading

void Load3DS::dropFacesWithoutVertices(t3DSModel& model)
{
    for (int k = 0; k < model.numOfObjects; ++k) {
        t3DSObject& object = model.pObject[k];
        const unsigned int verts = static_cast<unsigned int>(object.pVerts.size());
        size_t kept = 0;
        for (const t3DSFace& face : object.pFaces) {
            if (static_cast<unsigned int>(face.vertIndex[0]) < verts &&
                static_cast<unsigned int>(face.vertIndex[1]) < verts &&
                static_cast<unsigned int>(face.vertIndex[2]) < verts)
                object.pFaces[kept++] = face;
        }
        if (kept < object.pFaces.size()) {
            damaged("sub-object \"%s\" has %zu faces naming vertices beyond its %u", object.name,
                    object.pFaces.size() - kept, verts);
            object.pFaces.resize(kept);
            object.numOfFaces = static_cast<int>(kept);
        }
    }
}

void Load3DS::convertToYUp(t3DSModel& model)
{
    const SVector3D xAxis(1.0f, 0.0f, 0.0f, 1.0f);
    for (int k = 0; k < model.numOfObjects; ++k) {
        if (model.pObject.empty())
            break;
        for (CVector3& vertex : model.pObject[k].pVerts) {
            SVector3D v(vertex.x, vertex.y, vertex.z, 1.0f);
            v.Rotate(TO_Y_UP, xAxis);
            vertex.x = v.x;
            vertex.y = v.y;
            vertex.z = v.z;
        }
    }
}

void Load3DS::computeNormals(t3DSModel& model)
{
    // One pass over the faces adds each face's cross product to its (distinct) corners; every vertex
    // therefore receives its faces in face order, as a scan of all faces per vertex would, and the
    // sums come out bit for bit the same.
    std::vector<SVector3D> sums;
    std::vector<int> shared;
    const int objects = std::min(model.numOfObjects, static_cast<int>(model.pObject.size()));
    for (int k = 0; k < objects; ++k) {
        t3DSObject& object = model.pObject[k];
        const int verts = std::clamp(object.numOfVerts, 0, static_cast<int>(object.pVerts.size()));
        const int faces = std::clamp(object.numOfFaces, 0, static_cast<int>(object.pFaces.size()));
        sums.assign(verts, SVector3D(0.0f, 0.0f, 0.0f, 1.0f));
        shared.assign(verts, 0);

        for (int i = 0; i < faces; ++i) {
            const int* corner = object.pFaces[i].vertIndex;
            if (corner[0] < 0 || corner[0] >= verts || corner[1] < 0 || corner[1] >= verts || corner[2] < 0 ||
                corner[2] >= verts)
                continue;
            const CVector3& p0 = object.pVerts[corner[0]];
            const CVector3& p1 = object.pVerts[corner[1]];
            const CVector3& p2 = object.pVerts[corner[2]];
            const SVector3D a = SVector3D(p0.x, p0.y, p0.z) - SVector3D(p2.x, p2.y, p2.z);
            const SVector3D b = SVector3D(p2.x, p2.y, p2.z) - SVector3D(p1.x, p1.y, p1.z);
            SVector3D normal;
            normal.CrossProduct(a, b);
            sums[corner[0]] += normal;
            ++shared[corner[0]];
            if (corner[1] != corner[0]) {
                sums[corner[1]] += normal;
                ++shared[corner[1]];
            }
            if (corner[2] != corner[0] && corner[2] != corner[1]) {
                sums[corner[2]] += normal;
                ++shared[corner[2]];
            }
        }

        object.pNormals.assign(object.pVerts.size(), CVector3());
        for (int v = 0; v < verts; ++v) {
            // Kept on purpose: dividing by minus the count turns the normals outward; a vertex of no
            // face divides zero by zero and keeps the non-finite result.
            const float divisor = static_cast<float>(-shared[v]);
            SVector3D n = sums[v];
            n.x = n.x / divisor;
            n.y = n.y / divisor;
            n.z = n.z / divisor;
            n.Normalize();
            object.pNormals[v].x = n.x;
            object.pNormals[v].y = n.y;
            object.pNormals[v].z = n.z;
        }
    }
}
