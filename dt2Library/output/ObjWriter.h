#ifndef LUMO25D_OUTPUT_OBJWRITER_H
#define LUMO25D_OUTPUT_OBJWRITER_H

#include "output/FileWriter.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

/// Writes a Wavefront OBJ file: all vertices first, then the triangles. Every double is read
/// back as it was.
class ObjWriter
{
public:
    /// Says on the standard output that it writes, or that it can't.
    explicit ObjWriter(const char* filename);

    bool isOpen() const { return writer.isOpen(); }
    /// The first dim (2 or 3) coordinates; with two, the height is 0.
    void addVertex(const double* aCoords, int dim);
    /// The triangles from here on belong to a group.
    void beginGroup(const char* name);
    /// Numbers of vertices from 0, in the order in which they were added.
    void addTriangle(std::size_t a, std::size_t b, std::size_t c);
    /// Ends the file; false, with a message, when anything could not be written.
    bool finish();

private:
    FileWriter writer;
};

} // namespace ORBI_LUMO25D

#endif
