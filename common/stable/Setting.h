#pragma once

#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <variant>

namespace zel {

// A setting is a field of a record, described once: its row in the record's table. Options, help,
// dumps, configuration files and documents are made from these rows.

/// A value of an enumeration, and its name for users.
struct SettingChoice
{
    const char* name;
    int value;
};

/// What a setting takes. Both ends of a range are included.
struct SettingLimits
{
    /// The lower end of a range that leaves out 0 alone.
    static constexpr double kAboveZero = std::numeric_limits<double>::denorm_min();

    double lowest = -std::numeric_limits<double>::infinity();
    double highest = std::numeric_limits<double>::infinity();
    std::span<const SettingChoice> choices = {}; ///< of an enumeration
};

/// The value of a field; an enumeration counts as `int`.
using SettingValue = std::variant<bool, int, std::uint64_t, double, QString, QList<double>>;

/// A field that is reached through functions.
template <typename Record, typename Value>
struct SettingProperty
{
    Value (*get)(const Record&);
    void (*set)(Record&, const Value&);
};

/// How the field of a setting is reached in its record.
template <typename Record>
using SettingField = std::variant<bool& (*)(Record&),
                                  int& (*)(Record&),
                                  std::uint64_t& (*)(Record&),
                                  double& (*)(Record&),
                                  QString& (*)(Record&),
                                  SettingProperty<Record, int>,
                                  SettingProperty<Record, QList<double>>>;

/// Which of a record's users read a setting: a bit for each, in the order of SettingTable::readers.
using SettingReaders = unsigned;

template <typename Record>
struct Setting
{
    const char* name; ///< of the field, with the records that it lies in: "inner.field"
    SettingField<Record> field;
    const char* group = ""; ///< heading that it stands under
    const char* meaning = "";
    const char* unit = ""; ///< "" for plain numbers
    SettingLimits limits = {};
    SettingReaders readBy = ~SettingReaders(0);
    /// The option of a command, without hyphens in front; null: made from the field's name. Several
    /// names are parted by commas, and an empty text stands for no option.
    const char* option = nullptr;
};

/// Name and access of a field, the first two members of a Setting. `Record` must name its record.
#define ZEL_SETTING(path)                                                                          \
    .name = #path, .field = +[](Record & record) -> auto&                                          \
    {                                                                                              \
        return record.path;                                                                        \
    }

/// The same for a field that is an enumeration.
#define ZEL_ENUM_SETTING(path)                                                                     \
    .name = #path, .field = SettingProperty<Record, int>                                           \
    {                                                                                              \
        [](const Record& record) { return static_cast<int>(record.path); },                        \
            [](Record& record, const int& value) {                                                 \
                record.path = static_cast<decltype(record.path)>(value);                           \
            }                                                                                      \
    }

/// All settings of a record in the order in which users read them.
template <typename Record>
struct SettingTable
{
    std::span<const Setting<Record>> settings;
    std::span<const char* const> readers; ///< names of the bits of Setting::readBy
};

/// "min-mono-mass" for "minMonoMass", "min-skew" for "inner.minSkew".
ZEL_EXPORT QString settingOption(const char* name);

/// The value as text that settingFromText() reads back.
ZEL_EXPORT QString settingText(const SettingValue& value, const SettingLimits& limits = {});

/// What lies within the limits: "0 to 1", "at least 0", "above 0"; nothing without limits.
ZEL_EXPORT QString settingRangeText(const SettingLimits& limits);

/// \param like  a value of the wanted type
/// \return kBadParameterError that says what was expected and what was found: for text of another
/// type, and for values outside the limits, NaN and infinities among them
ZEL_EXPORT Result<SettingValue> settingFromText(const QString& text,
                                                const SettingValue& like,
                                                const SettingLimits& limits);

template <typename Record>
SettingValue settingValue(const Setting<Record>& setting, Record record)
{
    return std::visit(
        [&record](const auto& field) -> SettingValue {
            if constexpr (requires { field.get(record); }) {
                return field.get(record);
            } else {
                return field(record);
            }
        },
        setting.field);
}

/// Sets the field to a value of the type that settingValue() gives.
template <typename Record>
void setSetting(const Setting<Record>& setting, const SettingValue& value, Record* record)
{
    std::visit(
        [&](const auto& field) {
            if constexpr (requires { field.get(*record); }) {
                field.set(*record, std::get<decltype(field.get(*record))>(value));
            } else {
                auto& target = field(*record);
                target = std::get<std::remove_reference_t<decltype(target)>>(value);
            }
        },
        setting.field);
}

/// Sets the field from text; see settingFromText for failures, which leave the record as it was.
template <typename Record>
Error setSettingFromText(const Setting<Record>& setting, const QString& text, Record* record)
{
    ZEL_ASSIGN_OR_RETURN(const SettingValue value,
                         settingFromText(text, settingValue(setting, *record), setting.limits));
    setSetting(setting, value, record);
    return kNoError;
}

/// Whether a number lies within its limits.
ZEL_EXPORT bool isWithin(const SettingValue& value, const SettingLimits& limits);

} // namespace zel
