#include "feature_finder/FeatureFinderBase.h"

#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Logging.h"
#include "common/stable/MathUtils.h"
#include "feature_finder/records/ScanNumber_p.h"
#include "ms_feature/finders/MsFeatureFinderFactory.h"

#include <QObject>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zel {

namespace {

/// The members with D1 in minutes.
QList<ChargeFeature> inMinutes(QList<ChargeFeature> members, const QMap<int, double>& minutes)
{
    const auto minutesOf = [&minutes](double d1) {
        return minutes.value(MathUtils::truncateToInt(d1), 0.0);
    };
    for (ChargeFeature& member : members) {
        member.startD1 = minutesOf(member.startD1);
        member.apexD1 = minutesOf(member.apexD1);
        member.endD1 = minutesOf(member.endD1);
    }
    return members;
}

/// Makes masters of charge features that come by ascending mass.
class MasterGrouper
{
public:
    MasterGrouper(int ppmTolerance, int maxD1Gap)
        : m_ppmTolerance(ppmTolerance)
        , m_maxD1Gap(maxD1Gap)
    {}

    void add(const ChargeFeature& feature)
    {
        const double tolerance = m_ppmTolerance * feature.monoIsotopicMass / 1e6;
        closeMastersBelow(feature.monoIsotopicMass, tolerance);
        const auto fitting = std::find_if(m_open.begin(), m_open.end(), [&](const Open& master) {
            return tolerance >= std::abs(feature.monoIsotopicMass - master.mass) &&
                   m_maxD1Gap >= std::abs(feature.apexD1 - master.apexD1);
        });
        if (fitting == m_open.end()) {
            m_masters.append(MasterFeature());
            m_open.push_back({m_masters.size() - 1, 0.0, 0.0});
            join(feature, m_open.back());
        } else {
            join(feature, *fitting);
        }
    }

    QList<MasterFeature> take() { return std::move(m_masters); }

private:
    /// A master that features may still join, with the values of its strongest member.
    struct Open
    {
        qsizetype index;
        double mass;
        double apexD1;
    };

    /// No later feature, which is at least as heavy, comes nearer to a master than this one; and a
    /// master's mass only rises, to that of a member. Not so for tolerances as large as the mass.
    void closeMastersBelow(double mass, double tolerance)
    {
        if (m_ppmTolerance < 500000) {
            std::erase_if(m_open, [mass, tolerance](const Open& master) {
                return mass - master.mass > tolerance;
            });
        }
    }

    void join(const ChargeFeature& feature, Open& open)
    {
        MasterFeature& master = m_masters[open.index];
        (void)master.pushBackChargeFeature(feature); // always succeeds
        open.mass = master.monoIsotopicMass();
        open.apexD1 = master.apexD1();
    }

    int m_ppmTolerance;
    int m_maxD1Gap;
    QList<MasterFeature> m_masters;
    std::vector<Open> m_open; ///< in the order of the masters
};

} // namespace

FeatureFinderBase::FeatureFinderBase() = default;
FeatureFinderBase::FeatureFinderBase(const FeatureFinderBase&) = default;
FeatureFinderBase& FeatureFinderBase::operator=(const FeatureFinderBase&) = default;
FeatureFinderBase::~FeatureFinderBase() = default;

Error FeatureFinderBase::init(const SettableFeatureFinderParameters& params)
{
    m_userParams = params;
    m_isInit = true;
    return kNoError;
}

void FeatureFinderBase::setMsFeatureFinder(const QSharedPointer<MsFeatureFinderFactory>& factory)
{
    m_msFeatureFinder = factory;
}

void FeatureFinderBase::setMobilityGranularity(int binsPerMz)
{
    const int width = static_cast<int>(std::lround(binsPerMz / 100.0 * 7.0));
    m_userParams.mzHashFactor = binsPerMz;
    m_userParams.mzKernelWidth = width % 2 == 0 ? width + 1 : width;
}

Result<bool> FeatureFinderBase::hasMobilityCheck(msreader::MsDataSourceInterface* source)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_ASSIGN_OR_RETURN(const bool hasMobility, source->hasMobility());
    return hasMobility;
}

Result<QMap<int, double>> FeatureFinderBase::buildIndexRetentionTimeMap(
    msreader::MsDataSourceInterface* source, int msLevel)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_ASSIGN_OR_RETURN(const QList<msreader::MsScanId> ids,
                         source->scanIds(msreader::MsQuery::createByMsLevel(msLevel)));
    QMap<int, double> minutes;
    for (const msreader::MsScanId& id : ids) {
        ZEL_ASSIGN_OR_RETURN(const msreader::ScanInfoBasic basic, source->scanInfoBasic(id));
        if (const std::optional<int> d1 = scanNumber(id.d1)) {
            minutes.insert(*d1, basic.retentionTimeMinutes);
        }
    }
    return minutes;
}

void FeatureFinderBase::setFilePathProgressText(
    const QSharedPointer<ProgressBarInterface>& progress, const QString& path)
{
    if (progress) {
        progress->setText(QObject::tr("Feature finding at %1").arg(path));
    }
}

void FeatureFinderBase::debuggingProgressTracker(int index, int every, const QString& text)
{
    if (index % every == 0) {
        qCDebug(algoLog) << index << text;
    }
}

Error FeatureFinderBase::convertD1FromScanIndexToRetentionTimeMinutes(
    msreader::MsDataSourceInterface* source, QList<MasterFeature>* masters)
{
    Error e;
    ZEL_RETURN_IF_ERROR(ErrorUtils::equal<bool>(source != nullptr, true, Error(kError)));
    ZEL_ASSIGN_OR_RETURN(const auto minutes, buildIndexRetentionTimeMap(source, 1));
    for (MasterFeature& master : *masters) {
        const QList<ChargeFeature> members = inMinutes(master.chargeFeatures(), minutes);
        master.clearChargeFeatures();
        for (const ChargeFeature& member : members) {
            ZEL_RETURN_IF_ERROR(master.pushBackChargeFeature(member));
        }
    }
    return kNoError;
}

QList<MasterFeature> FeatureFinderBase::groupChargeFeaturesToMasterFeatures(
    const QList<ChargeFeature>& features) const
{
    QList<ChargeFeature> byMass = features;
    std::stable_sort(
        byMass.begin(), byMass.end(), [](const ChargeFeature& a, const ChargeFeature& b) {
            return a.monoIsotopicMass < b.monoIsotopicMass;
        });
    MasterGrouper grouper(m_userParams.ppmTolerance, m_userParams.maxD1Gap);
    for (const ChargeFeature& feature : std::as_const(byMass)) {
        grouper.add(feature);
    }
    return grouper.take();
}

} // namespace zel
