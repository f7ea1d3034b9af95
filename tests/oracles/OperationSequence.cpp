#include "oracles/OperationSequence.h"

#include "oracles/Corpus.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace oracles
{

using namespace ORBI_LUMO25D;

const char* const operationNames[numOperationKinds] = {
    "insert",  "vector",  "coordinates", "threaded", "constraint", "conforming", "oriented",
    "split",   "remove",  "locate",      "height",   "export",     "clear",      "zone",
    "boolean", "bounded", "cut",         "knife",    "drape",      "refine",     "save"};

// ---- shrinking --------------------------------------------------------------------------------------------------

namespace
{

/// Takes stretches of items away, large ones first, while the rest still fails. True when anything could go.
template <class T>
bool takeStretchesAway(std::vector<T>& vItems, const std::function<bool(const std::vector<T>&)>& fails)
{
    const std::size_t numBefore = vItems.size();
    for (std::size_t length = vItems.size(); length > 0; length /= 2) {
        for (std::size_t begin = 0; begin < vItems.size();) {
            std::vector<T> vRest;
            for (std::size_t i = 0; i < vItems.size(); ++i) {
                if (i < begin || i >= begin + length) vRest.push_back(vItems[i]);
            }
            if (fails(vRest)) {
                vItems.swap(vRest);
            } else {
                begin += length;
            }
        }
    }
    return vItems.size() != numBefore;
}

} // namespace

OperationSequence shrink(OperationSequence sequence, const std::function<bool(const OperationSequence&)>& fails)
{
    for (bool bChanged = true; bChanged;) {
        bChanged = takeStretchesAway<Operation>(sequence, fails);
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            OperationSequence candidate = sequence;
            bChanged |= takeStretchesAway<Point2>(sequence[i].vPoints, [&](const std::vector<Point2>& vFewer) {
                candidate[i].vPoints = vFewer;
                return fails(candidate);
            });
        }
    }
    return sequence;
}

// ---- files ------------------------------------------------------------------------------------------------------

bool writeSequenceFile(const std::string& path, const OperationSequence& sequence)
{
    std::ofstream out(path);
    out.precision(17);
    for (const Operation& op : sequence) {
        out << "#: " << operationNames[op.kind] << ' ' << op.vPoints.size() << '\n';
        for (const Point2& p : op.vPoints) out << "p " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n';
    }
    out.close();
    return !out.fail();
}

OperationSequence readSequenceFile(const std::string& path)
{
    const std::vector<Point2> vPoints = readCorpusFile(path, path).vPoints;
    auto next = vPoints.begin();
    OperationSequence sequence;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("#:", 0) != 0) continue;
        std::istringstream fields(line.substr(2));
        std::string name;
        std::ptrdiff_t count = 0;
        fields >> name >> count;
        const auto* const pName = std::find(std::begin(operationNames), std::end(operationNames), name);
        if (!fields || pName == std::end(operationNames) || count > vPoints.end() - next)
            throw std::runtime_error(path + ": no such operation, or too few points: " + line);
        sequence.push_back({static_cast<Operation::Kind>(pName - std::begin(operationNames)), {next, next + count}});
        next += count;
    }
    if (next != vPoints.end()) throw std::runtime_error(path + ": points that belong to no operation");
    return sequence;
}

} // namespace oracles
