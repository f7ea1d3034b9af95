#ifndef LUMO25D_OUTPUT_STLREADER_H
#define LUMO25D_OUTPUT_STLREADER_H

#include "Point2.h"

#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// Appends the corners of the facets of a text STL file, three points in a row for each facet; normals are ignored.
///
/// A facet is what stands between a line with "outer loop" (or "OUTER LOOP") and one with "endloop"; within it each
/// line with "vertex" gives a point. The other keywords are recognised in lower case only. A facet with a vertex whose
/// three numbers can't be read is left out as a whole, so that triples stay together; one warning tells how many.
///
/// False, with a message on the standard output, if the file can't be read.
bool readSTL(const std::string& filename, std::vector<Point2>& vPoints);

} // namespace ORBI_LUMO25D

#endif
