#ifndef LUMO25D_VISUALIZER3_H
#define LUMO25D_VISUALIZER3_H

#include "Lumo25DApi.h"

#include <memory>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Edge2;
class Point2;
class Segment2;
class Triangle2;
class Visualizer3Impl;

/// Draws geometry in space into a Geomview file, a list of objects: triangles as an OFF object, points and segments as
/// VECT objects. Every call writes one object at once, so that memory does not grow with the drawing.
///
/// A colour is a text of red, green, blue and, if wanted, opacity, from 0 to 1 each: "1 0 0 0.5" is a transparent red. An
/// empty one takes the next colour in turn, and so does a text that is no colour, with a warning.
///
/// Coordinates are written so that they are read back as they were. Objects with coordinates that are no finite numbers or
/// lie beyond a float's range, in particular with a height that isn't known, NULL pointers and dead triangles are left
/// out, with one warning at the end.
///
///     Visualizer3 vis("surface.list");
///     vis.addObject(vTriangles, "0.7 0.8 0.6");
///     vis.addObject(vSegments, "1 0 0");
class LUMO25D_API Visualizer3
{
public:
    /// Opens the file. One that can't be written is told on the standard output; the object can be used all the same.
    explicit Visualizer3(const char* filename);
    Visualizer3(const Visualizer3&) = delete;
    Visualizer3& operator=(const Visualizer3&) = delete;
    /// Completes the file if that hasn't been done.
    ~Visualizer3();

    /// Adding after writeFile() is a failed condition. Triangles share the vertices that are the same objects.
    void addObject(const std::vector<Triangle2*>& vTriangles, const std::string& color);
    void addObject(const std::vector<Triangle2>& vTriangles, const std::string& color);
    void addObject(const std::vector<Point2*>& vPoints, const std::string& color);
    void addObject(const std::vector<Point2>& vPoints, const std::string& color);
    void addObject(const std::vector<Segment2>& vSegments, const std::string& color);
    void addObject(const std::vector<Edge2>& vEdges, const std::string& color);
    void addObject(const std::vector<ConstraintSegment2*>& vSegments, const std::string& color);
    /// Triangles of three points in a row each; what is left over at the end is ignored.
    void addTriangles(const std::vector<Point2>& vCorners, const std::string& color);

    /// Completes and closes the file. False, with a message, when it could not be written; a warning the second time.
    bool writeFile();

    /// The colours in turn, well apart from each other: the text of number nextColor, which is counted on. The counter is
    /// one for the process; threads that take colours at a time don't disturb each other.
    static std::string getNextColor();
    static int nextColor;

private:
    std::unique_ptr<Visualizer3Impl> pImpl;
};

} // namespace ORBI_LUMO25D

#endif
