#include "output/triangulationFile.h"

#include "output/FileWriter.h"
#include "output/littleEndian.h"
#include "output/openForReading.h"
#include "support/messages.h"

#include <algorithm>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::int32_t typeWithHeights = 32;
constexpr std::int32_t typeWithoutHeights = 22;
constexpr std::size_t endMark = 99;
constexpr std::size_t pieceSize = std::size_t(1) << 16;

// ---- writing --------------------------------------------------------------------------------------------------------

void putNumber(FileWriter& writer, std::size_t number)
{
    storeLE32(static_cast<std::uint32_t>(number), writer.getRoom(4));
    writer.add(4);
}

void putIndices(FileWriter& writer, const std::vector<SavedIndices::Index>& vIndices)
{
    for (const SavedIndices::Index index : vIndices) {
        putNumber(writer, static_cast<std::size_t>(index));
    }
}

void putVertex(FileWriter& writer, const Point2& p)
{
    char* const pOut = writer.getRoom(28);
    storeLEDouble(p.x(), pOut);
    storeLEDouble(p.y(), pOut + 8);
    storeLEDouble(p.z(), pOut + 16);
    storeLE32(static_cast<std::uint32_t>(p.getCustomIndex()), pOut + 24);
    writer.add(28);
}

} // namespace

bool writeTriangulationFile(const char* filename, const std::vector<const Point2*>& vVertices,
                            const SavedIndices& indices)
{
    FileWriter writer(filename);
    if (!writer.isOpen()) {
        printLine(writer.getName() + " can't be opened");
        return false;
    }
    putNumber(writer, static_cast<std::size_t>(typeWithHeights));
    putNumber(writer, vVertices.size());
    putNumber(writer, indices.vSegments.size() / 2);
    putNumber(writer, indices.vTriangles.size() / 3);
    putNumber(writer, indices.vvZones.size());
    for (const Point2* p : vVertices) {
        putVertex(writer, *p);
    }
    putIndices(writer, indices.vTriangles);
    putIndices(writer, indices.vSegments);
    for (const std::vector<SavedIndices::Index>& vZone : indices.vvZones) {
        putNumber(writer, vZone.size() / 2);
        putIndices(writer, vZone);
    }
    putNumber(writer, endMark);
    if (writer.close()) return true;
    printLine(writer.getName() + " can't be written");
    return false;
}

// ---- reading --------------------------------------------------------------------------------------------------------

TriangulationReader::TriangulationReader(const char* filename) : name(filename == nullptr ? "" : filename)
{
    bOpen = openForReading(file, name);
    if (!bOpen) return;
    numBytesLeft = sizeOf(file);
    bHasSize = numBytesLeft > 0;
}

/// decode(pBytes, record) makes each record of its bytes.
template <class Record, class Decode>
bool TriangulationReader::readRecords(std::size_t numRecords, std::size_t recordSize, std::vector<Record>& vRecords,
                                      const Decode& decode)
{
    // Both are below 2^32 and 2^6.
    const std::uint64_t numBytes = std::uint64_t(numRecords) * recordSize;
    if (bHasSize) {
        if (numBytes > numBytesLeft) return false;
        vRecords.reserve(numRecords);
    }
    vPiece.resize(pieceSize / recordSize * recordSize);
    for (std::size_t numRead = 0; numRead < numRecords;) {
        const std::size_t numHere = std::min(numRecords - numRead, vPiece.size() / recordSize);
        file.read(vPiece.data(), static_cast<std::streamsize>(numHere * recordSize));
        if (!file) return false;
        vRecords.resize(numRead + numHere);
        for (std::size_t i = 0; i < numHere; ++i) {
            decode(vPiece.data() + i * recordSize, vRecords[numRead + i]);
        }
        numRead += numHere;
    }
    if (bHasSize) numBytesLeft -= numBytes;
    return true;
}

bool TriangulationReader::readIndices(std::size_t numIndices, std::vector<Index>& vIndices)
{
    return readRecords(numIndices, 4, vIndices,
                       [](const char* p, Index& index) { index = static_cast<Index>(loadLE32(p)); });
}

/// False when one is negative.
bool TriangulationReader::readCounts(std::size_t* aCounts, std::size_t numCounts)
{
    std::vector<Index> vCounts;
    if (!readIndices(numCounts, vCounts)) return false;
    if (*std::min_element(vCounts.begin(), vCounts.end()) < 0) return false;
    std::copy(vCounts.begin(), vCounts.end(), aCounts);
    return true;
}

bool TriangulationReader::readType()
{
    std::vector<Index> vType;
    if (!readIndices(1, vType)) return false;
    bHasHeights = vType[0] == typeWithHeights;
    return bHasHeights || vType[0] == typeWithoutHeights;
}

bool TriangulationReader::readContent(SavedTriangulation& saved)
{
    std::size_t aCounts[4] = {};
    std::size_t mark = 0;
    if (!readCounts(aCounts, 4)) return false;
    const auto [numVertices, numSegments, numTriangles, numZones] = aCounts;
    return readVertices(numVertices, saved.vVertices) && readIndices(3 * numTriangles, saved.vTriangles) &&
           readIndices(2 * numSegments, saved.vSegments) && readZones(numZones, saved.vvZones) &&
           readCounts(&mark, 1) && mark == endMark;
}

bool TriangulationReader::readVertices(std::size_t numVertices, std::vector<Point2>& vVertices)
{
    const bool bHeights = bHasHeights;
    return readRecords(numVertices, bHeights ? 28 : 20, vVertices, [bHeights](const char* p, Point2& vertex) {
        const double z = bHeights ? loadLEDouble(p + 16) : 0.0;
        const std::uint32_t customIndex = loadLE32(p + (bHeights ? 24 : 16));
        vertex.set(loadLEDouble(p), loadLEDouble(p + 8), z, static_cast<std::int32_t>(customIndex));
    });
}

bool TriangulationReader::readZones(std::size_t numZones, std::vector<std::vector<Index>>& vvZones)
{
    for (std::size_t i = 0; i < numZones; ++i) {
        std::size_t numEdges = 0;
        std::vector<Index> vZone;
        if (!readCounts(&numEdges, 1) || !readIndices(2 * numEdges, vZone)) return false;
        vvZones.push_back(std::move(vZone));
    }
    return true;
}

} // namespace ORBI_LUMO25D
