#include "tools/zel/xic/ChromatogramPlot.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

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

/// A span that can be drawn, also when all values are equal.
Axis makeAxis(double low, double high, double pixelAtLow, double pixelAtHigh)
{
    const double margin = high > low ? 0.0 : std::max(std::abs(high), 1.0) * 0.5;
    return {low - margin, high + margin, pixelAtLow, pixelAtHigh};
}

QString line(double x1, double y1, double x2, double y2, const char* colour)
{
    return QStringLiteral("<line x1=\"%1\" y1=\"%2\" x2=\"%3\" y2=\"%4\" stroke=\"%5\"/>\n")
        .arg(x1)
        .arg(y1)
        .arg(x2)
        .arg(y2)
        .arg(QString::fromLatin1(colour));
}

QString label(double x, double y, const char* anchor, const QString& text)
{
    return QStringLiteral("<text x=\"%1\" y=\"%2\" text-anchor=\"%3\">%4</text>\n")
        .arg(x)
        .arg(y)
        .arg(QString::fromLatin1(anchor), text.toHtmlEscaped());
}

QString drawAxes(const Axis& time, const Axis& intensity)
{
    QString svg;
    for (const double value : ticks(time)) {
        svg += line(time.pixel(value), kTop, time.pixel(value), kTop + kHeight, "#e4e4e4");
        svg +=
            label(time.pixel(value), kTop + kHeight + 18, "middle", QString::number(value, 'g', 6));
    }
    for (const double value : ticks(intensity)) {
        svg +=
            line(kLeft, intensity.pixel(value), kLeft + kWidth, intensity.pixel(value), "#e4e4e4");
        svg += label(kLeft - 8, intensity.pixel(value) + 4, "end", QString::number(value, 'g', 3));
    }
    svg += line(kLeft, kTop + kHeight, kLeft + kWidth, kTop + kHeight, "#444");
    svg += line(kLeft, kTop, kLeft, kTop + kHeight, "#444");
    svg += label(
        kLeft + kWidth / 2, kTop + kHeight + 42, "middle", QStringLiteral("retention time (min)"));
    svg += QStringLiteral("<text transform=\"translate(18 %1) rotate(-90)\" "
                          "text-anchor=\"middle\">intensity</text>\n")
               .arg(kTop + kHeight / 2);
    return svg;
}

QString drawXic(const NamedXic& xic, const Axis& time, const Axis& intensity, const QString& colour)
{
    QString points;
    for (const QPointF& point : xic.points) {
        points += QStringLiteral("%1,%2 ")
                      .arg(time.pixel(point.x()), 0, 'f', 1)
                      .arg(intensity.pixel(point.y()), 0, 'f', 1);
    }
    return QStringLiteral("<polyline fill=\"none\" stroke-width=\"1.4\" stroke=\"%1\" "
                          "points=\"%2\"><title>%3</title></polyline>\n")
        .arg(colour, points, xic.name.toHtmlEscaped());
}

QString drawLegendEntry(const QString& name, double y, const QString& colour)
{
    constexpr qsizetype maxLength = 34;
    const double x = kLeft + kWidth + kLegendGap;
    const QString shown =
        name.size() <= maxLength ? name : name.left(maxLength - 1) + QChar(0x2026);
    return line(x, y - 4, x + 16, y - 4, colour.toLatin1().constData()) +
           label(x + 22, y, "start", shown);
}

QString drawing(const QList<NamedXic>& xics)
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
        return QStringLiteral("<p>No points.</p>\n");
    }
    const Axis time = makeAxis(start, end, kLeft, kLeft + kWidth);
    const Axis intensity = makeAxis(0.0, height, kTop + kHeight, kTop);
    const double legendHeight = kTop + kLegendLine * static_cast<double>(xics.size() + 1);
    QString svg =
        QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" "
                       "font-family=\"sans-serif\" font-size=\"12\">\n")
            .arg(kLeft + kWidth + kLegendGap + kLegendWidth)
            .arg(std::max(kTop + kHeight + 60, legendHeight));
    svg += drawAxes(time, intensity);
    for (qsizetype i = 0; i < xics.size(); ++i) {
        const QString colour =
            QString::fromLatin1(kColours[static_cast<std::size_t>(i) % kColours.size()]);
        svg += drawXic(xics[i], time, intensity, colour);
        svg +=
            drawLegendEntry(xics[i].name, kTop + kLegendLine * static_cast<double>(i + 1), colour);
    }
    return svg + QStringLiteral("</svg>\n");
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
    page += drawing(drawn);
    return (page + QStringLiteral("</body></html>\n")).toUtf8();
}

} // namespace zel::tool
