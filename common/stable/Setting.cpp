#include "common/stable/Setting.h"

#include "common/stable/NumberText.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <optional>

namespace zel {

namespace {

/// As roundTripText, but without an exponent where a whole number can be read more easily.
QString numberText(double number)
{
    constexpr double longest = 1e12;
    return number == std::trunc(number) && std::abs(number) <= longest
               ? QString::number(static_cast<qint64>(number))
               : QString::fromLatin1(roundTripText(number));
}

QString listText(const QList<double>& numbers)
{
    QStringList texts;
    for (const double number : numbers) {
        texts.append(numberText(number));
    }
    return texts.join(QLatin1Char(','));
}

QString choiceNames(const SettingLimits& limits)
{
    QStringList names;
    for (const SettingChoice& choice : limits.choices) {
        names.append(QString::fromLatin1(choice.name));
    }
    return names.join(QStringLiteral(", "));
}

/// "a number from 0 to 1": what a setting takes.
QString expectation(const SettingValue& like, const SettingLimits& limits)
{
    if (!limits.choices.empty()) {
        return QStringLiteral("one of %1").arg(choiceNames(limits));
    }
    const auto kind = std::visit(
        [](const auto& value) {
            using Value = std::decay_t<decltype(value)>;
            return std::is_same_v<Value, bool>            ? "true or false"
                   : std::is_same_v<Value, double>        ? "a number"
                   : std::is_same_v<Value, QString>       ? "text"
                   : std::is_same_v<Value, QList<double>> ? "numbers parted by commas"
                                                          : "a whole number";
        },
        like);
    const QString range = settingRangeText(limits);
    const char* const joint = range.isEmpty()                      ? ""
                              : range.startsWith(QLatin1Char('a')) ? " " // above, at least, at most
                                                                   : " from ";
    return QLatin1StringView(kind) + QLatin1StringView(joint) + range;
}

std::optional<SettingValue> truthFromText(const QString& text)
{
    static const QStringList yes = {
        QStringLiteral("true"), QStringLiteral("yes"), QStringLiteral("on"), QStringLiteral("1")};
    static const QStringList no = {
        QStringLiteral("false"), QStringLiteral("no"), QStringLiteral("off"), QStringLiteral("0")};
    if (yes.contains(text, Qt::CaseInsensitive)) {
        return SettingValue(true);
    }
    return no.contains(text, Qt::CaseInsensitive) ? std::optional(SettingValue(false))
                                                  : std::nullopt;
}

std::optional<SettingValue> listFromText(const QString& text)
{
    QList<double> numbers;
    for (const QString& item : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        numbers.append(item.toDouble(&isNumber));
        if (!isNumber) {
            return std::nullopt;
        }
    }
    return SettingValue(numbers);
}

std::optional<SettingValue> choiceFromText(const QString& text, const SettingLimits& limits)
{
    for (const SettingChoice& choice : limits.choices) {
        if (text == QLatin1StringView(choice.name)) {
            return SettingValue(choice.value);
        }
    }
    return std::nullopt;
}

std::optional<SettingValue> valueFromText(const QString& text,
                                          const SettingValue& like,
                                          const SettingLimits& limits)
{
    if (!limits.choices.empty()) {
        return choiceFromText(text, limits);
    }
    return std::visit(
        [&text](const auto& value) -> std::optional<SettingValue> {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, bool>) {
                return truthFromText(text);
            } else if constexpr (std::is_same_v<Value, QString>) {
                return SettingValue(text);
            } else if constexpr (std::is_same_v<Value, QList<double>>) {
                return listFromText(text);
            } else {
                bool isRead = false;
                SettingValue read;
                if constexpr (std::is_same_v<Value, int>) {
                    read = text.toInt(&isRead);
                } else if constexpr (std::is_same_v<Value, double>) {
                    read = text.toDouble(&isRead);
                } else {
                    read = std::uint64_t(text.toULongLong(&isRead));
                }
                return isRead ? std::optional(read) : std::nullopt;
            }
        },
        like);
}

bool isWithinRange(double number, const SettingLimits& limits)
{
    return std::isfinite(number) && limits.lowest <= number && number <= limits.highest;
}

} // namespace

QString settingOption(const char* name)
{
    QString option;
    for (const QChar letter : QString::fromLatin1(name).section(QLatin1Char('.'), -1)) {
        option += letter.isUpper() ? QLatin1Char('-') + QString(letter.toLower()) : QString(letter);
    }
    return option;
}

QString settingText(const SettingValue& value, const SettingLimits& limits)
{
    return std::visit(
        [&limits](const auto& held) -> QString {
            using Value = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Value, bool>) {
                return held ? QStringLiteral("true") : QStringLiteral("false");
            } else if constexpr (std::is_same_v<Value, QString>) {
                return held;
            } else if constexpr (std::is_same_v<Value, QList<double>>) {
                return listText(held);
            } else if constexpr (std::is_same_v<Value, double>) {
                return numberText(held);
            } else {
                for (const SettingChoice& choice : limits.choices) {
                    if (std::cmp_equal(choice.value, held)) {
                        return QString::fromLatin1(choice.name);
                    }
                }
                return QString::number(held);
            }
        },
        value);
}

QString settingRangeText(const SettingLimits& limits)
{
    const bool isOpenBelow = std::isinf(limits.lowest);
    const bool isOpenAbove = std::isinf(limits.highest);
    if (isOpenBelow && isOpenAbove) {
        return {};
    }
    if (isOpenBelow) {
        return QStringLiteral("at most %1").arg(numberText(limits.highest));
    }
    const bool isAboveZero = limits.lowest == SettingLimits::kAboveZero;
    if (isOpenAbove) {
        return isAboveZero ? QStringLiteral("above 0")
                           : QStringLiteral("at least %1").arg(numberText(limits.lowest));
    }
    return isAboveZero ? QStringLiteral("above 0, at most %1").arg(numberText(limits.highest))
                       : QStringLiteral("%1 to %2")
                             .arg(numberText(limits.lowest), numberText(limits.highest));
}

bool isWithin(const SettingValue& value, const SettingLimits& limits)
{
    return std::visit(
        [&limits](const auto& held) {
            using Value = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Value, bool> || std::is_same_v<Value, QString>) {
                return true;
            } else if constexpr (std::is_same_v<Value, QList<double>>) {
                return std::ranges::all_of(
                    held, [&limits](double number) { return isWithinRange(number, limits); });
            } else {
                return isWithinRange(static_cast<double>(held), limits);
            }
        },
        value);
}

Result<SettingValue> settingFromText(const QString& text,
                                     const SettingValue& like,
                                     const SettingLimits& limits)
{
    std::optional<SettingValue> value = valueFromText(text, like, limits);
    if (!value || !isWithin(*value, limits)) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("expected %1, but found \"%2\"").arg(expectation(like, limits), text));
    }
    return *std::move(value);
}

} // namespace zel
