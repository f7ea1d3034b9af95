// Saved states: a file is refused, with nothing changed, or it gives a valid triangulation, which gives the same file again
// and again from then on and takes new points.

#include "fuzz.h"

#include "Lumo_2D.h"

#include <cstdio>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

std::string bytesOf(const char* filename)
{
    std::string bytes(std::filesystem::file_size(filename), '\0');
    std::FILE* const pFile = std::fopen(filename, "rb");
    fuzz::require(pFile != nullptr, "the file is there");
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), pFile));
    std::fclose(pFile);
    return bytes;
}

void goOn(Lumo_2D& lumo)
{
    lumo.insert(std::vector<Point2>{{0.5, 0.25, 0}, {3.5, 1, 0}, {1, 3, 0}, {-1, 2, 0}});
    fuzz::require(lumo.checkValidity(false, "went on"), "new points come in");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size)
{
    static const fuzz::InputFile file(".lumo");
    Lumo_2D lumo, again;
    std::vector<Zone2*> vZones, vAgain;
    if (!lumo.load(file.write(pData, size), vZones)) {
        fuzz::require(lumo.numberOfPoints() == 0 && vZones.empty(), "a refused file changes nothing");
        goOn(lumo);
        return 0;
    }
    fuzz::require(lumo.checkValidity(false, "loaded"), "what was loaded is valid");
    fuzz::require(lumo.saveTriangulation(file.name(), vZones), "it can be saved");
    const std::string saved = bytesOf(file.name());
    fuzz::require(again.load(file.name(), vAgain), "what was saved is loaded");
    fuzz::require(again.saveTriangulation(file.name(), vAgain) && bytesOf(file.name()) == saved,
                  "the file stays the same");
    goOn(lumo);
    return 0;
}
