#include "output/ObjWriter.h"

#include <iostream>
#include <limits>
#include <locale>

namespace ORBI_LUMO25D
{

ObjWriter::ObjWriter(const std::string& filename) : name(filename), stream(filename)
{
    if (!stream.is_open()) {
        std::cout << "Can't write " << name << '\n';
        return;
    }
    std::cout << "writing " << name << '\n';
    stream.imbue(std::locale::classic()); // the program's own may have decimal commas
    stream.precision(std::numeric_limits<double>::max_digits10);
    stream << "# Written by Lumo2D";
}

void ObjWriter::addVertex(const double* aCoords, int dim)
{
    stream << "\nv";
    for (int i = 0; i < dim; ++i) {
        stream << ' ' << aCoords[i];
    }
    if (dim == 2) stream << " 0";
}

void ObjWriter::addTriangle(std::size_t a, std::size_t b, std::size_t c)
{
    stream << "\nf " << a + 1 << ' ' << b + 1 << ' ' << c + 1;
}

bool ObjWriter::finish()
{
    stream << '\n';
    stream.close();
    if (stream.good()) return true;
    std::cout << "Can't write " << name << '\n';
    return false;
}

} // namespace ORBI_LUMO25D
