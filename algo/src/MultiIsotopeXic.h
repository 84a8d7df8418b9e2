#pragma once

#include "WhmParams.h"
#include "common/ms_types/XicWindow.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

namespace chem {
class Molecule;
} // namespace chem

namespace zel {

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader

/// Cuts one XIC for each leading isotope of an ion and folds them into one trace, by plain sum or
/// by a weighted harmonic mean that is low whenever one isotope is missing, so that interference on
/// a single isotope makes no peak. The signal of the deamidated form, whose isotopes fall into the
/// same windows, is taken off (or, for the deamidated form, that of the unmodified one).
///
/// All isotopes of one form are asked of the source in one `xics` call. A plain value; calls share
/// no state.
class ZEL_EXPORT MultiIsotopeXic
{
public:
    using WHMParams = WhmParams;

    /// How isotopes are folded.
    enum XicAggregationType {
        XicAggregationSum = 0, ///< the sum of the isotopes
        XicAggregationWhm = 1, ///< the weighted harmonic mean, as every other value
    };

    WHMParams params() const { return m_params; }
    void setWhmParams(WHMParams params) { m_params = std::move(params); }

    /// The folded XIC of an ion of which only the mass is known; the isotope pattern is that of
    /// averagine.
    /// \param mass                      neutral monoisotopic mass, Da
    /// \param charge                    at least 1
    /// \param mzTolerancePpm            half width of each isotope's window
    /// \param timeStart, timeEnd        minutes
    /// \param isotope                   isotope steps by which all windows are shifted
    /// \param cumulativeIntensityLimit  isotopes are taken until their shares of the pattern
    ///                                  exceed this sum
    /// \param source                    borrowed
    /// \param isDeamidated              whether `mass` is the deamidated form
    /// \return points (minutes, intensity); kError when the XICs do not fit together or hold no
    ///         point, or the failure of the source
    Result<QList<QPointF>> xic(double mass,
                               int charge,
                               const XicWindowFactory& windowFactory,
                               double mzTolerancePpm,
                               double timeStart,
                               double timeEnd,
                               int isotope,
                               double cumulativeIntensityLimit,
                               msreader::MsDataSourceInterface* source,
                               const XicAggregationType& aggregation,
                               bool isDeamidated) const;

    /// The same for a known molecule, with its own isotope pattern and mass. Unlike in the form
    /// above, the signal of the deamidated form is subtracted as it was cut, without taking the
    /// unmodified signal off it first.
    Result<QList<QPointF>> xic(const chem::Molecule& molecule,
                               int charge,
                               const XicWindowFactory& windowFactory,
                               double mzTolerancePpm,
                               double timeStart,
                               double timeEnd,
                               int isotope,
                               double cumulativeIntensityLimit,
                               msreader::MsDataSourceInterface* source,
                               const XicAggregationType& aggregation,
                               bool isDeamidated) const;

    /// The harmonic mean of the heavy form (b, c, d, e) less the light form's (a, b, c, d) on XICs
    /// that are already cut: neighbouring isotopes in ascending mass, all of one size. `weights[0]`
    /// is the share of the first isotope.
    Result<QList<QPointF>> WHMSubtractionTest(QList<QPointF> a,
                                              QList<QPointF> b,
                                              QList<QPointF> c,
                                              QList<QPointF> d,
                                              QList<QPointF> e,
                                              QList<double> weights) const;

private:
    struct FormXic;

    static Result<QList<QPointF>> multiIsotopeXic(const QList<QPointF>& isotopes,
                                                  double mass,
                                                  int charge,
                                                  const XicWindowFactory& windowFactory,
                                                  double mzTolerancePpm,
                                                  double timeStart,
                                                  double timeEnd,
                                                  int isotope,
                                                  double cumulativeIntensityLimit,
                                                  msreader::MsDataSourceInterface* source,
                                                  const XicAggregationType& aggregation,
                                                  WHMParams params);

    WHMParams m_params;
};

} // namespace zel
