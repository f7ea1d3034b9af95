#ifndef LUMO25D_OUTPUT_WEBSCENEWRITER_H
#define LUMO25D_OUTPUT_WEBSCENEWRITER_H

#include "output/FileWriter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ORBI_LUMO25D
{

/// What a page says about its surface.
struct WebSceneHead
{
    /// A coordinate is center + unit * p with p from -1 to 1; halfSize is the largest |p|. Beyond that, p is a float.
    double aCenter[3] = {};
    double aUnit[3] = {}; ///< those of x and y are equal
    double aHalfSize[3] = {};
    std::string title;
    std::string lengthUnit;
    std::uint64_t numVertices = 0;
    std::uint64_t numTriangles = 0; ///< of the surface, be they drawn or not
    std::vector<double> vZoneAreas; ///< in the plane

    /// Centre, units and half sizes that hold the range from aMin to aMax, of any magnitude.
    void setRange(const double (&aMin)[3], const double (&aMax)[3]);
    float normalize(int k, double value) const
    {
        return static_cast<float>((value / 2.0 - aCenter[k] / 2.0) / aUnit[k] * 2.0);
    }
};

/// Writes a page that shows a surface: the fixed text of the page (webscene/) with the data in the midst, which are blocks
/// of little-endian numbers in base64.
///
/// Blocks: "positions" (three floats for each vertex), "triangles" (three vertices each, as 32-bit numbers), "border"
/// and "constraints" (two vertices for each segment), and for the zone with number i "zone<i>" (triangles) and
/// "zone<i>border". "positions" and "triangles" must be there; the order doesn't matter. Neighbours in the order of the
/// triangles should be neighbours in the plane: the page searches the triangles by that.
class WebSceneWriter
{
public:
    explicit WebSceneWriter(const char* filename);

    /// Says on the standard output that it writes; or that it can't, and false.
    bool begin();
    /// Comes next.
    void putHead(const WebSceneHead& head);

    /// What is put after this call belongs to a block of that name.
    void beginBlock(std::string_view name);
    void put(std::uint32_t value);
    void put(float value);
    void endBlock();

    /// Completes the page. False, with a message, when the file couldn't be written.
    bool finish();

private:
    void startElement();
    void encode();

    static const char* const pageBefore;
    static const char* const pageBehind;

    // Both a multiple of 12: whole numbers, and whole groups of three bytes.
    static constexpr std::size_t pieceSize = 12 * 4096;
    static constexpr std::size_t elementSize = pieceSize * 64;

    FileWriter writer;
    std::string blockName;
    std::vector<unsigned char> vPiece;
    std::size_t numUsed = 0;
    std::size_t numInElement = 0; ///< bytes of the block's present element
};

} // namespace ORBI_LUMO25D

#endif
