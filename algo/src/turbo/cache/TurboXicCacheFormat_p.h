#pragma once

#include "common/stable/Result.h"
#include "turbo/cache/TurboXicHeader.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>
#include <QByteArray>

class QDataStream;

namespace zel {

// The bytes of TurboXic's cache file; docs/file-formats.md describes them field by field.

/// The index that a cache file holds after its header.
struct TurboXicContent
{
    Eigen::VectorXd scanTimes;                   ///< minutes
    Eigen::SparseMatrix<double> intensityMatrix; ///< compressed; rows m/z bins, columns scans
};

/// The version of the format that is written, and the only one that is read.
QVersionNumber turboXicCacheVersion();

/// The whole file.
QByteArray turboXicCacheBytes(const TurboXicSettings& settings,
                              const QString& dataFingerprint,
                              const Eigen::SparseMatrix<double>& intensityMatrix,
                              const Eigen::VectorXd& scanTimes);

/// A stream of the format's version over a device or bytes.
void prepareTurboXicStream(QDataStream& stream);

/// Reads the header. \return kFileFormatError, "Invalid header" or "Invalid file format"
Result<TurboXicHeader> readTurboXicHeader(QDataStream& stream);

/// Reads what follows the header. Nothing in the bytes is trusted: counts are held against the
/// bytes that are left before memory is allocated, times and intensities must be finite, and the
/// indices of the matrix in order and in range. \return kFileFormatError, "Invalid file format"
Result<TurboXicContent> readTurboXicContent(QDataStream& stream);

} // namespace zel
