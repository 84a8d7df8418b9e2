#pragma once

#include "tools/sources/RunSelection.h"
#include "tools/sources/mzml/MobilityAxis.h"
#include "tools/sources/mzml/SpectrumFile.h"

#include <vector>

namespace zel::msreader {

/// Where the points of a record lie.
struct StoredSpectrum
{
    qsizetype index = 0; ///< in the file
    qsizetype pointCount = 0;
};

/// The spectra of a file put in order as scans and frames.
struct SpectrumRun
{
    ScanIndex index;
    std::vector<StoredSpectrum> stored; ///< parallel to index.records()
    /// The MS levels whose spectra hold a mobility value for each point.
    std::vector<int> combinedLevels;
    /// How many spectra have a time before that of a spectrum above them in the file.
    qsizetype outOfOrderCount = 0;
};

/// Reads all headers of a file, and a few spectra of each MS level to see what the headers do not
/// say.
///
/// - Spectra are taken in order of time, those of one time in the order of the file.
/// - `d1` counts the MS1 frames 1, 2, 3, ... in that order; the frames of other levels follow after
///   the last of these, in that order too.
/// - Neighbouring spectra of one level, time, polarity, compensation voltage and isolation window,
///   each with a mobility of its own, are the mobility scans of one frame. On a level with such
///   frames each spectrum with a mobility gets a `d2`, the number of its value among all of these
///   values of the run (MobilityAxis); should two of a frame fall together there, the later one
///   gets the next number. The fragment spectra of ions that were isolated one after the other
///   inside one mobility separation differ in their windows, so they stay frames of their own. A
///   mobility that stands alone, such as that of a precursor, gives no `d2`.
/// - Spectra of which the file does not say whether they are profiles or centroids are judged by
///   looksLikeProfile, on the five richest ones of their level together.
/// - Things other than mass spectra are left out.
/// - Spectra that the selection does not take are left out, before anything is numbered.
///
/// \return kFileFormatError for a header that cannot be read, or a run without MS1 spectra;
/// kBadParameterError when the selection takes none
Result<SpectrumRun> readRun(SpectrumFile& file, const RunSelection& selection = {});

/// The points of a spectrum, ascending in m/z whatever their order in the file. Points of m/z 0 and
/// intensity 0, by which some writers fill up empty spectra, are left out.
/// \return kFileFormatError unless all m/z are finite and positive and all intensities finite and
/// not negative
Result<QList<QPointF>> readPoints(SpectrumFile& file, const StoredSpectrum& spectrum);

/// The same of a spectrum with a mobility for each point. The points are in the order of the file,
/// and `mobilities`, after it was cleared, is parallel to them; it stays empty when the spectrum
/// has no mobility array.
Result<QList<QPointF>> readPoints(SpectrumFile& file,
                                  const StoredSpectrum& spectrum,
                                  std::vector<double>& mobilities);

} // namespace zel::msreader
