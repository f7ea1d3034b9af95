#ifndef LUMO25D_COLOR_H
#define LUMO25D_COLOR_H

#include "Lumo25DApi.h"

namespace ORBI_LUMO25D
{

/// The colours with a name.
enum Colorname : int
{
    CRED = 0,
    CGREEN = 1,
    CBLUE = 2,
    CBLACK = 3,
    CPINK = 4,
    CGRAY = 5,
    CORANGE = 6,
    CLIGHTBLUE = 7,
    CLIGHTBROWN = 8,
    CDARKBROWN = 9,
    CPURPLE = 10,
    COLIVE = 11,
    CLAWNGREEN = 12,
    CPALEGREEN = 13,
    CCYAN = 14,
    CYELLOW = 15,
    CWHITE = 16
};

/// How an object is drawn: colour, line width and whether its inside is filled.
class LUMO25D_API Color
{
public:
    /// Black, width 0.1, no fill.
    Color() = default;
    /// Red, green and blue from 0 to 1; the width in points of the page (1/72 inch).
    Color(double r_, double g_, double b_, double width_, bool bFill_);
    /// A named colour; black, with a warning, for a value that is none.
    Color(Colorname c, float width_ = 0.1F, bool bFill_ = false);

    /// Exact comparison of the five fields, in their order.
    bool operator==(const Color& other) const;
    bool operator!=(const Color& other) const { return !(*this == other); }
    bool operator<(const Color& other) const;

    /// The next name in turn, CRED to CCYAN and again; CYELLOW and CWHITE are too bright for a page and never come.
    /// The counter is one for the process; threads that take names at a time don't disturb each other.
    static Colorname getNextColorName();

    float r = 0.0F;     ///< red, 0 to 1
    float g = 0.0F;     ///< green, 0 to 1
    float b = 0.0F;     ///< blue, 0 to 1
    float width = 0.1F; ///< of lines, in points of the page
    bool bFill = false; ///< whether triangles and circles are filled

    /// What getNextColorName() returned last. A value that is no name is warned about and gives CBLACK.
    static Colorname currentColorName;
};

} // namespace ORBI_LUMO25D

#endif
