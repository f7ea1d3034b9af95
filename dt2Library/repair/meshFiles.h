#ifndef LUMO25D_REPAIR_MESHFILES_H
#define LUMO25D_REPAIR_MESHFILES_H

#include "Point2.h"

#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// The work behind Mesh3::readCorners(), where the contract stands.
bool readMeshCorners(const std::string& filename, std::vector<Point2>& vCorners);

} // namespace ORBI_LUMO25D

#endif
