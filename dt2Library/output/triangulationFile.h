#ifndef LUMO25D_OUTPUT_TRIANGULATIONFILE_H
#define LUMO25D_OUTPUT_TRIANGULATIONFILE_H

#include "Point2.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// What the file of a saved triangulation holds beside its vertices, as it stands there (docs/file-formats.md). Vertices are
/// named by their positions in the file.
struct SavedIndices
{
    using Index = std::int32_t;

    std::vector<Index> vTriangles;           ///< three corners in a row for each triangle
    std::vector<Index> vSegments;            ///< source and target of each
    std::vector<std::vector<Index>> vvZones; ///< source and target of each border edge, for each zone
};

/// What was read of a file. It has the counts that the file announces; nothing else is sure about it.
struct SavedTriangulation : SavedIndices
{
    std::vector<Point2> vVertices;
};

/// Writes such a file. The caller has made sure that the counts fit into 32 bits. False, with a message, when it can't be
/// created or not be written to the end.
bool writeTriangulationFile(const char* filename, const std::vector<const Point2*>& vVertices,
                            const SavedIndices& indices);

/// Reads such a file. What it takes of memory grows with what has been read of the file, whatever the counts say.
class TriangulationReader
{
public:
    explicit TriangulationReader(const char* filename);

    const std::string& getName() const { return name; }
    bool isOpen() const { return bOpen; }
    /// Reads the file's type. False when there is none that is known.
    bool readType();
    /// Reads all that comes behind the type. False when the file is shorter than its counts say, when a count is negative,
    /// or when the end mark is wrong. What follows the end mark is not looked at.
    bool readContent(SavedTriangulation& saved);

private:
    using Index = SavedIndices::Index;

    bool readCounts(std::size_t* aCounts, std::size_t numCounts);
    template <class Record, class Decode>
    bool readRecords(std::size_t numRecords, std::size_t recordSize, std::vector<Record>& vRecords,
                     const Decode& decode);
    bool readIndices(std::size_t numIndices, std::vector<Index>& vIndices);
    bool readVertices(std::size_t numVertices, std::vector<Point2>& vVertices);
    bool readZones(std::size_t numZones, std::vector<std::vector<Index>>& vvZones);

    std::string name;
    std::ifstream file;
    bool bOpen = false;
    bool bHasHeights = true;
    std::uint64_t numBytesLeft = 0; ///< of a file that has a size
    bool bHasSize = false;
    std::vector<char> vPiece;
};

} // namespace ORBI_LUMO25D

#endif
