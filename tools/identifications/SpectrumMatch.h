#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace zel::identifications {

/// One match of a peptide ion to a fragment spectrum, as a file has it. A plain value.
struct SpectrumMatch
{
    QString run;           ///< the run's file, with or without folder and suffix; empty: not given
    QString sequence;      ///< one-letter codes in capitals
    QString modifications; ///< "label/mass shift" items, see sumOfMassShifts; empty for none
    int charge = 0;        ///< at least 1
    double mz = 0.0;       ///< calculated m/z of the monoisotopic peak
    std::optional<double> rtMinutes; ///< time of the fragment spectrum, where the file gives it
    QString spectrumId;              ///< the spectrum's own identifier in its run; may be empty
    double score = 0.0;              ///< larger is better
    QString place;                   ///< file and line or item, for messages
};

/// What a file of spectrum matches holds.
struct SpectrumMatchFile
{
    QList<SpectrumMatch> matches; ///< in the order of the file
    QStringList unknownColumns;   ///< of a table, which were not read
};

} // namespace zel::identifications
