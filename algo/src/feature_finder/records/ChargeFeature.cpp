#include "feature_finder/records/ChargeFeature.h"

#include "common/stable/JsonText_p.h"
#include "common/stable/JsonUtils.h"
#include "common/stable/MathUtils.h"
#include "common/stable/Stringify.h"

#include <QTextStream>

#include <algorithm>
#include <array>
#include <string_view>

namespace zel {

namespace {

/// One field of the record: its name in texts, and one of the two members.
struct Field
{
    std::string_view name;
    double ChargeFeature::*real = nullptr;
    int ChargeFeature::*whole = nullptr;

    constexpr Field(std::string_view fieldName, double ChargeFeature::*member)
        : name(fieldName)
        , real(member)
    {}
    constexpr Field(std::string_view fieldName, int ChargeFeature::*member)
        : name(fieldName)
        , whole(member)
    {}

    QString key() const
    {
        return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
    }
};

constexpr std::array kFields = {
    Field("mzApexOfCluster", &ChargeFeature::mzApexOfCluster),
    Field("mzFirstOfCluster", &ChargeFeature::mzFirstOfCluster),
    Field("monoIsotopicMass", &ChargeFeature::monoIsotopicMass),
    Field("apexIntensity", &ChargeFeature::apexIntensity),
    Field("averagineScore", &ChargeFeature::averagineScore),
    Field("startD1", &ChargeFeature::startD1),
    Field("endD1", &ChargeFeature::endD1),
    Field("apexD1", &ChargeFeature::apexD1),
    Field("startD2", &ChargeFeature::startD2),
    Field("endD2", &ChargeFeature::endD2),
    Field("apexD2", &ChargeFeature::apexD2),
    Field("isotopeCount", &ChargeFeature::isotopeCount),
    Field("charge", &ChargeFeature::charge),
    Field("apexIndex", &ChargeFeature::apexIndex),
    Field("monoOffset", &ChargeFeature::monoOffset),
};

constexpr auto kFieldsByName = [] {
    auto sorted = kFields;
    std::sort(sorted.begin(), sorted.end(), [](const Field& a, const Field& b) {
        return a.name < b.name;
    });
    return sorted;
}();

Error checkKeysAreKnown(const QJsonObject& object)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        const bool isKnown =
            std::any_of(kFields.begin(), kFields.end(), [key = member.key()](const Field& field) {
                return field.key() == key;
            });
        if (!isKnown) {
            ZEL_RETURN_ERROR(kError,
                             "can't validate keys in ChargeFeature json; possible schema change, "
                             "keys added/removed");
        }
    }
    return kNoError;
}

Error readField(const QJsonObject& object, const Field& field, ChargeFeature* feature)
{
    if (field.real != nullptr) {
        ZEL_ASSIGN_OR_RETURN(feature->*field.real, JsonUtils::doubleValue(object, field.key()));
    } else {
        ZEL_ASSIGN_OR_RETURN(feature->*field.whole, JsonUtils::intValue(object, field.key()));
    }
    return kNoError;
}

} // namespace

bool operator==(const ChargeFeature& a, const ChargeFeature& b)
{
    return std::all_of(kFields.begin(), kFields.end(), [&a, &b](const Field& field) {
        return field.real != nullptr ? MathUtils::nearlyEqual(a.*field.real, b.*field.real)
                                     : a.*field.whole == b.*field.whole;
    });
}

QJsonObject ChargeFeature::toJson() const
{
    QJsonObject object;
    for (const Field& field : kFields) {
        object.insert(field.key(),
                      field.real != nullptr ? QJsonValue(this->*field.real)
                                            : QJsonValue(this->*field.whole));
    }
    return object;
}

Error ChargeFeature::fromJson(const QJsonObject& object)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkKeysAreKnown(object));
    for (const Field& field : kFieldsByName) {
        ZEL_RETURN_IF_ERROR(readField(object, field, this));
    }
    return e;
}

QString ChargeFeature::serialize() const
{
    return jsonText(toJson());
}

Error ChargeFeature::deserialize(const QString& text)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonObject object, parseJsonObject(text));
    ZEL_RETURN_IF_ERROR(fromJson(object));
    return e;
}

QString stringify(const ChargeFeature& feature, const StringifierState& state)
{
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberPrecision(state.realNumberPrecision(stream.realNumberPrecision()));
    for (const Field& field : kFields) {
        stream << '\n' << state.newLinePrefix() << field.key() << ':';
        if (field.real != nullptr) {
            stream << feature.*field.real;
        } else {
            stream << feature.*field.whole;
        }
    }
    return text;
}

} // namespace zel
