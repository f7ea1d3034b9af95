#ifndef LUMO25D_TESTS_ORACLES_COMPOSER_H
#define LUMO25D_TESTS_ORACLES_COMPOSER_H

#include "oracles/Dice.h"
#include "oracles/OperationSequence.h"

#include <cstdint>
#include <string>
#include <vector>

namespace oracles
{

/// Draws sequences of operations; a seed gives the same on every platform.
class Composer
{
public:
    enum Repertoire
    {
        VERTICES_AND_CONSTRAINTS,
        EVERYTHING,
        MANY_POINTS ///< everything, with insertions large enough for several threads
    };

    /// Draws the field first: small integer grids make every degeneracy likely; others are nearly in general position, at a
    /// survey's offset, of neighbouring doubles, of sizes that overflow, or points of a real terrain.
    explicit Composer(std::uint64_t seed, Repertoire repertoire_ = VERTICES_AND_CONSTRAINTS);

    OperationSequence sequence(int length);

private:
    Operation operation();
    ORBI_LUMO25D::Point2 point();
    std::vector<ORBI_LUMO25D::Point2> points(int n);
    void positionsToAsk(std::vector<ORBI_LUMO25D::Point2>& vPoints);
    void removals(std::vector<ORBI_LUMO25D::Point2>& vPoints);

    Dice dice;
    Repertoire repertoire;
    double step = 1.0;
    int size = 2;
    double offset = 0.0;
    std::vector<ORBI_LUMO25D::Point2> vReal; ///< to draw from, instead of a grid, when there are any
    std::vector<ORBI_LUMO25D::Point2> vUsed; ///< positions inserted and not yet removed, as a rule
};

/// Shrinks a failing sequence, keeps it in the file "failed-sequence-<name>.txt" of the working directory, and tells its
/// fault and that name.
std::string shrunkReport(const OperationSequence& failing, const std::string& name);

} // namespace oracles

#endif
