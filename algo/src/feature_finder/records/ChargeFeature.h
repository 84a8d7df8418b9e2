#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <climits>

class QJsonObject;
class QString;

namespace zel {

class StringifierState;

/// One charge state of one compound, with its limits along retention (D1) and mobility (D2).
///
/// D1 values are scan or frame numbers, or minutes once a finder has converted them, which is why
/// they are real numbers. A plain value; -1 stands for what a finder does not determine.
struct ZEL_EXPORT ChargeFeature
{
    double mzApexOfCluster = -1.0;  ///< m/z of the isotope peak on which the cluster was found
    double mzFirstOfCluster = -1.0; ///< m/z of the monoisotopic hill
    double monoIsotopicMass = -1.0; ///< neutral monoisotopic mass, Da
    int apexIntensity = -1;         ///< intensity at the apex, cut to a whole number
    double averagineScore = -1.0;   ///< correlation of the cluster with the averagine pattern
    double startD1 = -1.0;
    double endD1 = -1.0;
    double apexD1 = -1.0;
    double startD2 = -1.0;
    double endD2 = -1.0;
    double apexD2 = -1.0;
    int isotopeCount = -1; ///< isotope peaks matched
    int charge = -1;
    int apexIndex = -1;       ///< running index, where a stage sets one
    int monoOffset = INT_MIN; ///< isotope steps from the monoisotopic peak up to `mzApexOfCluster`

    /// One flat object of 15 members, named as the fields.
    QJsonObject toJson() const;

    /// Reads the members in the order of their names.
    /// \return kError when the object has a member beyond the 15; the failure of JsonUtils for the
    /// first one that is missing or of another type. Members read before it keep their new values.
    Error fromJson(const QJsonObject& object);

    /// The object as indented JSON text.
    QString serialize() const;

    /// \return kBadParameterError when the text is not that of a JSON object, else as `fromJson`
    Error deserialize(const QString& text);
};

/// Compares real fields by MathUtils::nearlyEqual, whole ones exactly.
ZEL_EXPORT bool operator==(const ChargeFeature& a, const ChargeFeature& b);

/// One line for each field, in the order of the record.
ZEL_EXPORT QString stringify(const ChargeFeature& feature, const StringifierState& state);

} // namespace zel
