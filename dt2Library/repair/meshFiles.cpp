#include "repair/meshFiles.h"

#include "output/numberScanner.h"
#include "output/openForReading.h"
#include "output/stlReader.h"
#include "support/messages.h"

#include <cctype>
#include <charconv>
#include <cstddef>
#include <fstream>

namespace ORBI_LUMO25D
{

namespace
{

bool endsWith(const std::string& name, const char* pEnding)
{
    const std::string ending(pEnding);
    if (name.size() < ending.size()) return false;
    for (std::size_t i = 0; i < ending.size(); ++i) {
        const auto c = static_cast<unsigned char>(name[name.size() - ending.size() + i]);
        if (std::tolower(c) != ending[i]) return false;
    }
    return true;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool parseVertex(const std::string& line, std::vector<Point2>& vVertices)
{
    const char* p = line.data() + 1;
    double aXYZ[3] = {0.0, 0.0, 0.0};
    bool bOK = true;
    for (double& value : aXYZ) bOK = bOK && scanNumber(p, line.data() + line.size(), value);
    // A broken one keeps its place, so that the indices of the others stay right.
    vVertices.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
    return bOK;
}

/// The indices of "f a/b/c ...", from 0; texture and normal are ignored. False if one is no index of a vertex so far.
bool parseFace(const std::string& line, std::size_t numVertices, std::vector<std::size_t>& vFace)
{
    vFace.clear();
    const char* p = line.data() + 1;
    const char* const pEnd = line.data() + line.size();
    const auto num = static_cast<long long>(numVertices);
    for (;;) {
        while (p != pEnd && isBlank(*p)) ++p;
        if (p == pEnd || *p == '#') return vFace.size() >= 3;
        long long index = 0;
        const std::from_chars_result result = std::from_chars(p, pEnd, index);
        if (result.ec != std::errc() || index == 0 || index > num || index < -num) return false;
        vFace.push_back(static_cast<std::size_t>(index > 0 ? index - 1 : num + index));
        p = result.ptr;
        while (p != pEnd && !isBlank(*p)) ++p;
    }
}

bool readOBJ(const std::string& filename, std::vector<Point2>& vCorners)
{
    std::ifstream file;
    if (!openForReading(file, filename)) {
        printLine("Mesh3::readCorners(): " + filename + " is unreadable");
        return false;
    }
    std::vector<Point2> vVertices;
    std::vector<bool> vReadable;
    std::vector<std::size_t> vFace;
    std::size_t numBroken = 0;
    std::string line;
    while (std::getline(file, line)) {
        if (line.size() < 2 || !isBlank(line[1])) continue;
        if (line[0] == 'v') vReadable.push_back(parseVertex(line, vVertices));
        if (line[0] != 'f') continue;
        bool bOK = parseFace(line, vVertices.size(), vFace);
        for (std::size_t i : vFace) bOK = bOK && vReadable[i];
        if (!bOK) ++numBroken;
        for (std::size_t i = 2; bOK && i < vFace.size(); ++i) {
            for (const std::size_t corner : {std::size_t(0), i - 1, i}) vCorners.push_back(vVertices[vFace[corner]]);
        }
    }
    if (numBroken > 0) {
        msgWarning("Mesh3::readCorners()", std::to_string(numBroken) + " faces of " + filename +
                                               " are unreadable or name a vertex that is, and are left out");
    }
    return true;
}

} // namespace

bool readMeshCorners(const std::string& filename, std::vector<Point2>& vCorners)
{
    if (endsWith(filename, ".obj")) return readOBJ(filename, vCorners);
    if (!endsWith(filename, ".stl")) {
        printLine("Mesh3::readCorners(): " + filename + " is neither .stl nor .obj");
        return false;
    }
    const std::size_t numBefore = vCorners.size();
    if (!readSTL(filename, vCorners)) return false;
    if ((vCorners.size() - numBefore) % 3 == 0) return true;
    printLine("Mesh3::readCorners(): " + filename + " has facets that aren't triangles");
    vCorners.resize(numBefore);
    return false;
}

} // namespace ORBI_LUMO25D
