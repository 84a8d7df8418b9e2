#include "common/stable/MathUtils.h"
#include "common/stable/NumberText.h"
#include "ms_feature/diagrams/FeatureDiagrams_p.h"
#include "ms_feature/diagrams/GraphyCollection.h"

#include <algorithm>

namespace zel::diagrams {

namespace {

constexpr float kOpaque = 1.0F;
constexpr int kTextLeft = 10; ///< pixels
constexpr int kFirstLine = 20;

void collect(Graphy&& diagram)
{
    GraphyCollection::instance().append(std::move(diagram), {}, 1);
}

std::string labelled(const char* label, double value, const char* unit = "")
{
    return label + roundTripText(value).toStdString() + unit;
}

// --- A finder's diagrams

/// A diagram whose range is that of the curve; empty for an empty curve.
Graphy finderDiagram(const QList<QPointF>& curve)
{
    constexpr int width = 400; // pixels
    constexpr int height = 200;
    Graphy diagram(width, height);
    if (!curve.isEmpty()) {
        const auto [left, right] = std::ranges::minmax_element(curve, {}, &QPointF::x);
        const auto [lowest, highest] = std::ranges::minmax_element(curve, {}, &QPointF::y);
        diagram.xMin = left->x();
        diagram.xMax = right->x();
        diagram.yMin = lowest->y();
        diagram.yMax = highest->y();
    }
    return diagram;
}

void drawPolyline(const QList<QPointF>& points, Graphy* diagram)
{
    if (points.isEmpty()) {
        return;
    }
    const QPointF& first = points.constFirst();
    diagram->lineData(first.x(), first.y(), first.x(), first.y());
    for (const QPointF& point : points) {
        diagram->lineToData(point.x(), point.y());
    }
}

/// The curve over a line along y = 0.
void drawCurve(const QList<QPointF>& curve, Graphy* diagram)
{
    if (curve.isEmpty()) {
        return;
    }
    diagram->lineData(diagram->xMin, 0.0, diagram->xMax, 0.0);
    drawPolyline(curve, diagram);
}

/// The curve of which something else is shown above.
Graphy backgroundDiagram(const QList<QPointF>& xic)
{
    Graphy diagram = finderDiagram(xic);
    diagram.setStroke(0.9F, 0.5F, 0.7F, 0.05F);
    drawCurve(xic, &diagram);
    diagram.setStroke(0.0F, 0.0F, 0.0F, kOpaque);
    return diagram;
}

void drawFeatures(const FinderTrace& trace, Graphy* diagram)
{
    using Feature = SegmentationFeature;
    diagram->setFill(0.8F, 0.0F, 0.6F, 0.2F);
    for (const Feature& feature : trace.features) {
        const Interval<double>& span = feature.timeInterval();
        diagram->boxData(span.start, 0.0, span.end, feature.apex().y());
    }
    diagram->setStroke(1.0F, 0.0F, 0.0F, kOpaque);
    diagram->setFill(0.8F, 0.0F, 0.6F, 0.1F);
    const double span = diagram->yMax - diagram->yMin;
    for (const PeptideSpectrumMatch& psm : trace.psms) {
        diagram->circleData(psm.scanTimeMinutes(), 0.1 * span, 0.02 * span);
    }
    diagram->setStroke(0.0F, 0.0F, 1.0F, kOpaque);
    diagram->setFill(0.0F, 0.0F, 0.0F, 0.0F);
    for (const Feature& feature : trace.features) {
        const Interval<double>& halfMax = feature.halfMaxInterval();
        diagram->boxData(halfMax.start, 0.0, halfMax.end, feature.apex().y() * 0.5);
    }
}

void writeFeatureTexts(const FinderTrace& trace, Graphy* diagram)
{
    constexpr int firstWidthLine = 60;
    constexpr int lineHeight = 30;
    diagram->text(kTextLeft, kFirstLine, std::to_string(trace.features.size()) + " features");
    int y = firstWidthLine;
    for (const SegmentationFeature& feature : trace.features) {
        diagram->text(kTextLeft, y, labelled("FWHM: ", feature.FWHM(), " min"));
        y += lineHeight;
    }
}

// --- The alignment's diagrams

constexpr int kAlignmentWidth = 512; ///< pixels

Graphy alignmentDiagram(const QList<Ms1Feature*>& features)
{
    constexpr int rowHeight = 40; // pixels
    return {kAlignmentWidth, rowHeight * static_cast<int>(features.size())};
}

/// Whether the diagram has something to show; else a line is drawn that says that it has not.
bool hasContent(bool content, Graphy* diagram)
{
    if (!content) {
        constexpr int lineEnd = 400; // pixels
        diagram->line(0, 0, kAlignmentWidth, lineEnd);
    }
    return content;
}

/// What makes the greatest value 1.
double unitScale(double greatest)
{
    return greatest > 0.0 ? 1.0 / greatest : 1.0;
}

/// Every tenth sample of a curve, scaled to the row from y = `row` to `row` + 1.
void drawInRow(const QList<double>& curve, double start, double step, int row, Graphy* diagram)
{
    constexpr qsizetype stride = 10;
    const double scale = unitScale(*std::max_element(curve.cbegin(), curve.cend()));
    diagram->lineData(start, row, start, row);
    for (qsizetype i = 0; i < curve.size(); i += stride) {
        diagram->lineToData(start + static_cast<double>(i) * step, scale * curve[i] + row);
    }
}

/// Labels the whole minutes of the range at the height `y`.
void labelMinutes(double start, double end, double y, Graphy* diagram)
{
    constexpr qint64 maxCount = 100'000; // no run is that long; keeps odd times harmless
    diagram->setFill(0.0F, 0.0F, 0.0F, kOpaque);
    const qint64 first = MathUtils::truncateToInt(start);
    const qint64 last = std::min<qint64>(MathUtils::truncateToInt(end + 1.0), first + maxCount);
    for (qint64 minute = first; minute < last; ++minute) {
        diagram->textData(static_cast<double>(minute), y, std::to_string(minute));
    }
}

/// One sample's curve after its shift, with its intervals, minutes and peptide.
void drawShifted(const QList<double>& curve,
                 double shift,
                 const Ms1Feature& feature,
                 const SharedGrid& grid,
                 int row,
                 Graphy* diagram)
{
    constexpr double boxHeight = 0.25;
    constexpr double textHeight = 0.1;
    diagram->setStroke(0.0F, 0.0F, 0.0F, kOpaque);
    drawInRow(curve, grid.start + shift, grid.step, row, diagram);
    diagram->setFill(0.7F, 0.4F, 0.9F, 0.5F);
    const double offset = feature.warpOffset() + shift;
    for (const ApexInterval& part : feature.timeIntervalList()) {
        diagram->boxData(
            part.interval().start + offset, row, part.interval().end + offset, row + boxHeight);
    }
    labelMinutes(grid.start + shift, shift + grid.end, row + textHeight, diagram);
    const QList<PeptideSpectrumMatch> psms = feature.peptideSpectrumMatches();
    if (!psms.isEmpty()) {
        diagram->textData(
            grid.start, row + textHeight, psms.constFirst().peptideHash().toStdString());
    }
}

/// The hull of the XICs; (0, 0) when all are empty.
Interval<double> hullOf(const QList<Ms1Feature*>& features)
{
    std::optional<Interval<double>> hull;
    for (const Ms1Feature* feature : features) {
        const QList<QPointF>& points = feature->xicPlot().getPointList();
        if (!points.isEmpty()) {
            const double first = points.constFirst().x();
            const double last = points.constLast().x();
            hull = {hull ? std::min(hull->start, first) : first,
                    hull ? std::max(hull->end, last) : last};
        }
    }
    return hull.value_or(Interval<double>{0.0, 0.0});
}

void drawFeature(const Ms1Feature& feature, int row, Graphy* diagram)
{
    constexpr double minBoxHeight = 0.1;
    constexpr double textHeight = 0.1;
    const QList<QPointF>& points = feature.xicPlot().getPointList();
    const double scale = unitScale(feature.xicPlot().getMaxPoint().y());
    diagram->lineData(points.constFirst().x(), row, points.constFirst().x(), row);
    for (const QPointF& point : points) {
        diagram->lineToData(point.x(), scale * point.y() + row);
    }
    diagram->setFill(0.6F, 0.3F, 0.8F, 0.8F);
    for (const ApexInterval& part : feature.timeIntervalList()) {
        diagram->boxData(part.interval().start,
                         row,
                         part.interval().end,
                         row + std::max(part.apex().y() * scale, minBoxHeight));
    }
    labelMinutes(diagram->xMin, diagram->xMax, row + textHeight, diagram);
}

} // namespace

void appendFinderDiagrams(const FinderTrace& trace, const QString& title)
{
    const QList<QPointF>& points = trace.xic.getPointList();
    Graphy xic = finderDiagram(points);
    drawCurve(points, &xic);
    Graphy smoothed = finderDiagram(trace.smoothed);
    drawCurve(trace.smoothed, &smoothed);
    Graphy extremes = finderDiagram(points);
    Graphy features = finderDiagram(points);
    if (!points.isEmpty()) {
        xic.text(kTextLeft, kFirstLine, title.toStdString());
        extremes = backgroundDiagram(points);
        drawPolyline(trace.extremes, &extremes);
        features = backgroundDiagram(points);
        drawFeatures(trace, &features);
        writeFeatureTexts(trace, &features);
    }
    collect(std::move(xic));
    collect(std::move(smoothed));
    collect(std::move(extremes));
    collect(std::move(features));
}

void appendShiftedCurves(const QList<QList<double>>& plots,
                         const QList<int>& shifts,
                         const QList<Ms1Feature*>& features,
                         const SharedGrid& grid,
                         double correlation)
{
    constexpr int textPlace = 30; // pixels
    Graphy diagram = alignmentDiagram(features);
    diagram.xMin = grid.start;
    diagram.xMax = grid.end;
    diagram.yMax = static_cast<double>(plots.size()) + 0.5;
    if (hasContent(!features.isEmpty(), &diagram)) {
        const auto rowCount =
            static_cast<int>(std::min({plots.size(), shifts.size(), features.size()}));
        diagram.setStroke(0.8F, 0.1F, 0.2F, kOpaque);
        for (int row = 0; row < rowCount; ++row) {
            if (!plots[row].isEmpty()) {
                drawInRow(plots[row], grid.start, grid.step, row, &diagram);
            }
        }
        for (int row = 0; row < rowCount; ++row) {
            if (!plots[row].isEmpty()) {
                drawShifted(
                    plots[row], shifts[row] * grid.step, *features[row], grid, row, &diagram);
            }
        }
        diagram.setFill(1.0F, 0.0F, 0.0F, kOpaque);
        diagram.text(textPlace, textPlace, labelled("Correlation: ", correlation));
    }
    collect(std::move(diagram));
}

void appendSummedCurve(const QList<double>& summed,
                       const QList<Ms1Feature*>& features,
                       const SharedGrid& grid,
                       const Ms1Feature& summedFeature)
{
    constexpr double matchHeight = 0.06; // of the canvas
    constexpr double matchRadius = 0.02;
    Graphy diagram = alignmentDiagram(features);
    if (hasContent(!summed.isEmpty(), &diagram)) {
        diagram.xMin = grid.start;
        diagram.xMax = grid.end;
        diagram.yMax = *std::max_element(summed.cbegin(), summed.cend());
        diagram.lineData(grid.start, 0.0, grid.start, 0.0);
        for (qsizetype i = 0; i < summed.size(); ++i) {
            diagram.lineToData(grid.start + static_cast<double>(i) * grid.step, summed[i]);
        }
        labelMinutes(grid.start, grid.end, 0.0, &diagram);
        diagram.setFill(0.6F, 0.3F, 0.8F, 0.8F);
        for (const ApexInterval& part : summedFeature.timeIntervalList()) {
            diagram.boxData(part.interval().start, 0.0, part.interval().end, part.apex().y());
        }
        diagram.yMax = 1.0;
        diagram.setFill(1.0F, 0.0F, 0.0F, kOpaque);
        for (const Ms1Feature* feature : features) {
            for (const PeptideSpectrumMatch& psm : feature->peptideSpectrumMatches()) {
                diagram.circleData(
                    psm.scanTimeMinutes() + feature->warpOffset(), matchHeight, matchRadius);
            }
        }
    }
    collect(std::move(diagram));
}

void appendFeatures(const QList<Ms1Feature*>& features)
{
    constexpr double marginShare = 0.05;
    constexpr int columns = 3;
    Graphy diagram = alignmentDiagram(features);
    const Interval<double> hull = hullOf(features);
    const double margin = (hull.end - hull.start) * marginShare;
    diagram.xMin = std::max(hull.start - margin, 0.0);
    diagram.xMax = hull.end + margin;
    diagram.yMax = static_cast<double>(features.size()) + 0.5;
    int row = 0;
    for (const Ms1Feature* feature : features) {
        if (!feature->xicPlot().getPointList().isEmpty()) {
            drawFeature(*feature, row, &diagram);
            ++row;
        }
    }
    GraphyCollection::instance().append(std::move(diagram), "FeatureRefinerAlignment", columns);
}

} // namespace zel::diagrams
