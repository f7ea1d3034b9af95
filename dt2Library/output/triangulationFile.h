#ifndef LUMO25D_OUTPUT_TRIANGULATIONFILE_H
#define LUMO25D_OUTPUT_TRIANGULATIONFILE_H

#include "output/littleEndian.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// What the file of a saved triangulation holds behind its vertices and triangles, as it stands there
/// (docs/file-formats.md). Vertices are named by their positions in the file.
struct SavedIndices
{
    using Index = std::int32_t;

    std::vector<Index> vSegments;            ///< source and target of each
    std::vector<std::vector<Index>> vvZones; ///< source and target of each border edge, for each zone
};

/// How many records of each kind a file announces.
struct SavedCounts
{
    std::size_t numVertices = 0, numSegments = 0, numTriangles = 0, numZones = 0;
};

/// Bytes of a vertex with its height, of a vertex number, and of a triangle.
constexpr std::size_t savedVertexSize = 28;
constexpr std::size_t savedIndexSize = 4;
constexpr std::size_t savedTriangleSize = 3 * savedIndexSize;

/// One vertex in the form of the file.
inline void storeVertex(double x, double y, double z, std::int32_t customIndex, char* pOut)
{
    storeLEDouble(x, pOut);
    storeLEDouble(y, pOut + 8);
    storeLEDouble(z, pOut + 16);
    storeLE32(static_cast<std::uint32_t>(customIndex), pOut + 24);
}

/// Writes such a file: vertices in their final form, and three corners for each triangle. The caller has made sure that the
/// counts fit into 32 bits. False, with a message, when it can't be created or not be written to the end.
bool writeTriangulationFile(const char* filename, const SavedCounts& counts, const char* aVertices,
                            const SavedIndices::Index* aTriangles, const SavedIndices& indices);

/// Reads such a file from front to end, without a second copy. Before anything is taken in, it is made sure that the file has
/// as much as its counts say: so memory for that much may be taken. (From a pipe, it is read ahead.)
class TriangulationReader
{
public:
    using Index = SavedIndices::Index;

    explicit TriangulationReader(const char* filename);

    const std::string& getName() const { return name; }
    bool isOpen() const { return bOpen; }
    /// Reads the file's type. False when there is none that is known.
    bool readType();
    /// Reads the counts. False when one is negative or the file shorter than they say.
    bool readCounts(SavedCounts& counts);
    /// Calls take(x, y, z, customIndex) for each vertex. Ends with false when take() does, or when the file can't be read.
    template <class Take>
    bool readVertices(std::size_t numVertices, const Take& take);
    /// The same with take(aCorners, n), three numbers for each of n triangles, stretch by stretch.
    template <class Take>
    bool readTriangles(std::size_t numTriangles, const Take& take);
    /// Reads all that comes behind them. False when the file is shorter than its counts say, when a count is negative, or
    /// when the end mark is wrong. What follows the end mark is not looked at.
    bool readRest(const SavedCounts& counts, SavedIndices& indices);

private:
    bool hasBytes(std::uint64_t numBytes);
    bool readBytes(char* pOut, std::size_t numBytes);
    bool readCount(std::size_t& count);
    bool readIndices(std::size_t numIndices, std::vector<Index>& vIndices);
    template <class Take>
    bool readPieces(std::size_t numRecords, std::size_t recordSize, const Take& take);

    std::string name;
    std::ifstream file;
    bool bOpen = false;
    bool bHasHeights = true;
    bool bHasSize = false;
    std::uint64_t numBytesLeft = 0; ///< of a file that has a size
    std::vector<char> vAhead;       ///< what was read ahead of a file that has none
    std::size_t numAheadUsed = 0;
    std::vector<char> vPiece;
};

/// Calls take(pBytes, n) for n records after the others, until it returns false.
template <class Take>
bool TriangulationReader::readPieces(std::size_t numRecords, std::size_t recordSize, const Take& take)
{
    constexpr std::size_t pieceSize = std::size_t(1) << 16; // stays in the cache
    vPiece.resize(pieceSize);
    for (std::size_t numLeft = numRecords; numLeft > 0;) {
        const std::size_t numHere = std::min(numLeft, pieceSize / recordSize);
        if (!readBytes(vPiece.data(), numHere * recordSize) || !take(vPiece.data(), numHere)) return false;
        numLeft -= numHere;
    }
    return true;
}

template <class Take>
bool TriangulationReader::readVertices(std::size_t numVertices, const Take& take)
{
    const std::size_t size = bHasHeights ? savedVertexSize : savedVertexSize - 8;
    return readPieces(numVertices, size, [&take, size, bHeights = bHasHeights](const char* p, std::size_t n) {
        for (const char* const pEnd = p + n * size; p != pEnd; p += size) {
            const double z = bHeights ? loadLEDouble(p + 16) : 0.0;
            const auto customIndex = static_cast<std::int32_t>(loadLE32(p + size - 4));
            if (!take(loadLEDouble(p), loadLEDouble(p + 8), z, customIndex)) return false;
        }
        return true;
    });
}

template <class Take>
bool TriangulationReader::readTriangles(std::size_t numTriangles, const Take& take)
{
    std::vector<Index> vCorners;
    return readPieces(numTriangles, savedTriangleSize, [&take, &vCorners](const char* p, std::size_t n) {
        vCorners.resize(3 * n);
        for (std::size_t i = 0; i < vCorners.size(); ++i) {
            vCorners[i] = static_cast<Index>(loadLE32(p + i * savedIndexSize));
        }
        return take(vCorners.data(), n);
    });
}

} // namespace ORBI_LUMO25D

#endif
