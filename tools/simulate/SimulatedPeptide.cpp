#include "tools/simulate/SimulatedPeptide.h"

#include "chemical_model/ChemicalFactory.h"
#include "common/stable/PhysicalConstants.h"
#include "common/stable/SharedNumbers.h"
#include "tools/simulate/PeptideSampling.h"
#include "tools/simulate/RandomStream.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <optional>

namespace zel::simulate {

namespace {

/// What lies between a limit of the run and the apexes, so that every peak is seen whole.
struct Margins
{
    double before; ///< minutes
    double after;  ///< minutes
};

double widthAtHalfHeight(const EmgPeak& shape)
{
    return shape.end(0.5) - shape.start(0.5);
}

Margins marginsOf(const SimulationSettings& settings)
{
    // The random numbers that make width and jitter end at three standard deviations. A Gaussian
    // has 1e-6 of its height at 5.3 sigma, an exponential at 14 time constants.
    const double widest = std::exp(3.0 * settings.peakWidthSpread) / kSecondsPerMinute;
    const double shift =
        settings.driftMinutes + 3.0 * settings.retentionJitterSeconds / kSecondsPerMinute;
    const double before = shift + 5.5 * settings.peakSigmaSeconds * widest;
    const EmgPeak shape(settings.peakSigmaSeconds * widest, settings.peakTailSeconds * widest);
    const double isomer = settings.isomerDistance * widthAtHalfHeight(shape);
    return {before, before + 14.0 * settings.peakTailSeconds * widest + isomer};
}

/// How the signal of a peptide is shared between its charge states: a Gaussian around one charge
/// for the N terminus and nearly one for each basic residue.
std::vector<SimulatedIon> chargeStates(const QString& sequence, const SimulationSettings& settings)
{
    constexpr double perBasicResidue = 0.9;
    constexpr double sigma = 0.55;
    constexpr double leastShare = 0.05;
    const auto basicCount = std::ranges::count_if(
        sequence, [](QChar c) { return c == u'K' || c == u'R' || c == u'H'; });
    const double mean = 1.0 + perBasicResidue * static_cast<double>(basicCount);

    std::vector<SimulatedIon> ions;
    double sum = 0.0;
    for (int charge = settings.minCharge; charge <= settings.maxCharge; ++charge) {
        const double distance = (charge - mean) / sigma;
        ions.push_back({charge, 0.0, std::exp(-0.5 * distance * distance), 0.0});
        sum += ions.back().share;
    }
    // With every charge far from the mean the nearest one takes all.
    if (!(sum > 0.0)) {
        return {
            {mean < settings.minCharge ? settings.minCharge : settings.maxCharge, 0.0, 1.0, 0.0}};
    }
    double keptSum = 0.0;
    std::erase_if(ions, [&](const SimulatedIon& ion) { return ion.share < leastShare * sum; });
    for (const SimulatedIon& ion : ions) {
        keptSum += ion.share;
    }
    for (SimulatedIon& ion : ions) {
        ion.share /= keptSum;
    }
    return ions;
}

/// Whether the instrument sees all isotopes of the ion, over its whole mobility peak.
bool isSeen(const SimulatedIon& ion, double lastMz, const SimulationSettings& settings)
{
    if (ion.mz < settings.mzStart || lastMz > settings.mzEnd) {
        return false;
    }
    if (settings.mobilityScanCount == 0) {
        return true;
    }
    const auto [low, high] = std::minmax(settings.firstMobility, settings.lastMobility);
    const double margin = 5.0 * settings.mobilitySigma;
    return ion.mobility >= low + margin && ion.mobility <= high - margin;
}

std::vector<SimulatedIon> drawIons(const SimulatedPeptide& peptide,
                                   const SimulationSettings& settings,
                                   RandomStream& random)
{
    constexpr double crossSectionSpread =
        0.03; // peptides of one mass and charge differ by some 3 %
    const int lastIsotope = static_cast<int>(peptide.isotopeFractions.size()) - 1;
    std::vector<SimulatedIon> ions = chargeStates(peptide.sequence, settings);
    for (SimulatedIon& ion : ions) {
        ion.mz = ionMz(peptide.mass, ion.charge, 0);
        const double deviation = 1.0 + crossSectionSpread * random.boundedNormal();
        if (settings.mobilityScanCount > 0) {
            ion.mobility = typicalMobility(peptide.mass, ion.charge) * deviation;
        }
    }
    std::erase_if(ions, [&](const SimulatedIon& ion) {
        return !isSeen(ion, ionMz(peptide.mass, ion.charge, lastIsotope), settings);
    });
    return ions;
}

Result<SimulatedPeptide> drawPeptide(const QString& sequence,
                                     const SimulationSettings& settings,
                                     RandomStream& random)
{
    Error e;
    const auto factory = chem::defaultChemicalFactory();
    const auto complex = factory->constructLinearPeptideComplex(sequence);
    QList<QPointF> envelope;
    ZEL_RETURN_IF_ERROR(factory->generateIsotopeEnvelope(complex->molecule(), 0, &envelope, 1));

    SimulatedPeptide peptide;
    peptide.sequence = sequence;
    peptide.mass = complex->monoisotopicMass();
    for (const QPointF& isotope : envelope) {
        peptide.isotopeFractions.append(isotope.y());
    }
    const Margins margins = marginsOf(settings);
    peptide.apexMinutes =
        random.uniform(settings.startMinutes + margins.before, settings.endMinutes - margins.after);
    const double width =
        std::exp(settings.peakWidthSpread * random.boundedNormal()) / kSecondsPerMinute;
    peptide.shape = EmgPeak(settings.peakSigmaSeconds * width, settings.peakTailSeconds * width);
    const double apexIntensity = settings.medianApexIntensity *
                                 std::pow(10.0, settings.intensityDecades * random.boundedNormal());
    peptide.area = apexIntensity / peptide.shape.height(0.0);
    peptide.ions = drawIons(peptide, settings, random);
    return peptide;
}

/// The isomer of a peptide: two neighbours before the last residue change places, the first two
/// that differ and give a sequence that is not taken.
std::optional<SimulatedPeptide> isomerOf(const SimulatedPeptide& peptide,
                                         double distance,
                                         QSet<QString>& taken)
{
    for (qsizetype i = 0; i + 2 < peptide.sequence.size(); ++i) {
        SimulatedPeptide isomer = peptide;
        isomer.sequence[i] = peptide.sequence[i + 1];
        isomer.sequence[i + 1] = peptide.sequence[i];
        if (!taken.contains(isomer.sequence)) {
            taken.insert(isomer.sequence);
            isomer.apexMinutes += distance * widthAtHalfHeight(peptide.shape);
            return isomer;
        }
    }
    return std::nullopt;
}

/// Appends the isomers, so that the peptides keep their numbers.
void addIsomers(const SimulationSettings& settings, std::vector<SimulatedPeptide>& peptides)
{
    QSet<QString> taken;
    for (const SimulatedPeptide& peptide : peptides) {
        taken.insert(peptide.sequence);
    }
    const std::size_t count = peptides.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (auto isomer = isomerOf(peptides[i], settings.isomerDistance, taken)) {
            peptides.push_back(std::move(*isomer));
        }
    }
}

} // namespace

double typicalMobility(double mass, int charge)
{
    // Cross sections of tryptic peptides in nitrogen lie near 3.05 A^2 Da^-2/3 * mass^2/3.
    constexpr double crossSectionPerMass = 3.05;
    // CCS/A^2 = 18509.863 z / sqrt(mu T) * K0/(cm2/V/s), mu the reduced mass with N2 in Da.
    constexpr double masonSchamp = 18509.863;
    constexpr double nitrogenDa = 28.0061;
    constexpr double temperatureK = 305.0;
    const double crossSection = crossSectionPerMass * std::cbrt(mass * mass);
    const double reducedMass = mass * nitrogenDa / (mass + nitrogenDa);
    return crossSection * std::sqrt(reducedMass * temperatureK) / (masonSchamp * charge);
}

double leastRunMinutes(const SimulationSettings& settings)
{
    const Margins margins = marginsOf(settings);
    return margins.before + margins.after;
}

Result<std::vector<SimulatedPeptide>> drawPeptides(const SimulationSettings& settings)
{
    const double leastMinutes = leastRunMinutes(settings);
    if (settings.peptideCount > 0 && !(leastMinutes < settings.durationMinutes())) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("With this peak width, jitter and drift a run of more than "
                                        "%1 min is wanted, but it has %2 min")
                             .arg(leastMinutes)
                             .arg(settings.durationMinutes()));
    }
    ZEL_ASSIGN_OR_RETURN(const QStringList sequences, choosePeptides(settings));
    std::vector<SimulatedPeptide> peptides;
    peptides.reserve(static_cast<std::size_t>(sequences.size()));
    for (qsizetype i = 0; i < sequences.size(); ++i) {
        RandomStream random(settings.seed, {RandomStream::Peptides, static_cast<std::uint64_t>(i)});
        ZEL_ASSIGN_OR_RETURN(SimulatedPeptide peptide, drawPeptide(sequences[i], settings, random));
        peptides.push_back(std::move(peptide));
    }
    if (settings.isomerDistance > 0.0) {
        addIsomers(settings, peptides);
    }
    return peptides;
}

} // namespace zel::simulate
