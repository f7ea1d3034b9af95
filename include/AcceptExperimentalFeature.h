#ifndef LUMO25D_ACCEPTEXPERIMENTALFEATURE_H
#define LUMO25D_ACCEPTEXPERIMENTALFEATURE_H

namespace ORBI_LUMO25D
{

/// Passed to a function whose form may still change, so that the caller spells out to know that.
class AcceptExperimentalFeature
{};

} // namespace ORBI_LUMO25D

#endif
