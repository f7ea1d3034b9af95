#include "output/WebSceneWriter.h"

#include "output/littleEndian.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace ORBI_LUMO25D
{

namespace
{

/// A power of two above a length and at most twice as large, within what a double can hold; 1 for 0.
double powerOfTwoAbove(double length)
{
    if (!(length > 0.0)) return 1.0;
    int exponent = 0;
    std::frexp(length, &exponent);
    return std::ldexp(1.0, std::clamp(exponent, -1000, 1023));
}

/// In quotes, with nothing in it that would end the script element around it.
std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\' || c == '<' || c == '>' || static_cast<unsigned char>(c) < 0x20) {
            char aEscape[8];
            std::snprintf(aEscape, sizeof aEscape, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            result += aEscape;
        } else {
            result += c;
        }
    }
    return result + '"';
}

void putTriple(FileWriter& writer, const double (&a)[3])
{
    for (int k = 0; k < 3; ++k) {
        writer.put(k == 0 ? "[" : ",");
        writer.put(a[k]);
    }
    writer.put("]");
}

} // namespace

void WebSceneHead::setRange(const double (&aMin)[3], const double (&aMax)[3])
{
    double aHalf[3];
    for (int k = 0; k < 3; ++k) {
        aCenter[k] = aMin[k] / 2.0 + aMax[k] / 2.0;
        aHalf[k] = aMax[k] / 2.0 - aMin[k] / 2.0;
    }
    aUnit[0] = aUnit[1] = powerOfTwoAbove(std::max(aHalf[0], aHalf[1]));
    aUnit[2] = powerOfTwoAbove(aHalf[2]);
    for (int k = 0; k < 3; ++k) {
        aHalfSize[k] = aHalf[k] / aUnit[k];
    }
}

WebSceneWriter::WebSceneWriter(const char* filename) : writer(filename), vPiece(pieceSize) {}

bool WebSceneWriter::begin()
{
    printLine((writer.isOpen() ? "writing " : "Can't write ") + writer.getName());
    return writer.isOpen();
}

void WebSceneWriter::putHead(const WebSceneHead& head)
{
    writer.put(pageBefore);
    writer.put("<script type=\"application/json\" id=\"head\">{\"title\":");
    writer.put(quoted(head.title));
    writer.put(",\"unit\":");
    writer.put(quoted(head.lengthUnit));
    writer.put(",\"center\":");
    putTriple(writer, head.aCenter);
    writer.put(",\"halfSize\":");
    putTriple(writer, head.aHalfSize);
    writer.put(",\"unitXY\":");
    writer.put(head.aUnit[0]);
    writer.put(",\"unitZ\":");
    writer.put(head.aUnit[2]);
    writer.put(",\"numVertices\":");
    writer.put(head.numVertices);
    writer.put(",\"numTriangles\":");
    writer.put(head.numTriangles);
    writer.put(",\"zones\":[");
    for (std::size_t i = 0; i < head.vZoneAreas.size(); ++i) {
        writer.put(i == 0 ? "{\"area\":" : ",{\"area\":");
        writer.put(head.vZoneAreas[i]);
        writer.put("}");
    }
    writer.put("]}</script>\n");
}

void WebSceneWriter::beginBlock(std::string_view name)
{
    blockName = name;
    startElement();
}

void WebSceneWriter::startElement()
{
    writer.put("<script type=\"text/plain\" data-block=\"");
    writer.put(blockName);
    writer.put("\">");
    numInElement = 0;
}

void WebSceneWriter::put(std::uint32_t value)
{
    char aBytes[4];
    storeLE32(value, aBytes);
    std::memcpy(&vPiece[numUsed], aBytes, 4);
    numUsed += 4;
    if (numUsed == pieceSize) encode();
}

void WebSceneWriter::put(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    put(bits);
}

void WebSceneWriter::endBlock()
{
    encode();
    writer.put("</script>\n");
}

/// Browsers limit the length of a text: long blocks come in several elements.
void WebSceneWriter::encode()
{
    static const char aDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (numInElement == elementSize) {
        writer.put("</script>\n");
        startElement();
    }
    for (std::size_t i = 0; i < numUsed; i += 3) {
        const std::size_t n = std::min<std::size_t>(3, numUsed - i);
        const unsigned bits = static_cast<unsigned>(vPiece[i]) << 16 |
                              (n > 1 ? static_cast<unsigned>(vPiece[i + 1]) << 8 : 0U) |
                              (n > 2 ? static_cast<unsigned>(vPiece[i + 2]) : 0U);
        char* const p = writer.getRoom(4);
        p[0] = aDigits[bits >> 18];
        p[1] = aDigits[bits >> 12 & 63];
        p[2] = n > 1 ? aDigits[bits >> 6 & 63] : '=';
        p[3] = n > 2 ? aDigits[bits & 63] : '=';
        writer.add(4);
    }
    numInElement += numUsed;
    numUsed = 0;
}

bool WebSceneWriter::finish()
{
    writer.put(pageBehind);
    if (writer.close()) return true;
    printLine("Can't write " + writer.getName());
    return false;
}

} // namespace ORBI_LUMO25D
