#include "tools/zel/cli/CommandLine.h"

#include <QRegularExpression>

#include <algorithm>
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
            ""};
}

/// Accepts what settingFromText accepts. \param description  what that is, for help
CLI::Validator isSetting(const SettingValue& like,
                         const SettingLimits& limits,
                         const std::string& description)
{
    return {[like, limits](std::string& text) -> std::string {
                const auto value = settingFromText(QString::fromStdString(text), like, limits);
                return value.isOk() ? std::string() : value.error().message().toStdString();
            },
            description};
}

std::string namesText(const std::vector<std::string>& choices)
{
    return '{' + CLI::detail::join(choices, ",") + '}';
}

/// What stands for the value in help; for choices their names.
std::string valueText(const SettingValue& like, const SettingLimits& limits)
{
    if (!limits.choices.empty()) {
        std::vector<std::string> names;
        for (const SettingChoice& choice : limits.choices) {
            names.emplace_back(choice.name);
        }
        return namesText(names);
    }
    return std::holds_alternative<bool>(like)            ? "{true,false}"
           : std::holds_alternative<double>(like)        ? "NUMBER"
           : std::holds_alternative<QString>(like)       ? "FILE"
           : std::holds_alternative<QList<double>>(like) ? "NUMBER,..."
                                                         : "N";
}

} // namespace

CLI::Validator isNumber(const SettingLimits& limits)
{
    return isSetting(0.0, limits, settingRangeText(limits).toStdString());
}

CLI::Validator isWholeNumber(int lowest, int highest)
{
    const SettingLimits limits = {double(lowest), double(highest)};
    return isSetting(0, limits, settingRangeText(limits).toStdString());
}

CLI::Validator isTruth()
{
    return isSetting(true, {}, "{true,false}");
}

CLI::Validator isOneOf(const std::vector<std::string>& choices)
{
    return {[choices](std::string& text) -> std::string {
                return std::ranges::find(choices, text) != choices.end()
                           ? std::string()
                           : "expected one of " + CLI::detail::join(choices, ", ") +
                                 ", but found \"" + text + '"';
            },
            namesText(choices)};
}

CLI::Option* addSettingOption(CLI::App& command,
                              const OptionText& text,
                              const SettingValue& like,
                              const SettingLimits& limits)
{
    const auto keepText = [](const CLI::results_t&) { return true; };
    CLI::Option* const option =
        command.add_option(text.names, CLI::callback_t(keepText), text.meaning)
            ->type_name(valueText(like, limits))
            ->check(isSetting(like, limits, settingRangeText(limits).toStdString()));
    if (std::holds_alternative<QList<double>>(like)) {
        option->expected(1, CLI::detail::expected_max_vector_size)
            ->allow_extra_args(false)
            ->delimiter(',');
    }
    return option;
}

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
