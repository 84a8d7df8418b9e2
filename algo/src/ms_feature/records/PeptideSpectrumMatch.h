#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QPointF>
#include <QString>

namespace zel {

/// One identification of a peptide ion in a fragment spectrum, with what finding its MS1 feature
/// needs. A plain value.
///
/// A match is wild type when its modification text is empty. A modified match names the form
/// without modifications by `wtPeptideHash` and `wtCalcMr`, which the caller sets.
class ZEL_EXPORT PeptideSpectrumMatch
{
public:
    PeptideSpectrumMatch() = default;
    PeptideSpectrumMatch(const PeptideSpectrumMatch&) = default;
    PeptideSpectrumMatch(PeptideSpectrumMatch&&) = default;
    PeptideSpectrumMatch& operator=(const PeptideSpectrumMatch&) = default;
    PeptideSpectrumMatch& operator=(PeptideSpectrumMatch&&) = default;
    virtual ~PeptideSpectrumMatch();

    /// The residues of the peptide.
    QString sequence() const { return m_sequence; }
    void setSequence(const QString& sequence) { m_sequence = sequence; }

    /// The peptide hash of the form without modifications.
    QString wtPeptideHash() const { return m_wtPeptideHash; }
    void setWtPeptideHash(const QString& hash) { m_wtPeptideHash = hash; }

    /// The time of the fragment spectrum. Stored in seconds; in minutes for the algorithms.
    double scanTimeSeconds() const { return m_scanTimeSeconds; }
    void setScanTimeSeconds(double seconds) { m_scanTimeSeconds = seconds; }
    double scanTimeMinutes() const;
    void setScanTimeMinutes(double minutes);

    /// The calculated m/z of the ion.
    double calcMz() const { return m_calcMz; }
    void setCalcMz(double mz) { m_calcMz = mz; }

    /// The charge of the ion; negative for one that lost protons.
    int charge() const { return m_charge; }
    void setCharge(int charge) { m_charge = charge; }

    /// The modifications: items separated by ";", an item being a label and a mass shift in Da,
    /// separated by "/". Empty for a peptide without modifications.
    QString tarnicStyleMods() const { return m_tarnicStyleMods; }
    void setTarnicStyleMods(const QString& mods) { m_tarnicStyleMods = mods; }

    /// The neutral mass of the form without modifications, Da. The isotope to extract is chosen by
    /// it.
    double wtCalcMr() const { return m_wtCalcMr; }
    void setWtCalcMr(double massDa) { m_wtCalcMr = massDa; }

    /// The XIC apex assigned to this match: (minutes, intensity).
    QPointF apex() const { return m_apex; }
    void setApex(const QPointF& apex) { m_apex = apex; }

    /// The identification score; larger is better.
    double score() const { return m_score; }
    void setScore(double score) { m_score = score; }

    /// The neutral mass by m/z and charge, Da; 0 for charge 0.
    double calcMr() const;

    bool isWildType() const { return m_tarnicStyleMods.isEmpty(); }
    /// True when no hash of a form without modifications is set: the match is its own such form.
    bool hasWildType() const { return m_wtPeptideHash.isEmpty(); }

    /// The identity of a peptide ion as a text, "<sequence>:<mods>:<mass>:<charge>" with 4 decimals
    /// of the mass. The fields are filled in one after the other, so that a "%2" inside the
    /// sequence, or a "%3" inside the modifications, is taken for a field too.
    static QString toHash(const QString& sequence, const QString& mods, double mass, int charge);
    QString peptideHash() const;
    /// The hash with charge 0: alike for all charge states, up to the rounding of the mass.
    QString unchargedPeptideHash() const;

    /// The distance of neighbouring isotope peaks, Th; positive for either sign of the charge.
    /// \return kError for charge 0; `spacing` is then unchanged
    Error getIsotopeMzSpacing(double* spacing) const;

    /// The m/z of the peak that lies `isotope` steps above `calcMz`.
    /// \return kError for charge 0 or a spacing below 0.001 Th; `mz` is then unchanged
    Error getIsotopeMz(int isotope, double* mz) const;

    // Strict orders, ascending; a max_element over one yields the first of several equal ones.
    static bool cmpApexIntensity(const PeptideSpectrumMatch& a, const PeptideSpectrumMatch& b);
    static bool cmpScanTime(const PeptideSpectrumMatch& a, const PeptideSpectrumMatch& b);
    static bool cmpScore(const PeptideSpectrumMatch& a, const PeptideSpectrumMatch& b);

private:
    QString m_sequence;
    QString m_wtPeptideHash = QLatin1String("");
    double m_scanTimeSeconds = 0.0;
    double m_calcMz = 0.0;
    int m_charge = 0;
    QString m_tarnicStyleMods = QLatin1String("");
    double m_wtCalcMr = 0.0;
    QPointF m_apex;
    double m_score = 0.0;
};

} // namespace zel
