#include "MultiIsotopeXic.h"

#include "MultiIsotopeXicFold_p.h"
#include "chemical_model/ChemicalFactory.h"
#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/PhysicalConstants.h"

namespace zel {

using msreader::MsDataSourceInterface;

namespace {

/// What deamidation adds to a molecule.
constexpr const char* kDeamidationFormula = "N(-1)H(-1)O(1)";
/// How far a point of the base peak plot may lie outside the span of the XIC, minutes.
constexpr double kSpanToleranceMinutes = 1.0000000000000002e-6;

/// An ion form: where its isotopes lie and how they share the intensity.
struct IonForm
{
    QList<QPointF> pattern;
    double mass; ///< neutral monoisotopic, Da
};

/// The windows in which the isotopes of a form are cut, and how many.
struct IsotopeQuery
{
    int charge;
    const XicWindowFactory& windowFactory;
    double mzTolerancePpm;
    double timeStart; ///< minutes
    double timeEnd;   ///< minutes
    int isotope;
    double cumulativeIntensityLimit;

    XicDimensions windowOf(double mass) const
    {
        return windowFactory.create(mass, charge, mzTolerancePpm, timeStart, timeEnd, isotope)
            .toXicDimensions();
    }
};

/// One XIC for each isotope from the first on, until their shares exceed the limit. Appends the
/// shares to `weights`.
Result<QList<QList<QPointF>>> getIsotopeXics(const IonForm& form,
                                             const IsotopeQuery& query,
                                             MsDataSourceInterface* source,
                                             QList<double>& weights)
{
    QList<XicDimensions> dimensions;
    double total = 0.0;
    for (qsizetype k = 0; k < form.pattern.size(); ++k) {
        total += form.pattern[k].y();
        weights.append(form.pattern[k].y());
        const double isotopeMass = form.mass + static_cast<double>(k) * kCarbonIsotopeSpacingDa;
        dimensions.append(query.windowOf(isotopeMass));
        if (total > query.cumulativeIntensityLimit) {
            break;
        }
    }
    ZEL_ASSIGN_OR_RETURN(QList<QList<QPointF>> xics, source->xics(dimensions));
    return xics;
}

/// Fills the parameters' base peak intensities with the base peak plot between two times.
Error setBpiIntensities(MsDataSourceInterface* source,
                        double low,
                        double high,
                        MultiIsotopeXic::WHMParams& params)
{
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> basePeaks, source->basePeakPlot());
    for (const QPointF& point : basePeaks) {
        if (point.x() >= low - kSpanToleranceMinutes && high + kSpanToleranceMinutes >= point.x()) {
            params.basePeakIntensities.append(point.y());
        }
    }
    return kNoError;
}

double firstIntensity(const QList<QPointF>& pattern)
{
    return pattern.isEmpty() ? 0.0 : pattern.constFirst().y();
}

/// The isotope pattern of a molecule's ion.
Result<QList<QPointF>> isotopeEnvelope(const chem::Molecule& molecule, int charge)
{
    constexpr int sumToOne = 1;
    Error e;
    QList<QPointF> envelope;
    ZEL_RETURN_IF_ERROR(chem::defaultChemicalFactory()->generateIsotopeEnvelope(
        molecule, charge, &envelope, sumToOne));
    return envelope;
}

Result<IonForm> formOf(const chem::Molecule& molecule, int charge)
{
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> pattern, isotopeEnvelope(molecule, charge));
    return IonForm{std::move(pattern), molecule.monoisotopicMass()};
}

IonForm formOf(double mass, int charge)
{
    return {AveragineGenerator(mass).generateSignal(charge), mass};
}

/// The folded XIC of the deamidated form less that of the unmodified one. `cut` gives the folded
/// XIC of a form.
template <typename Cut>
Result<QList<QPointF>> subtractWtSignal(const IonForm& deamidated,
                                        const IonForm& unmodified,
                                        const Cut& cut)
{
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> heavy, cut(deamidated));
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> light, cut(unmodified));
    return subtract(heavy, light, firstIntensity(unmodified.pattern));
}

/// For a deamidated form of which the mass is known.
template <typename Cut>
Result<QList<QPointF>> subtractWtSignalFromDeamidatedSignal(double mass, int charge, const Cut& cut)
{
    return subtractWtSignal(
        formOf(mass, charge), formOf(mass - kDeamidationMassShiftDa, charge), cut);
}

/// For a deamidated molecule.
template <typename Cut>
Result<QList<QPointF>> subtractWtSignalFromDeamidatedSignal(const chem::Molecule& molecule,
                                                            int charge,
                                                            const Cut& cut)
{
    ZEL_ASSIGN_OR_RETURN(const chem::Molecule deamidation,
                         chem::defaultChemicalFactory()->constructMolecule(
                             QString::fromLatin1(kDeamidationFormula)));
    ZEL_ASSIGN_OR_RETURN(const IonForm deamidated, formOf(molecule, charge));
    ZEL_ASSIGN_OR_RETURN(const IonForm unmodified, formOf(molecule - deamidation, charge));
    return subtractWtSignal(deamidated, unmodified, cut);
}

} // namespace

/// The folded XIC of any form of one ion.
struct MultiIsotopeXic::FormXic
{
    IsotopeQuery query;
    MsDataSourceInterface* source;
    const XicAggregationType& aggregation;
    const WHMParams& params;

    Result<QList<QPointF>> operator()(const IonForm& form) const
    {
        return multiIsotopeXic(form.pattern,
                               form.mass,
                               query.charge,
                               query.windowFactory,
                               query.mzTolerancePpm,
                               query.timeStart,
                               query.timeEnd,
                               query.isotope,
                               query.cumulativeIntensityLimit,
                               source,
                               aggregation,
                               params);
    }
};

Result<QList<QPointF>> MultiIsotopeXic::multiIsotopeXic(const QList<QPointF>& isotopes,
                                                        double mass,
                                                        int charge,
                                                        const XicWindowFactory& windowFactory,
                                                        double mzTolerancePpm,
                                                        double timeStart,
                                                        double timeEnd,
                                                        int isotope,
                                                        double cumulativeIntensityLimit,
                                                        MsDataSourceInterface* source,
                                                        const XicAggregationType& aggregation,
                                                        WHMParams params)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    const IsotopeQuery query{charge,
                             windowFactory,
                             mzTolerancePpm,
                             timeStart,
                             timeEnd,
                             isotope,
                             cumulativeIntensityLimit};
    QList<double> weights;
    ZEL_ASSIGN_OR_RETURN(const QList<QList<QPointF>> xics,
                         getIsotopeXics({isotopes, mass}, query, source, weights));
    ZEL_RETURN_IF_ERROR(checkHaveOneSize(xics));
    const bool hasPoints = !xics.isEmpty() && !xics.constFirst().isEmpty();
    const double low = hasPoints ? xics.constFirst().constFirst().x() : timeStart;
    const double high = hasPoints ? xics.constFirst().constLast().x() : timeEnd;
    params.basePeakIntensities.clear();
    ZEL_RETURN_IF_ERROR(setBpiIntensities(source, low, high, params));
    if (aggregation == XicAggregationSum) {
        return sumXics(xics);
    }
    return whmXics(xics, weights, params);
}

Result<QList<QPointF>> MultiIsotopeXic::xic(double mass,
                                            int charge,
                                            const XicWindowFactory& windowFactory,
                                            double mzTolerancePpm,
                                            double timeStart,
                                            double timeEnd,
                                            int isotope,
                                            double cumulativeIntensityLimit,
                                            MsDataSourceInterface* source,
                                            const XicAggregationType& aggregation,
                                            bool isDeamidated) const
{
    const FormXic cut{{charge,
                       windowFactory,
                       mzTolerancePpm,
                       timeStart,
                       timeEnd,
                       isotope,
                       cumulativeIntensityLimit},
                      source,
                      aggregation,
                      m_params};
    if (isDeamidated) {
        return subtractWtSignalFromDeamidatedSignal(mass, charge, cut);
    }
    const IonForm unmodified = formOf(mass, charge);
    const IonForm deamidated{unmodified.pattern, mass + kDeamidationMassShiftDa};
    const double f = firstIntensity(unmodified.pattern);
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> light, cut(unmodified));
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> heavy, cut(deamidated));
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> heavyAlone, subtract(heavy, light, f));
    return subtract(light, heavyAlone, f);
}

Result<QList<QPointF>> MultiIsotopeXic::xic(const chem::Molecule& molecule,
                                            int charge,
                                            const XicWindowFactory& windowFactory,
                                            double mzTolerancePpm,
                                            double timeStart,
                                            double timeEnd,
                                            int isotope,
                                            double cumulativeIntensityLimit,
                                            MsDataSourceInterface* source,
                                            const XicAggregationType& aggregation,
                                            bool isDeamidated) const
{
    const FormXic cut{{charge,
                       windowFactory,
                       mzTolerancePpm,
                       timeStart,
                       timeEnd,
                       isotope,
                       cumulativeIntensityLimit},
                      source,
                      aggregation,
                      m_params};
    if (isDeamidated) {
        return subtractWtSignalFromDeamidatedSignal(molecule, charge, cut);
    }
    ZEL_ASSIGN_OR_RETURN(const IonForm unmodified, formOf(molecule, charge));
    const IonForm deamidated{unmodified.pattern, unmodified.mass + kDeamidationMassShiftDa};
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> light, cut(unmodified));
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> heavy, cut(deamidated));
    return subtract(light, heavy, firstIntensity(unmodified.pattern));
}

Result<QList<QPointF>> MultiIsotopeXic::WHMSubtractionTest(QList<QPointF> a,
                                                           QList<QPointF> b,
                                                           QList<QPointF> c,
                                                           QList<QPointF> d,
                                                           QList<QPointF> e,
                                                           QList<double> weights) const
{
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> light, whmXics({a, b, c, d}, weights, m_params));
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> heavy, whmXics({b, c, d, e}, weights, m_params));
    return subtract(heavy, light, weights.constFirst());
}

} // namespace zel
