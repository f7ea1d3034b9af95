#include "oracles/Composer.h"

#include "oracles/Corpus.h"

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

/// A square piece of real terrain, of about a hundred points.
std::vector<Point2> pieceOfTerrain(Dice& dice)
{
    static const std::vector<CorpusEntry> vTerrains = [] {
        std::vector<CorpusEntry> v;
        for (CorpusEntry& entry : plainCorpus()) {
            if (entry.name.rfind("terrain/", 0) == 0) v.push_back(std::move(entry));
        }
        return v;
    }();
    const std::vector<Point2>& vAll = dice.of(vTerrains).vPoints;
    const Point2 middle = dice.of(vAll);
    std::vector<Point2> v;
    for (double range = 1.0; v.size() < 100 && v.size() < vAll.size(); range *= 2.0) {
        v.clear();
        for (const Point2& p : vAll) {
            if (std::max(std::abs(p.x() - middle.x()), std::abs(p.y() - middle.y())) <= range) v.push_back(p);
        }
    }
    return v;
}

} // namespace

Composer::Composer(std::uint64_t seed, Repertoire repertoire_) : dice(seed), repertoire(repertoire_)
{
    static constexpr struct
    {
        double step, offset;
        int size;
    } fields[] = {
        {1.0, 0.0, 3},       {1.0, 0.0, 4},      {1.0, -2.0, 6},   {0.1, 21530000.0, 4}, {0.1, 0.0, 8},
        {1e-3, 0.0, 100000}, {3e299, 0.0, 5},    {1e-170, 0.0, 5}, {0x1p-53, 0.5, 5},    {0x1p-28, 21530000.0, 6},
        {2e307, -4e307, 5},  {0x1p-1074, 0.0, 4}};
    const auto& field = fields[dice.below(12)];
    step = field.step;
    offset = field.offset;
    size = field.size;
    if (repertoire == MANY_POINTS && step < 1e307) size *= 60;
    if (repertoire == EVERYTHING && dice.below(4) == 0) vReal = pieceOfTerrain(dice);
}

OperationSequence Composer::sequence(int length)
{
    OperationSequence result;
    for (int i = 0; i < length; ++i) result.push_back(operation());
    return result;
}

Point2 Composer::point()
{
    if (!vReal.empty()) return dice.of(vReal);
    const double x = offset + step * dice.below(size), y = offset + step * dice.below(size);
    return Point2(x, y, dice.below(9));
}

std::vector<Point2> Composer::points(int n)
{
    std::vector<Point2> v;
    for (int i = 0; i < n; ++i) v.push_back(point());
    vUsed.insert(vUsed.end(), v.begin(), v.end());
    return v;
}

void Composer::positionsToAsk(std::vector<Point2>& vPoints)
{
    for (int i = 0; i < 4; ++i) {
        const double x = offset + 0.5 * step * (dice.below(2 * size + 4) - 2);
        vPoints.emplace_back(x, offset + 0.5 * step * (dice.below(2 * size + 4) - 2), 0.0);
        if (!vReal.empty()) vPoints.back() = point();
    }
}

void Composer::removals(std::vector<Point2>& vPoints)
{
    const int num = dice.below(6) == 0 ? static_cast<int>(vUsed.size()) : dice.below(6);
    for (int i = 0; i < num && !vUsed.empty(); ++i) {
        const auto it = vUsed.begin() + dice.below(static_cast<int>(vUsed.size()));
        vPoints.push_back(*it);
        vUsed.erase(it);
    }
}

Operation Composer::operation()
{
    using O = Operation;
    static const std::vector<O::Kind> vBasic = {O::INSERT,   O::INSERT,     O::INSERT,     O::VECTOR,   O::COORDINATES,
                                                O::THREADED, O::CONSTRAINT, O::CONFORMING, O::ORIENTED, O::SPLIT,
                                                O::REMOVE,   O::REMOVE,     O::REMOVE,     O::LOCATE,   O::HEIGHT,
                                                O::EXPORT,   O::EXPORT,     O::CLEAR};
    static const std::vector<O::Kind> vFurther = {O::ZONE,  O::ZONE,  O::ZONE,   O::BOOLEAN, O::BOUNDED, O::CUT,
                                                  O::KNIFE, O::DRAPE, O::REFINE, O::SAVE,    O::VECTOR,  O::VECTOR};
    Operation op;
    op.kind = dice.of(repertoire != VERTICES_AND_CONSTRAINTS && dice.below(2) == 0 ? vFurther : vBasic);
    if (op.kind <= O::THREADED) {
        const bool bMany = op.kind == O::THREADED && (repertoire == MANY_POINTS || dice.below(10) == 0);
        const int many = 1000 + (repertoire == MANY_POINTS ? dice.below(12000) : 0);
        op.vPoints = points(op.kind == O::INSERT ? 1 + dice.below(3) : dice.below(25) + (bMany ? many : 0));
    }
    if (op.kind >= O::CONSTRAINT && op.kind <= O::SPLIT) op.vPoints = points(2 * (1 + dice.below(3)));
    if (op.kind == O::ZONE) op.vPoints = points(3 + dice.below(4));
    if (op.kind >= O::CUT && op.kind <= O::DRAPE) op.vPoints = points(2 * (1 + dice.below(3)));
    if (op.kind == O::REMOVE) removals(op.vPoints);
    if (op.kind == O::LOCATE || op.kind == O::HEIGHT) positionsToAsk(op.vPoints);
    return op;
}

std::string shrunkReport(const OperationSequence& failing, const std::string& name)
{
    const OperationSequence small = shrink(failing, [](const OperationSequence& s) { return !runSequence(s).empty(); });
    const std::string path = "failed-sequence-" + name + ".txt";
    const bool bWritten = writeSequenceFile(path, small);
    return runSequence(small) + "; kept in " + (bWritten ? path : "no file, it can't be written");
}

} // namespace oracles
