#include "tools/zel/xic/ChromatogramPlot.h"

#include "common/stable/SvgElement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace zel::tool {

namespace {

constexpr qsizetype kMaxDrawn = 24;

// The drawing in pixels.
constexpr double kLeft = 90;
constexpr double kTop = 20;
constexpr double kWidth = 760;
constexpr double kHeight = 420;
constexpr double kLegendGap = 24;
constexpr double kLegendWidth = 240;
constexpr double kLegendLine = 18;

// Colours that stay apart for colour-blind readers. Source: Okabe and Ito 2008.
constexpr std::array kColours = {
    "#0072b2", "#d55e00", "#009e73", "#cc79a7", "#56b4e9", "#e69f00", "#000000", "#b8a800"};

/// One axis: a span of values laid on a span of pixels.
struct Axis
{
    double low;
    double high;
    double pixelAtLow;
    double pixelAtHigh;

    double pixel(double value) const
    {
        return pixelAtLow + (value - low) / (high - low) * (pixelAtHigh - pixelAtLow);
    }
};

std::string escaped(const QString& text)
{
    return text.toHtmlEscaped().toStdString();
}

double peakHeight(const NamedXic& xic)
{
    double height = 0.0;
    for (const QPointF& point : xic.points) {
        height = std::max(height, point.y());
    }
    return height;
}

/// The chromatograms to draw, in their own order.
QList<NamedXic> highestXics(const QList<NamedXic>& xics)
{
    if (xics.size() <= kMaxDrawn) {
        return xics;
    }
    QList<double> heights;
    for (const NamedXic& xic : xics) {
        heights.append(peakHeight(xic));
    }
    QList<double> ranked = heights;
    std::nth_element(
        ranked.begin(), ranked.begin() + (kMaxDrawn - 1), ranked.end(), std::greater<>());
    QList<NamedXic> drawn;
    for (qsizetype i = 0; i < xics.size() && drawn.size() < kMaxDrawn; ++i) {
        if (heights[i] >= ranked[kMaxDrawn - 1]) {
            drawn.append(xics[i]);
        }
    }
    return drawn;
}

/// Round values inside the axis, about five: steps of 1, 2 or 5 times a power of ten.
QList<double> ticks(const Axis& axis)
{
    constexpr double wantedCount = 5;
    const double rawStep = (axis.high - axis.low) / wantedCount;
    const double power = std::pow(10.0, std::floor(std::log10(rawStep)));
    const double fraction = rawStep / power;
    const double step = power * (fraction < 1.5 ? 1 : fraction < 3.5 ? 2 : fraction < 7.5 ? 5 : 10);
    QList<double> values;
    for (double i = std::ceil(axis.low / step); i * step <= axis.high; ++i) {
        values.append(i * step);
    }
    return values;
}

/// A span that can be drawn, also when all values are equal, or so nearly that doubles have no room
/// for steps between them.
Axis makeAxis(double low, double high, double pixelAtLow, double pixelAtHigh)
{
    constexpr double leastShare = 1e-9;
    const double size = std::max(std::abs(low), std::abs(high));
    const double margin = high - low > leastShare * size ? 0.0 : std::max(size, 1.0) * 0.5;
    return {low - margin, high + margin, pixelAtLow, pixelAtHigh};
}

void drawLine(double x1, double y1, double x2, double y2, const char* colour, std::ostream& out)
{
    SvgElement(out, "line")
        .set("x1", x1)
        .set("y1", y1)
        .set("x2", x2)
        .set("y2", y2)
        .set("stroke", colour)
        .end();
    out << '\n';
}

void drawLabel(double x, double y, const char* anchor, const QString& text, std::ostream& out)
{
    SvgElement(out, "text").set("x", x).set("y", y).set("text-anchor", anchor).end(escaped(text));
    out << '\n';
}

void drawAxes(const Axis& time, const Axis& intensity, std::ostream& out)
{
    constexpr const char* gridColour = "#e4e4e4";
    constexpr const char* axisColour = "#444";
    constexpr double right = kLeft + kWidth;
    constexpr double bottom = kTop + kHeight;
    for (const double value : ticks(time)) {
        const double x = time.pixel(value);
        drawLine(x, kTop, x, bottom, gridColour, out);
        drawLabel(x, bottom + 18, "middle", QString::number(value, 'g', 6), out);
    }
    for (const double value : ticks(intensity)) {
        const double y = intensity.pixel(value);
        drawLine(kLeft, y, right, y, gridColour, out);
        drawLabel(kLeft - 8, y + 4, "end", QString::number(value, 'g', 3), out);
    }
    drawLine(kLeft, bottom, right, bottom, axisColour, out);
    drawLine(kLeft, kTop, kLeft, bottom, axisColour, out);
    drawLabel(
        kLeft + kWidth / 2, bottom + 42, "middle", QStringLiteral("retention time (min)"), out);
    const QByteArray place =
        QByteArray("translate(18 ") + QByteArray::number(kTop + kHeight / 2) + ") rotate(-90)";
    SvgElement(out, "text")
        .set("transform", place.constData())
        .set("text-anchor", "middle")
        .end("intensity");
    out << '\n';
}

void drawXic(const NamedXic& xic,
             const Axis& time,
             const Axis& intensity,
             const char* colour,
             std::ostream& out)
{
    QByteArray points;
    for (const QPointF& point : xic.points) {
        points += QByteArray::number(time.pixel(point.x()), 'f', 1) + ',' +
                  QByteArray::number(intensity.pixel(point.y()), 'f', 1) + ' ';
    }
    SvgElement(out, "polyline")
        .set("fill", "none")
        .set("stroke-width", "1.4")
        .set("stroke", colour)
        .set("points", points.constData())
        .end("<title>" + escaped(xic.name) + "</title>");
    out << '\n';
}

void drawLegendEntry(const QString& name, double y, const char* colour, std::ostream& out)
{
    constexpr qsizetype maxLength = 34;
    const double x = kLeft + kWidth + kLegendGap;
    const QString shown =
        name.size() <= maxLength ? name : name.left(maxLength - 1) + QChar(0x2026);
    drawLine(x, y - 4, x + 16, y - 4, colour, out);
    drawLabel(x + 22, y, "start", shown, out);
}

std::string drawing(const QList<NamedXic>& xics)
{
    double start = std::numeric_limits<double>::max();
    double end = std::numeric_limits<double>::lowest();
    double height = 0.0;
    for (const NamedXic& xic : xics) {
        if (!xic.points.isEmpty()) {
            start = std::min(start, xic.points.constFirst().x());
            end = std::max(end, xic.points.constLast().x());
            height = std::max(height, peakHeight(xic));
        }
    }
    if (start > end) {
        return "<p>No points.</p>\n";
    }
    const Axis time = makeAxis(start, end, kLeft, kLeft + kWidth);
    const Axis intensity = makeAxis(0.0, height, kTop + kHeight, kTop);
    const double legendHeight = kTop + kLegendLine * static_cast<double>(xics.size() + 1);
    std::ostringstream content;
    content.imbue(std::locale::classic());
    content << '\n';
    drawAxes(time, intensity, content);
    for (qsizetype i = 0; i < xics.size(); ++i) {
        const char* const colour = kColours[static_cast<std::size_t>(i) % kColours.size()];
        const double legendLine = kTop + kLegendLine * static_cast<double>(i + 1);
        drawXic(xics[i], time, intensity, colour, content);
        drawLegendEntry(xics[i].name, legendLine, colour, content);
    }
    std::ostringstream picture;
    picture.imbue(std::locale::classic());
    SvgElement(picture, "svg")
        .set("xmlns", "http://www.w3.org/2000/svg")
        .set("width", kLeft + kWidth + kLegendGap + kLegendWidth)
        .set("height", std::max(kTop + kHeight + 60, legendHeight))
        .set("font-family", "sans-serif")
        .set("font-size", 12)
        .end(content.str());
    return picture.str() + '\n';
}

} // namespace

QByteArray chromatogramPage(const QString& title, const QList<NamedXic>& xics)
{
    const QList<NamedXic> drawn = highestXics(xics);
    QString page =
        QStringLiteral(
            "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>%1</title></head>\n"
            "<body style=\"font-family:sans-serif\"><h1 style=\"font-size:16px\">%1</h1>\n")
            .arg(title.toHtmlEscaped());
    if (drawn.size() < xics.size()) {
        page += QStringLiteral("<p>The %1 highest of %2 chromatograms.</p>\n")
                    .arg(drawn.size())
                    .arg(xics.size());
    }
    page += QString::fromStdString(drawing(drawn)) + QStringLiteral("</body></html>\n");
    return page.toUtf8();
}

} // namespace zel::tool
