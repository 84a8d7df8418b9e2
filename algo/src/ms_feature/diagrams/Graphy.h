#pragma once

#include "common/stable/Export.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace zel {

/// How a shape is painted, as the texts of SVG attributes.
struct ZEL_EXPORT GraphyStyle
{
    std::string fill;
    std::string fillOpacity;
    std::string stroke = "black";
    std::string strokeOpacity; ///< kept, but no shape writes it
};

/// A shape on a canvas of pixels; y grows downwards.
struct ZEL_EXPORT ShapeBase
{
    virtual ~ShapeBase();
    /// Writes the shape as one SVG element, without a line end.
    virtual void draw(std::ostream& out, const GraphyStyle& style) const = 0;
};

struct ZEL_EXPORT LineSegment : public ShapeBase
{
    LineSegment(int fromX, int fromY, int toX, int toY);
    ~LineSegment() override;
    void draw(std::ostream& out, const GraphyStyle& style) const override;

    int x1;
    int y1;
    int x2;
    int y2;
};

/// A rectangle from its lower left corner (`x1`, `y1`) to its upper right one. With the corners
/// swapped, a negative width or height is written as it stands.
struct ZEL_EXPORT Box : public ShapeBase
{
    Box(int left, int bottom, int right, int top);
    ~Box() override;
    void draw(std::ostream& out, const GraphyStyle& style) const override;

    int x1;
    int y1;
    int x2;
    int y2;
};

/// A text that starts at a pixel; written as it stands, without escaping.
struct ZEL_EXPORT Text : public ShapeBase
{
    Text(int left, int baseline, const std::string& content);
    ~Text() override;
    void draw(std::ostream& out, const GraphyStyle& style) const override;

    int x;
    int y;
    std::string text; ///< UTF-8
};

struct ZEL_EXPORT Circle : public ShapeBase
{
    Circle(int centreX, int centreY, int radius);
    ~Circle() override;
    void draw(std::ostream& out, const GraphyStyle& style) const override;

    int x;
    int y;
    int r;
};

/// A shape and the style that it is painted with. Moved from, it holds no shape.
struct ZEL_EXPORT ShapeContainer
{
    ShapeContainer(const GraphyStyle& shapeStyle, std::unique_ptr<ShapeBase> ownedShape);
    ShapeContainer(ShapeContainer&&) noexcept;
    ShapeContainer& operator=(ShapeContainer&&) noexcept;
    virtual ~ShapeContainer();

    GraphyStyle style;
    std::unique_ptr<ShapeBase> shape;
};

/// A diagram: a list of shapes on a canvas, later ones above earlier ones. Each shape takes the
/// style of the moment in which it is added.
///
/// The operations named `...Data` take data coordinates: the range from (`xMin`, `yMin`) to
/// (`xMax`, `yMax`), which is to be set first, is mapped to the canvas, with data y growing
/// upwards, and rounded to pixels. What lies off the range lies off the canvas.
class ZEL_EXPORT Graphy
{
public:
    Graphy(int widthPixels, int heightPixels);
    Graphy(Graphy&&) noexcept;
    Graphy& operator=(Graphy&&) noexcept;
    virtual ~Graphy();

    /// The colours of lines and of areas and texts; each part from 0 to 1.
    void setStroke(float r, float g, float b, float a);
    void setFill(float r, float g, float b, float a);

    /// Lines leave the pen where they end. One from a point to itself places the pen.
    void line(int x1, int y1, int x2, int y2);
    void lineData(double x1, double y1, double x2, double y2);
    /// A line from the pen to the point.
    void lineToData(double x, double y);
    /// A box from the lower left to the upper right corner.
    void boxData(double x1, double y1, double x2, double y2);
    /// \param r  in units of the mean of both axes' scales; a negative one is in pixels
    void circleData(double x, double y, double r);
    void text(int x, int y, const std::string& content);
    void textData(double x, double y, const std::string& content);

    int width;  ///< pixels
    int height; ///< pixels
    int penX = 0;
    int penY = 0;
    GraphyStyle style;
    std::vector<ShapeContainer> shapes;
    double xMin = 0.0;
    double xMax = 0.0;
    double yMin = 0.0;
    double yMax = 0.0;

private:
    int pixelX(double x) const;
    int pixelY(double y) const;
    int pixelRadius(double r) const;
    void add(std::unique_ptr<ShapeBase> shape);
};

} // namespace zel
