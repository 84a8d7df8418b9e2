// Published runs, where they are at hand: the folder named by ZEL_TEST_DATA, else the one beside
// the repository.

#include "common/stable/PhysicalConstants.h"
#include "ms_feature/finders/MsFeatureFinderSeg.h"
#include "tests/support/Matchers.h"
#include "tools/io/TsvTable.h"
#include "tools/sources/mzml/MzmlDataSource.h"

#include <QFileInfo>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace zel {

using msreader::MsQuery;
using msreader::PeakPickingFilter;
using test::valueOf;

namespace {

/// What a file holds of one MS level, counted by its publisher.
struct RealLevel
{
    const char* file;
    int msLevel;
    int spectrumCount;
    long long peakCount;
    PeakPickingFilter kind = PeakPickingFilter::Centroid;
};

void PrintTo(const RealLevel& level, std::ostream* os)
{
    *os << level.file << " MS" << level.msLevel;
}

const RealLevel kLevels[] = {
    {"multi/orbi_gradient_low_1.mzML.gz", 1, 2035, 106470},
    {"multi/qe_runs_1.mzML.gz", 1, 207, 119629},
    {"multi/qe_runs_1.mzML.gz", 2, 180, 5865},
    {"lcms/qe_shewanella.mzXML.gz", 1, 79, 100392},
    {"lcms/velos_yeast.mzML.gz", 1, 24, 47169},
    {"lcms/orbi_phospho_strip.mzML.gz", 1, 112, 3084},
    {"profile/qe_lipid_profile.mzML.gz", 1, 380, 117992, PeakPickingFilter::Profile},
    {"profile/ltqft_small_profile.mzML.gz", 1, 14, 279869, PeakPickingFilter::Profile},
    {"profile/qtof_strip_profile.mzML.gz", 1, 262, 59857, PeakPickingFilter::Profile},
    {"dia/qe_hela_dia_lo.mzML.gz", 2, 156, 47925},
    {"ims/tims_diapasef_frames.mzML.gz", 1, 1, 205921},
    {"ims/tims_diapasef_frames.mzML.gz", 2, 8, 85532},
    {"ims/driftims_9peptides.mzML.gz", 1, 1, 265064, PeakPickingFilter::Profile},
};

QString dataFolder()
{
    return qEnvironmentVariable("ZEL_TEST_DATA", QStringLiteral(ZEL_DEFAULT_TEST_DATA));
}

/// The identified ions of the yeast run, by hash.
MsFeatureFinderBase::PsmsByHash yeastPsms(const QString& path)
{
    const auto table = valueOf(io::TsvTable::read(path));
    MsFeatureFinderBase::PsmsByHash psms;
    for (int row = 0; row < table.rowCount(); ++row) {
        const double mass = valueOf(table.number(row, QStringLiteral("Peptide Monoisotopic Mass")));
        PeptideSpectrumMatch psm;
        psm.setSequence(table.text(row, QStringLiteral("Full Sequence")));
        psm.setCharge(
            static_cast<int>(valueOf(table.number(row, QStringLiteral("Precursor Charge")))));
        psm.setCalcMz(ionMz(mass, psm.charge(), 0));
        psm.setWtCalcMr(mass);
        psm.setScanTimeMinutes(valueOf(table.number(row, QStringLiteral("Scan Retention Time"))));
        psms[psm.peptideHash()].append(psm);
    }
    return psms;
}

class RealDataTest : public ::testing::TestWithParam<RealLevel>
{};

} // namespace

TEST_P(RealDataTest, HoldsWhatItsPublisherCounted)
{
    const RealLevel& level = GetParam();
    const QString path = dataFolder() + QLatin1Char('/') + QString::fromLatin1(level.file);
    if (!QFileInfo::exists(path)) {
        GTEST_SKIP() << "no such file: " << path.toStdString()
                     << " (set ZEL_TEST_DATA to the folder of real runs)";
    }
    const auto source = valueOf(msreader::MzmlDataSource::open(path));
    const MsQuery frames = MsQuery::createByMsLevel(level.msLevel);
    const auto frameIds = valueOf(source->scanIds(frames));
    EXPECT_EQ(frameIds.size(), level.spectrumCount);
    for (qsizetype i = 0; level.msLevel == 1 && i < frameIds.size(); ++i) {
        ASSERT_EQ(frameIds[i].d1, i + 1) << "MS1 scans count 1, 2, 3, ...";
    }
    EXPECT_EQ(valueOf(source->scanInfo(frameIds.constFirst())).storedAs, level.kind);

    // By mobility scan where there are any, since the spectrum of a frame joins peaks of equal m/z.
    const bool hasMobility = valueOf(source->hasMobility());
    const auto scanIds =
        hasMobility ? valueOf(source->scanIds(MsQuery(frames).setD2({}))) : frameIds;
    long long peakCount = 0;
    for (const auto& id : scanIds) {
        peakCount += valueOf(source->scanData(MsQuery(id, PeakPickingFilter::Profile))).size();
    }
    EXPECT_EQ(peakCount, level.peakCount);
}

// 96.9 % of the 65 ions when this was written.
TEST(RealFeaturesTest, HoldTheSpectrumMatchesOfTheirIons)
{
    const QString folder = dataFolder() + QStringLiteral("/lcms/velos_yeast");
    if (!QFileInfo::exists(folder + QStringLiteral("_psms.tsv"))) {
        GTEST_SKIP() << "no such file: " << folder.toStdString()
                     << "_psms.tsv (set ZEL_TEST_DATA to the folder of real runs)";
    }
    auto psms = yeastPsms(folder + QStringLiteral("_psms.tsv"));
    const auto source =
        valueOf(msreader::MzmlDataSource::open(folder + QStringLiteral(".mzML.gz")));
    const auto features =
        valueOf(MsFeatureFinderSeg(MsFeatureFinderSettings())
                    .constructXicWindow(
                        XicWindowFactory(), PeakPickingFilter::Centroid, source.get(), &psms, {}));
    const auto holdsAMatch = [](const std::optional<Ms1Feature>& feature) {
        const Interval<double> span =
            feature ? feature->timeInterval().interval() : Interval<double>();
        const auto matches =
            feature ? feature->peptideSpectrumMatches() : QList<PeptideSpectrumMatch>();
        return std::ranges::any_of(matches, [span](const PeptideSpectrumMatch& psm) {
            return psm.scanTimeMinutes() >= span.start && psm.scanTimeMinutes() <= span.end;
        });
    };
    EXPECT_EQ(features.size(), 65);
    EXPECT_GE(std::ranges::count_if(features, holdsAMatch), 62);
}

INSTANTIATE_TEST_SUITE_P(PublishedRuns, RealDataTest, ::testing::ValuesIn(kLevels));

} // namespace zel
