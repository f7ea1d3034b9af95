#include "output/triangulationFile.h"

#include "output/FileWriter.h"
#include "output/openForReading.h"
#include "support/messages.h"

#include <cstring>
#include <string_view>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::int32_t typeWithHeights = 32;
constexpr std::int32_t typeWithoutHeights = 22;
constexpr std::size_t endMark = 99;

// ---- writing --------------------------------------------------------------------------------------------------------

void putNumber(FileWriter& writer, std::size_t number)
{
    storeLE32(static_cast<std::uint32_t>(number), writer.getRoom(4));
    writer.add(4);
}

void putIndices(FileWriter& writer, const SavedIndices::Index* aIndices, std::size_t n)
{
    constexpr std::size_t most = 250; // a thousand bytes
    for (std::size_t begin = 0; begin < n; begin += most) {
        const std::size_t numHere = std::min(most, n - begin);
        char* const pOut = writer.getRoom(numHere * savedIndexSize);
        for (std::size_t i = 0; i < numHere; ++i) {
            storeLE32(static_cast<std::uint32_t>(aIndices[begin + i]), pOut + i * savedIndexSize);
        }
        writer.add(numHere * savedIndexSize);
    }
}

} // namespace

bool writeTriangulationFile(const char* filename, const SavedCounts& counts, const char* aVertices,
                            const SavedIndices::Index* aTriangles, const SavedIndices& indices)
{
    FileWriter writer(filename);
    if (!writer.isOpen()) {
        printLine(writer.getName() + " can't be opened");
        return false;
    }
    putNumber(writer, static_cast<std::size_t>(typeWithHeights));
    putNumber(writer, counts.numVertices);
    putNumber(writer, counts.numSegments);
    putNumber(writer, counts.numTriangles);
    putNumber(writer, counts.numZones);
    writer.put(std::string_view(aVertices, counts.numVertices * savedVertexSize));
    putIndices(writer, aTriangles, 3 * counts.numTriangles);
    putIndices(writer, indices.vSegments.data(), indices.vSegments.size());
    for (const std::vector<SavedIndices::Index>& vZone : indices.vvZones) {
        putNumber(writer, vZone.size() / 2);
        putIndices(writer, vZone.data(), vZone.size());
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

/// Whether the file has that many bytes more. Of one without a size, they are fetched: memory grows as they come.
bool TriangulationReader::hasBytes(std::uint64_t numBytes)
{
    if (bHasSize) return numBytes <= numBytesLeft;
    if (numBytes <= vAhead.size() - numAheadUsed) return true;
    constexpr std::uint64_t step = std::uint64_t(1) << 20;
    vAhead.erase(vAhead.begin(), vAhead.begin() + static_cast<std::ptrdiff_t>(numAheadUsed));
    numAheadUsed = 0;
    while (vAhead.size() < numBytes) {
        const std::size_t numBefore = vAhead.size();
        const auto numHere = static_cast<std::size_t>(std::min(step, numBytes - numBefore));
        vAhead.resize(numBefore + numHere);
        file.read(vAhead.data() + numBefore, static_cast<std::streamsize>(numHere));
        if (!file) return false;
    }
    return true;
}

/// Of bytes that are there.
bool TriangulationReader::readBytes(char* pOut, std::size_t numBytes)
{
    if (!bHasSize) {
        std::memcpy(pOut, vAhead.data() + numAheadUsed, numBytes);
        numAheadUsed += numBytes;
        return true;
    }
    numBytesLeft -= numBytes;
    return static_cast<bool>(file.read(pOut, static_cast<std::streamsize>(numBytes)));
}

bool TriangulationReader::readIndices(std::size_t numIndices, std::vector<Index>& vIndices)
{
    if (!hasBytes(std::uint64_t(numIndices) * savedIndexSize)) return false;
    vIndices.reserve(numIndices);
    return readPieces(numIndices, savedIndexSize, [&vIndices](const char* p, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            vIndices.push_back(static_cast<Index>(loadLE32(p + i * savedIndexSize)));
        }
        return true;
    });
}

/// False when it is negative.
bool TriangulationReader::readCount(std::size_t& count)
{
    std::vector<Index> v;
    if (!readIndices(1, v) || v[0] < 0) return false;
    count = static_cast<std::size_t>(v[0]);
    return true;
}

bool TriangulationReader::readType()
{
    std::vector<Index> vType;
    if (!readIndices(1, vType)) return false;
    bHasHeights = vType[0] == typeWithHeights;
    return bHasHeights || vType[0] == typeWithoutHeights;
}

bool TriangulationReader::readCounts(SavedCounts& counts)
{
    if (!readCount(counts.numVertices) || !readCount(counts.numSegments) || !readCount(counts.numTriangles) ||
        !readCount(counts.numZones)) {
        return false;
    }
    // Each count is below 2^31, each size below 2^5; a zone has its count of edges at least.
    const std::uint64_t vertexSize = bHasHeights ? savedVertexSize : savedVertexSize - 8;
    return hasBytes(counts.numVertices * vertexSize + std::uint64_t(counts.numTriangles) * savedTriangleSize +
                    (2 * std::uint64_t(counts.numSegments) + counts.numZones + 1) * savedIndexSize);
}

bool TriangulationReader::readRest(const SavedCounts& counts, SavedIndices& indices)
{
    if (!readIndices(2 * counts.numSegments, indices.vSegments)) return false;
    indices.vvZones.resize(counts.numZones);
    for (std::vector<Index>& vZone : indices.vvZones) {
        std::size_t numEdges = 0;
        if (!readCount(numEdges) || !readIndices(2 * numEdges, vZone)) return false;
    }
    std::size_t mark = 0;
    return readCount(mark) && mark == endMark;
}

} // namespace ORBI_LUMO25D
