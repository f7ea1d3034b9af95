#ifndef LUMO25D_VISUALIZER2_H
#define LUMO25D_VISUALIZER2_H

#include "Color.h"
#include "Label.h"
#include "Lumo25DApi.h"

#include <memory>
#include <vector>

namespace ORBI_LUMO25D
{

class Circle2;
class ConstraintSegment2;
class Edge2;
class Point2;
class Segment2;
class Triangle2;
class Visualizer2Impl;

/// Draws geometry into a PostScript file of one A4 page, for debugging and documentation.
///
/// Objects are collected first, because the scale follows from all of them, and written by writeFile(): triangles,
/// segments, points, circles, labels, each kind over those before it and within itself in the order of addition. The
/// drawing is scaled equally in x and y; heights play no part.
///
/// Everything is copied at addition: nothing that was added need live until writeFile(). Objects with coordinates or
/// colour values that are no finite numbers, NULL pointers and dead triangles are left out, with one warning.
///
///     Visualizer2 vis("mesh.ps");
///     vis.addHeaderLine("All triangles, the constraints in red");
///     vis.addObject(vTriangles, Color(CGRAY));
///     vis.addObject(vSegments, Color(CRED, 0.5F));
///     vis.writeFile();
class LUMO25D_API Visualizer2
{
public:
    /// Opens the file. One that can't be written is told on the standard output; the object can be used all the same.
    explicit Visualizer2(const char* filename);
    Visualizer2(const Visualizer2&) = delete;
    Visualizer2& operator=(const Visualizer2&) = delete;
    /// Writes the file if that hasn't been done.
    ~Visualizer2();

    /// Adding after writeFile() is a failed condition. A point is drawn as a cross; a triangle or a circle is filled
    /// if the colour says so.
    void addObject(const Segment2& segment, const Color& color);
    void addObject(const Edge2& edge, const Color& color);
    void addObject(const Point2& point, const Color& color);
    void addObject(const Circle2& circle, const Color& color);
    void addObject(const Triangle2& triangle, const Color& color);
    void addObject(const Label& label, const Color& color);

    /// Each element as above.
    void addObject(const std::vector<Point2>& vPoints, const Color& color);
    void addObject(const std::vector<Point2*>& vPoints, const Color& color);
    void addObject(const std::vector<Segment2>& vSegments, const Color& color);
    void addObject(const std::vector<ConstraintSegment2*>& vSegments, const Color& color);
    void addObject(const std::vector<Edge2>& vEdges, const Color& color);
    void addObject(const std::vector<Triangle2>& vTriangles, const Color& color);
    void addObject(const std::vector<Triangle2*>& vTriangles, const Color& color);

    /// A line of notes at the head of the page: at most 10, the rest is dropped with a warning; of each at most 120
    /// characters are shown. After writeFile() a failed condition.
    void addHeaderLine(const char* s);

    /// Writes and closes the file. Only a warning the second time.
    void writeFile();

private:
    std::unique_ptr<Visualizer2Impl> pImpl;
};

} // namespace ORBI_LUMO25D

#endif
