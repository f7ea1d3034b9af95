#include "Color.h"

#include "output/sharedCounter.h"
#include "support/messages.h"

#include <tuple>

namespace ORBI_LUMO25D
{

namespace
{

struct NamedColor
{
    float r;
    float g;
    float b;
};

/// In the order of Colorname.
const NamedColor aNamedColors[] = {
    {1.0F, 0.0F, 0.0F},       // CRED
    {0.0F, 1.0F, 0.0F},       // CGREEN
    {0.0F, 0.0F, 1.0F},       // CBLUE
    {0.0F, 0.0F, 0.0F},       // CBLACK
    {1.0F, 0.4F, 0.7F},       // CPINK
    {0.3F, 0.3F, 0.3F},       // CGRAY
    {1.0F, 0.627F, 0.0F},     // CORANGE
    {0.0F, 0.749F, 1.0F},     // CLIGHTBLUE
    {0.824F, 0.705F, 0.55F},  // CLIGHTBROWN
    {0.545F, 0.271F, 0.075F}, // CDARKBROWN
    {0.627F, 0.125F, 0.94F},  // CPURPLE
    {0.5F, 0.5F, 0.0F},       // COLIVE
    {0.486F, 0.99F, 0.0F},    // CLAWNGREEN
    {0.6F, 0.98F, 0.6F},      // CPALEGREEN
    {0.0F, 1.0F, 1.0F},       // CCYAN
    {1.0F, 1.0F, 0.0F},       // CYELLOW
    {1.0F, 1.0F, 1.0F},       // CWHITE
};

/// The names that are dark enough to be handed out in turn: CRED to CCYAN.
const int numInTurn = 15;

auto fieldsOf(const Color& c)
{
    return std::tie(c.r, c.g, c.b, c.width, c.bFill);
}

} // namespace

// The first name that is handed out is CRED.
Colorname Color::currentColorName = CCYAN;

Color::Color(double r_, double g_, double b_, double width_, bool bFill_)
    : r(static_cast<float>(r_)), g(static_cast<float>(g_)), b(static_cast<float>(b_)),
      width(static_cast<float>(width_)), bFill(bFill_)
{
}

Color::Color(Colorname c, float width_, bool bFill_) : width(width_), bFill(bFill_)
{
    if (c < CRED || c > CWHITE) {
        msgWarning("Color::Color", "Colorname unknown, returning black");
        return;
    }
    r = aNamedColors[c].r;
    g = aNamedColors[c].g;
    b = aNamedColors[c].b;
}

bool Color::operator==(const Color& other) const
{
    return fieldsOf(*this) == fieldsOf(other);
}

bool Color::operator<(const Color& other) const
{
    return fieldsOf(*this) < fieldsOf(other);
}

Colorname Color::getNextColorName()
{
    const Colorname next = countOn(currentColorName, [](Colorname before) {
        return static_cast<Colorname>((static_cast<long long>(before) + 1) % numInTurn);
    });
    if (next < CRED) {
        msgWarning("Color::getNextColorName()", "undefined color index, returning CBLACK");
        return CBLACK;
    }
    return next;
}

} // namespace ORBI_LUMO25D
