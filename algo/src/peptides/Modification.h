#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QList>
#include <QString>

class QJsonArray;
class QJsonObject;

namespace zel {

/// A modification of a residue, as lists of peptides carry it. A plain value.
struct ZEL_EXPORT Modification
{
    QString name;
    QString site;      ///< the residue, or other place, that it sits on
    double mass = 0.0; ///< mass difference, Da
    int location = -1; ///< position in the peptide; -1: not given

    /// The members "name", "site", "mass" and "location".
    QJsonObject toJson() const;

    /// Reads the members; without "location" the field stays as it was.
    /// \return the failure of JsonUtils for the first member that is missing or of another type;
    ///         those read before keep their new values
    Error fromJson(const QJsonObject& object);
};

/// Masses are compared by MathUtils::nearlyEqual.
ZEL_EXPORT bool operator==(const Modification& a, const Modification& b);

/// A modification and how many times a peptide carries it.
struct ZEL_EXPORT ModificationWithCount
{
    int count = 0;
    Modification modification;

    /// `count` times the mass of the modification, Da.
    double totalMass() const { return count * modification.mass; }

    /// The members "count" and "modification".
    QJsonObject toJson() const;
    /// \return as Modification::fromJson
    Error fromJson(const QJsonObject& object);

    bool operator==(const ModificationWithCount& other) const = default;
};

/// The modifications of a peptide.
struct ZEL_EXPORT Modifications
{
    QList<ModificationWithCount> modifications;

    void addModificationWithCount(const ModificationWithCount& modification);

    /// The sum of the total masses, Da; 0 without any.
    double totalMass() const;

    QJsonArray toJson() const;
    /// Replaces the list.
    /// \return the failure of the first element that cannot be read; those before it are in the
    ///         list
    Error fromJson(const QJsonArray& array);

    bool operator==(const Modifications& other) const = default;
};

} // namespace zel
