#include "output/ObjWriter.h"

#include "support/messages.h"

namespace ORBI_LUMO25D
{

ObjWriter::ObjWriter(const char* filename) : writer(filename)
{
    if (!writer.isOpen()) {
        printLine("Can't write " + writer.getName());
        return;
    }
    printLine("writing " + writer.getName());
    writer.put("# Written by Lumo2D");
}

void ObjWriter::addVertex(const double* aCoords, int dim)
{
    writer.put("\nv");
    for (int i = 0; i < dim; ++i) {
        writer.put(" ");
        writer.put(aCoords[i]);
    }
    if (dim == 2) writer.put(" 0");
}

void ObjWriter::beginGroup(const char* name)
{
    writer.put("\ng ");
    writer.put(name);
}

void ObjWriter::addTriangle(std::size_t a, std::size_t b, std::size_t c)
{
    writer.put("\nf");
    for (const std::size_t v : {a, b, c}) {
        writer.put(" ");
        writer.put(std::uint64_t(v) + 1);
    }
}

bool ObjWriter::finish()
{
    writer.put("\n");
    if (writer.close()) return true;
    printLine("Can't write " + writer.getName());
    return false;
}

} // namespace ORBI_LUMO25D
