#ifndef LUMO25D_LABEL_H
#define LUMO25D_LABEL_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <string>

namespace ORBI_LUMO25D
{

/// A text at a point of a drawing. Line ends in the text begin new lines.
class LUMO25D_API Label
{
public:
    /// The text s is copied; NULL is an empty text. The font size is in points of the page, whatever the drawing's
    /// scale; with 0 or less the text isn't shown. bWithMark: a cross marks the point.
    Label(const Point2& p, const char* s, bool bWithMark_, int fontSize_);

    /// The text, valid as long as the label is neither changed nor destroyed.
    const char* getCS() const { return text.c_str(); }
    const Point2& getPosition() const { return position; }
    bool hasMark() const { return bWithMark; }
    int getFontSize() const { return fontSize; }

private:
    std::string text;
    Point2 position;
    bool bWithMark;
    int fontSize;
};

} // namespace ORBI_LUMO25D

#endif
