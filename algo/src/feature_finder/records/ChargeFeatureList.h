#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "feature_finder/records/ChargeFeature.h"

#include <QList>

namespace zel {

/// Charge features with a JSON form: one object with the members "feature1", "feature2", ...
///
/// Reading the text walks these members by their sorted names ("feature1", "feature10",
/// "feature2"), so a list of more than nine comes back in another order.
class ZEL_EXPORT ChargeFeatureList
{
public:
    ChargeFeatureList() = default;
    explicit ChargeFeatureList(const QList<ChargeFeature>& features)
        : m_features(features)
    {}

    void addChargeFeature(const ChargeFeature& feature) { m_features.append(feature); }
    void clear() { m_features.clear(); }
    int size() const { return static_cast<int>(m_features.size()); }
    QList<ChargeFeature> chargeFeatures() const { return m_features; }

    /// As many features, equal one by one.
    friend bool operator==(const ChargeFeatureList& a, const ChargeFeatureList& b)
    {
        return a.m_features == b.m_features;
    }

    /// The list as indented JSON text.
    QString serialize() const;

    /// Replaces the list.
    /// \return kBadParameterError, with the list as it was, when the text is not that of a JSON
    /// object. kError for a member whose name does not contain "feature", and the failure of
    /// ChargeFeature::fromJson for one that is no charge feature; the list then holds those before.
    Error deserialize(const QString& text);

private:
    QJsonObject toJson() const;
    Error fromJson(const QJsonObject& object);

    QList<ChargeFeature> m_features;
};

} // namespace zel
