#include "tools/zel/cli/CommandLine.h"

#include <QRegularExpression>

#include <optional>

namespace zel::tool {

namespace {

using TimeSet = math::ClosedMultiInterval<double, 6>;

/// The range, or nothing unless the text is "A-B".
std::optional<Interval<double>> splitRange(const std::string& text)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\s*([0-9.]+(?:[eE][-+]?[0-9]+)?)\s*-\s*([0-9.]+(?:[eE][-+]?[0-9]+)?)\s*$)"));
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    bool startOk = false;
    bool endOk = false;
    const double start = match.captured(1).toDouble(&startOk);
    const double end = match.captured(2).toDouble(&endOk);
    return startOk && endOk ? std::optional(Interval<double>{start, end}) : std::nullopt;
}

/// Accepts "A-B" with A <= B. \param what  what the range is of, in the error text
CLI::Validator rangeValidator(const std::string& what)
{
    return {[what](std::string& text) -> std::string {
                const auto range = splitRange(text);
                if (!range) {
                    return "expected a range of " + what + " A-B, but found \"" + text + '"';
                }
                return range->start <= range->end
                           ? std::string()
                           : "the range of " + what + ' ' + text + " ends before it starts";
            },
            "A-B"};
}

} // namespace

CLI::Validator timeRangeValidator()
{
    return rangeValidator("times");
}

CLI::Validator mzRangeValidator()
{
    const CLI::Validator isPositive(
        [](std::string& text) {
            return splitRange(text)->end > 0.0
                       ? std::string()
                       : "the range of m/z " + text + " holds no m/z above 0";
        },
        "");
    return rangeValidator("m/z") & isPositive;
}

Interval<double> parseMzRange(const std::string& text)
{
    return splitRange(text).value_or(Interval<double>());
}

TimeSet parseTimeRange(const std::string& text)
{
    const auto range = splitRange(text);
    return range ? TimeSet(range->start, range->end) : TimeSet();
}

Error checkHasMsLevel(msreader::MsDataSourceInterface* source, const QString& path, int msLevel)
{
    ZEL_ASSIGN_OR_RETURN(const auto ids,
                         source->scanIds(msreader::MsQuery::createByMsLevel(msLevel)));
    if (ids.isEmpty()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1 holds no scans of MS level %2").arg(path, QString::number(msLevel)));
    }
    return kNoError;
}

} // namespace zel::tool
