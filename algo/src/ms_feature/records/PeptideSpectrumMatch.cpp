#include "ms_feature/records/PeptideSpectrumMatch.h"

#include "common/stable/PhysicalConstants.h"
#include "common/stable/SharedNumbers.h"

#include <cmath>

namespace zel {

PeptideSpectrumMatch::~PeptideSpectrumMatch() = default;

double PeptideSpectrumMatch::scanTimeMinutes() const
{
    return m_scanTimeSeconds / kSecondsPerMinute;
}

void PeptideSpectrumMatch::setScanTimeMinutes(double minutes)
{
    m_scanTimeSeconds = minutes * kSecondsPerMinute;
}

double PeptideSpectrumMatch::calcMr() const
{
    return std::abs(static_cast<double>(m_charge)) * m_calcMz - m_charge * kProtonMassDa;
}

QString PeptideSpectrumMatch::toHash(const QString& sequence,
                                     const QString& mods,
                                     double mass,
                                     int charge)
{
    constexpr auto blank = QLatin1Char(' ');
    return QStringLiteral("%1:%2:%3:%4")
        .arg(sequence, 0, blank)
        .arg(mods, 0, blank)
        .arg(mass, 0, 'f', 4, blank)
        .arg(charge, 0, 10, blank);
}

QString PeptideSpectrumMatch::peptideHash() const
{
    return toHash(m_sequence, m_tarnicStyleMods, calcMr(), m_charge);
}

QString PeptideSpectrumMatch::unchargedPeptideHash() const
{
    return toHash(m_sequence, m_tarnicStyleMods, calcMr(), 0);
}

Error PeptideSpectrumMatch::getIsotopeMzSpacing(double* spacing) const
{
    if (m_charge == 0) {
        ZEL_RETURN_ERROR(kError, "An ion of charge 0 has no isotope spacing");
    }
    *spacing = std::abs(kCarbonIsotopeSpacingDa / m_charge);
    return kNoError;
}

Error PeptideSpectrumMatch::getIsotopeMz(int isotope, double* mz) const
{
    constexpr double minSpacing = 0.001; // Th
    Error e;
    double spacing = 0.0;
    ZEL_RETURN_IF_ERROR(getIsotopeMzSpacing(&spacing));
    if (spacing < minSpacing) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("Isotopes at charge %1 lie closer than %2 Th")
                             .arg(m_charge)
                             .arg(minSpacing));
    }
    *mz = m_calcMz + isotope * spacing;
    return e;
}

bool PeptideSpectrumMatch::cmpApexIntensity(const PeptideSpectrumMatch& a,
                                            const PeptideSpectrumMatch& b)
{
    return b.m_apex.y() > a.m_apex.y();
}

bool PeptideSpectrumMatch::cmpScanTime(const PeptideSpectrumMatch& a, const PeptideSpectrumMatch& b)
{
    return b.m_scanTimeSeconds > a.m_scanTimeSeconds;
}

bool PeptideSpectrumMatch::cmpScore(const PeptideSpectrumMatch& a, const PeptideSpectrumMatch& b)
{
    return b.m_score > a.m_score;
}

} // namespace zel
