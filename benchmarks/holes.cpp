// Times the filling of holes; the peer is CGAL's, when it is there.
//
//     holes [--rounds N] [--peer-max N] [MESH.obj|MESH.stl ...]
//
// Rings of a thousand to ten thousand edges in a band of triangles, so that the growth shows, and all holes of the given
// meshes. Both fill the same holes of the same mesh, in turns; reading and the search for the rings are not timed. Rings
// of more than --peer-max edges are not given to the peer, whose time grows faster.

#include "holes.h"
#include "measure.h"

#include "HoleFiller.h"
#include "Mesh3.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

using namespace ORBI_LUMO25D;

namespace benchmarks
{

Closing closeByUs(const Corners& vMesh, bool bAddPoints, std::size_t maxRing)
{
    Mesh3 mesh(vMesh);
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    Closing closing;
    closing.vMesh = vMesh;
    for (std::vector<Edge2>& vRing : vRings) {
        if (vRing.size() > maxRing) continue;
        Corners vPatch;
        const double start = Times::now().wall;
        if (!fillHole(&mesh, vRing, bAddPoints, false, vPatch)) ++closing.numFailed;
        closing.seconds += Times::now().wall - start;
        closing.numTriangles += vPatch.size() / 3;
        closing.vMesh.insert(closing.vMesh.end(), vPatch.begin(), vPatch.end());
    }
    return closing;
}

} // namespace benchmarks

using namespace benchmarks;

namespace
{

/// A band of triangles around a hole with n edges, star-shaped and wavy in height; its outer rim is closed by a cone.
Corners makeBand(std::size_t n)
{
    const auto at = [n](std::size_t i, double factor) {
        const double t = 2.0 * 3.14159265358979 * static_cast<double>(i % n) / static_cast<double>(n);
        const double r = (1.0 + 0.3 * std::sin(9.0 * t) + 0.05 * std::sin(101.0 * t)) * factor;
        return Point2(r * std::cos(t), r * std::sin(t), 0.1 * std::sin(3.0 * t));
    };
    const double outer = 1.0 + 6.28 / static_cast<double>(n);
    Corners vMesh;
    for (std::size_t i = 0; i < n; ++i) {
        vMesh.insert(vMesh.end(), {at(i, outer), at(i + 1, outer), at(i + 1, 1.0)});
        vMesh.insert(vMesh.end(), {at(i, outer), at(i + 1, 1.0), at(i, 1.0)});
    }
    for (std::size_t i = 0; i < n; ++i) {
        vMesh.insert(vMesh.end(), {at(i + 1, outer), at(i, outer), Point2(0.0, 0.0, -2.0)});
    }
    return vMesh;
}

using Close = std::function<Closing(const Corners&, bool, std::size_t)>;

/// The median time over the rounds, and the last result.
Closing measure(const Close& close, const Corners& vMesh, bool bAddPoints, std::size_t maxRing, int numRounds)
{
    Closing closing;
    std::vector<double> vSeconds;
    for (int round = 0; round < numRounds; ++round) {
        closing = close(vMesh, bAddPoints, maxRing);
        vSeconds.push_back(closing.seconds);
    }
    std::sort(vSeconds.begin(), vSeconds.end());
    closing.seconds = vSeconds[vSeconds.size() / 2];
    return closing;
}

struct Options
{
    int numRounds = 3;
    std::size_t peerMax = 10000;
};

void compare(const std::string& name, const Corners& vMesh, bool bAddPoints, bool bCrossings, const Options& options)
{
    const std::size_t any = vMesh.size();
    const Closing ours = measure(closeByUs, vMesh, bAddPoints, any, options.numRounds);
    std::printf("| %s | %s | %.4f | %zu | %zu |", name.c_str(), bAddPoints ? "yes" : "no", ours.seconds,
                ours.numTriangles, ours.numFailed);
#if defined(LUMO25D_WITH_CGAL)
    const Closing peer = measure(closeByCgal, vMesh, bAddPoints, options.peerMax, options.numRounds);
    if (peer.numTriangles > 0) {
        std::printf(" %.4f | %zu | %zu | %.1f |", peer.seconds, peer.numTriangles, peer.numFailed,
                    peer.seconds / ours.seconds);
        addFigure(name + (bAddPoints ? ", new points" : ""), ours.seconds, "CGAL", peer.seconds);
    } else {
        std::printf(" | | | |");
    }
    if (bCrossings) {
        const std::size_t before = countSelfIntersections(vMesh);
        std::printf(" %zu | %zu | %zu |", before, countSelfIntersections(ours.vMesh),
                    countSelfIntersections(peer.vMesh));
    }
#else
    (void)bCrossings;
#endif
    std::printf("\n");
    std::fflush(stdout);
}

std::string stemOf(const std::string& filename)
{
    const std::size_t slash = filename.find_last_of('/');
    return slash == std::string::npos ? filename : filename.substr(slash + 1);
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    std::vector<std::string> vFiles;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc) {
            options.numRounds = std::max(1, std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--peer-max") == 0 && i + 1 < argc) {
            options.peerMax = std::strtoull(argv[++i], nullptr, 10);
        } else {
            vFiles.emplace_back(argv[i]);
        }
    }
    std::printf(
        "| case | points | ours s | triangles | open | peer s | triangles | open | peer / ours | crossings before | "
        "ours | peer |\n|---|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const std::size_t n : {250U, 500U, 1000U, 2000U, 5000U, 10000U}) {
        compare("ring of " + std::to_string(n), makeBand(n), false, false, options);
    }
    for (const std::size_t n : {250U, 500U, 1000U}) {
        compare("ring of " + std::to_string(n), makeBand(n), true, false, options);
    }
    for (const std::string& file : vFiles) {
        Corners vMesh;
        if (!Mesh3::readCorners(file, vMesh)) return 2;
        for (const bool bAddPoints : {false, true}) compare(stemOf(file), vMesh, bAddPoints, true, options);
    }
    return 0;
}
