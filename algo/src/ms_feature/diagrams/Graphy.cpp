#include "ms_feature/diagrams/Graphy.h"

#include "common/stable/MathUtils.h"
#include "common/stable/SvgElement.h"

#include <cmath>
#include <cstdint>
#include <locale>
#include <ostream>
#include <sstream>

namespace zel {

namespace {

constexpr int kLineWidth = 1; ///< pixels

/// A number as a text stream writes it by default, in any locale.
std::string numberText(float value)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

std::string colourText(float r, float g, float b)
{
    constexpr float percent = 100.0F;
    return "rgb(" + numberText(r * percent) + "%, " + numberText(g * percent) + "%, " +
           numberText(b * percent) + "%)";
}

/// `to - from`, which may not fit into an int.
std::int64_t extent(int from, int to)
{
    return std::int64_t{to} - from;
}

} // namespace

ShapeBase::~ShapeBase() = default;

LineSegment::LineSegment(int fromX, int fromY, int toX, int toY)
    : x1(fromX)
    , y1(fromY)
    , x2(toX)
    , y2(toY)
{}

LineSegment::~LineSegment() = default;

void LineSegment::draw(std::ostream& out, const GraphyStyle& style) const
{
    SvgElement(out, "line")
        .set("x1", x1)
        .set("y1", y1)
        .set("x2", x2)
        .set("y2", y2)
        .set("stroke-width", kLineWidth)
        .set("stroke", style.stroke)
        .end();
}

Box::Box(int left, int bottom, int right, int top)
    : x1(left)
    , y1(bottom)
    , x2(right)
    , y2(top)
{}

Box::~Box() = default;

void Box::draw(std::ostream& out, const GraphyStyle& style) const
{
    SvgElement(out, "rect")
        .set("x", x1)
        .set("y", y2)
        .set("width", extent(x1, x2))
        .set("height", extent(y2, y1))
        .set("fill", style.fill)
        .set("fill-opacity", style.fillOpacity)
        .set("stroke", style.stroke)
        .set("stroke-width", kLineWidth)
        .end();
}

Text::Text(int left, int baseline, const std::string& content)
    : x(left)
    , y(baseline)
    , text(content)
{}

Text::~Text() = default;

void Text::draw(std::ostream& out, const GraphyStyle& style) const
{
    SvgElement(out, "text").set("x", x).set("y", y).set("fill", style.fill).end(text);
}

Circle::Circle(int centreX, int centreY, int radius)
    : x(centreX)
    , y(centreY)
    , r(radius)
{}

Circle::~Circle() = default;

void Circle::draw(std::ostream& out, const GraphyStyle& style) const
{
    SvgElement(out, "circle")
        .set("cx", x)
        .set("cy", y)
        .set("r", r)
        .set("stroke", style.stroke)
        .set("stroke-width", kLineWidth)
        .set("fill", style.fill)
        .end();
}

ShapeContainer::ShapeContainer(const GraphyStyle& shapeStyle, std::unique_ptr<ShapeBase> ownedShape)
    : style(shapeStyle)
    , shape(std::move(ownedShape))
{}

ShapeContainer::ShapeContainer(ShapeContainer&&) noexcept = default;
ShapeContainer& ShapeContainer::operator=(ShapeContainer&&) noexcept = default;
ShapeContainer::~ShapeContainer() = default;

Graphy::Graphy(int widthPixels, int heightPixels)
    : width(widthPixels)
    , height(heightPixels)
{}

Graphy::Graphy(Graphy&&) noexcept = default;
Graphy& Graphy::operator=(Graphy&&) noexcept = default;
Graphy::~Graphy() = default;

void Graphy::setStroke(float r, float g, float b, float a)
{
    style.stroke = colourText(r, g, b);
    style.strokeOpacity = numberText(a);
}

void Graphy::setFill(float r, float g, float b, float a)
{
    style.fill = colourText(r, g, b);
    style.fillOpacity = numberText(a);
}

void Graphy::line(int x1, int y1, int x2, int y2)
{
    add(std::make_unique<LineSegment>(x1, y1, x2, y2));
    penX = x2;
    penY = y2;
}

void Graphy::lineData(double x1, double y1, double x2, double y2)
{
    line(pixelX(x1), pixelY(y1), pixelX(x2), pixelY(y2));
}

void Graphy::lineToData(double x, double y)
{
    line(penX, penY, pixelX(x), pixelY(y));
}

void Graphy::boxData(double x1, double y1, double x2, double y2)
{
    add(std::make_unique<Box>(pixelX(x1), pixelY(y1), pixelX(x2), pixelY(y2)));
}

void Graphy::circleData(double x, double y, double r)
{
    add(std::make_unique<Circle>(pixelX(x), pixelY(y), pixelRadius(r)));
}

void Graphy::text(int x, int y, const std::string& content)
{
    add(std::make_unique<Text>(x, y, content));
}

void Graphy::textData(double x, double y, const std::string& content)
{
    text(pixelX(x), pixelY(y), content);
}

int Graphy::pixelX(double x) const
{
    return MathUtils::truncateToInt((x - xMin) * width / (xMax - xMin) + 0.5);
}

int Graphy::pixelY(double y) const
{
    // Subtracted before it is cut to an int, so that a far-off point stays off the canvas.
    return MathUtils::truncateToInt(height - std::trunc((y - yMin) * height / (yMax - yMin) + 0.5));
}

int Graphy::pixelRadius(double r) const
{
    const auto radius = static_cast<float>(r);
    if (radius < 0.0F) {
        return MathUtils::truncateToInt(-radius);
    }
    const auto unitsPerPixel = [](double low, double high, int pixels) {
        const auto range = static_cast<float>(std::abs(high - low));
        return pixels > 0 ? range / static_cast<float>(pixels) : 1.0F;
    };
    float scale = (unitsPerPixel(xMin, xMax, width) + unitsPerPixel(yMin, yMax, height)) * 0.5F;
    if (!(scale > 0.0F)) {
        scale = 1.0F;
    }
    return MathUtils::truncateToInt(radius / scale + 0.5F);
}

void Graphy::add(std::unique_ptr<ShapeBase> shape)
{
    shapes.emplace_back(style, std::move(shape));
}

} // namespace zel
