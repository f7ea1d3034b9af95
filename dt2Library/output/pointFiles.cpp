#include "freeFunctions.h"
#include "output/FileWriter.h"
#include "output/littleEndian.h"
#include "output/numberScanner.h"
#include "output/openForReading.h"
#include "support/messages.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

const std::size_t headerSize = 12;
const std::size_t pieceSize = std::size_t(1) << 16;

std::string nameOf(const char* filename)
{
    return filename == nullptr ? std::string() : std::string(filename);
}

const Point2& deref(const Point2& p)
{
    return p;
}
const Point2& deref(const Point2* p)
{
    return *p;
}

/// False, with a warning, if there is a NULL among the points.
bool allGiven(const std::vector<Point2*>& vPoints, const char* functionName)
{
    if (std::find(vPoints.begin(), vPoints.end(), nullptr) == vPoints.end()) return true;
    msgWarning(functionName, "There is a NULL among the points, nothing is written");
    return false;
}

// ---- writing ----------------------------------------------------------------------------------------------------

/// Completes the file; reports a file that couldn't be created or not be written to the end.
bool complete(FileWriter& writer)
{
    if (writer.close()) return true;
    printLine(writer.getName() + " can't be written");
    return false;
}

void putHeader(FileWriter& writer, std::int32_t fileType, std::size_t numRecords)
{
    const std::uint64_t n = numRecords;
    char* const p = writer.getRoom(headerSize);
    storeLE32(static_cast<std::uint32_t>(fileType), p);
    storeLE32(static_cast<std::uint32_t>(n), p + 4);
    storeLE32(static_cast<std::uint32_t>(n >> 32), p + 8);
    writer.add(headerSize);
}

void putPoint(FileWriter& writer, const Point2& point)
{
    char* const p = writer.getRoom(24);
    storeLEDouble(point.x(), p);
    storeLEDouble(point.y(), p + 8);
    storeLEDouble(point.z(), p + 16);
    writer.add(24);
}

void putPointText(FileWriter& writer, const Point2& point)
{
    const std::size_t room = 128; // three times sign, 18 digits, point, "e-308" and a separator, with much to spare
    char* const pBegin = writer.getRoom(room);
    char* p = pBegin;
    for (const double value : {point.x(), point.y(), point.z()}) {
        if (p != pBegin) *p++ = ' ';
        p = std::to_chars(p, pBegin + room - 1, value, std::chars_format::general, 18).ptr;
    }
    *p++ = '\n';
    writer.add(static_cast<std::size_t>(p - pBegin));
}

template <typename PointOrPointer>
bool writeText(const char* filename, const std::vector<PointOrPointer>& vPoints)
{
    FileWriter writer(filename);
    for (const PointOrPointer& p : vPoints) putPointText(writer, deref(p));
    return complete(writer);
}

template <typename PointOrPointer>
bool writeBinary(const char* filename, const std::vector<PointOrPointer>& vPoints)
{
    FileWriter writer(filename);
    putHeader(writer, 30, vPoints.size());
    for (const PointOrPointer& p : vPoints) putPoint(writer, deref(p));
    return complete(writer);
}

// ---- reading ----------------------------------------------------------------------------------------------------

template <int numCoords>
bool readText(const char* filename, std::vector<Point2>& vPoints)
{
    const std::string name = nameOf(filename);
    std::ifstream file;
    if (!openForReading(file, name)) {
        printLine(name + " is unreadable");
        return false;
    }
    NumberReader reader(file);
    for (;;) {
        double aXYZ[3] = {0.0, 0.0, 0.0};
        for (int i = 0; i < numCoords; ++i) {
            if (!reader.next(aXYZ[i])) return true;
        }
        vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
    }
}

/// A binary file of records that are doubles.
class RecordFile
{
public:
    explicit RecordFile(const char* filename) : name(nameOf(filename)) { bOpen = openForReading(file, name); }

    bool isOpen() const { return bOpen; }
    const std::string& getName() const { return name; }

    /// Reads the header; the file type, 0 if the file is too short for one.
    std::int32_t readHeader()
    {
        fileSize = sizeOf(file);
        char aHeader[headerSize] = {};
        file.read(aHeader, headerSize);
        bHeaderComplete = file.gcount() == static_cast<std::streamsize>(headerSize);
        numAnnounced = loadLE32(aHeader + 4) | static_cast<std::uint64_t>(loadLE32(aHeader + 8)) << 32;
        return file.gcount() < 4 ? 0 : static_cast<std::int32_t>(loadLE32(aHeader));
    }

    /// Makes room for what the file really holds, and reads the records: take(const double* pCoords) for each.
    template <std::size_t numCoords, typename Record, typename Take>
    void readRecords(std::vector<Record>& vRecords, const char* functionName, Take take)
    {
        const std::size_t recordSize = numCoords * 8;
        const std::size_t numBefore = vRecords.size();
        const std::uint64_t numPossible = fileSize < headerSize ? 0 : (fileSize - headerSize) / recordSize + 1;
        const std::size_t needed = numBefore + static_cast<std::size_t>(std::min(numAnnounced, numPossible));
        // At least doubled, so that many small files read into one sequence don't cost quadratic time.
        if (needed > vRecords.capacity()) vRecords.reserve(std::max(needed, 2 * vRecords.capacity()));

        double aCoords[numCoords] = {};
        std::vector<char> piece(pieceSize / recordSize * recordSize);
        for (std::uint64_t numLeft = numAnnounced; numLeft > 0 && file;) {
            const std::uint64_t numWanted = std::min<std::uint64_t>(numLeft, piece.size() / recordSize);
            file.read(piece.data(), static_cast<std::streamsize>(numWanted * recordSize));
            const std::size_t numBytes = static_cast<std::size_t>(file.gcount());
            for (std::size_t offset = 0; offset < numBytes; offset += recordSize) {
                const std::size_t numHere = std::min(numCoords, (numBytes - offset) / 8);
                for (std::size_t i = 0; i < numHere; ++i) aCoords[i] = loadLEDouble(&piece[offset + 8 * i]);
                vRecords.push_back(take(aCoords));
            }
            numLeft -= numWanted;
        }
        const std::size_t numRead = vRecords.size() - numBefore;
        if (!bHeaderComplete || !file) {
            msgWarning(functionName, name + " is truncated: " + std::to_string(numAnnounced) + " records announced, " +
                                         std::to_string(numRead) + " read");
        }
    }

private:
    std::string name;
    std::ifstream file;
    bool bOpen = false;
    bool bHeaderComplete = false;
    std::uint64_t fileSize = 0;
    std::uint64_t numAnnounced = 0;
};

} // namespace

bool writePointsASCII(const char* filename, const std::vector<Point2*>& vPoints)
{
    return allGiven(vPoints, "writePointsASCII()") && writeText(filename, vPoints);
}

bool writePointsASCII(const char* filename, const std::vector<Point2>& vPoints)
{
    return writeText(filename, vPoints);
}

bool readXY(const char* filename, std::vector<Point2>& vPoints)
{
    return readText<2>(filename, vPoints);
}

bool readXYZ(const char* filename, std::vector<Point2>& vPoints)
{
    return readText<3>(filename, vPoints);
}

bool writePointsBIN(const char* filename, const std::vector<Point2*>& vPoints)
{
    return allGiven(vPoints, "writePointsBIN()") && writeBinary(filename, vPoints);
}

bool writePointsBIN(const char* filename, const std::vector<Point2>& vPoints)
{
    return writeBinary(filename, vPoints);
}

bool readPointsBIN(const char* filename, std::vector<Point2>& vPoints)
{
    RecordFile file(filename);
    if (!file.isOpen()) {
        printLine(file.getName() + " can't be read");
        return false;
    }
    const char* const functionName = "readPointsBIN()";
    const std::int32_t fileType = file.readHeader();
    if (fileType == 30) {
        file.readRecords<3>(vPoints, functionName, [](const double* p) { return Point2(p[0], p[1], p[2]); });
    } else if (fileType == 20) {
        file.readRecords<2>(vPoints, functionName, [](const double* p) { return Point2(p[0], p[1], 0.0); });
    } else {
        printLine(file.getName() + " has wrong filetype " + std::to_string(fileType) + ", expected: 30 or 20");
        return false;
    }
    return true;
}

bool writeSegmentsBIN(const char* filename, const std::vector<Segment2>& vSegments)
{
    FileWriter writer(filename);
    putHeader(writer, 31, vSegments.size());
    for (const Segment2& segment : vSegments) {
        putPoint(writer, segment.src);
        putPoint(writer, segment.trg);
    }
    return complete(writer);
}

bool readSegmentsBIN(const char* filename, std::vector<Segment2>& vSegments)
{
    RecordFile file(filename);
    if (!file.isOpen()) {
        printLine(file.getName() + " can't be read");
        return false;
    }
    const char* const functionName = "readSegmentsBIN()";
    const std::int32_t fileType = file.readHeader();
    if (fileType == 31) {
        file.readRecords<6>(vSegments, functionName, [](const double* p) {
            return Segment2(Point2(p[0], p[1], p[2]), Point2(p[3], p[4], p[5]));
        });
    } else if (fileType == 21) {
        file.readRecords<4>(vSegments, functionName,
                            [](const double* p) { return Segment2(Point2(p[0], p[1], 0.0), Point2(p[2], p[3], 0.0)); });
    } else {
        printLine(file.getName() + " has wrong file type: " + std::to_string(fileType) + " instead of 31 or 21");
        return false;
    }
    return true;
}

} // namespace ORBI_LUMO25D
