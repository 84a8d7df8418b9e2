#pragma once

#include "common/stable/Result.h"
#include "tools/sources/mzml/SpectrumHeader.h"

#include <memory>
#include <span>

namespace zel::msreader {

/// The points of a spectrum as they lie in the file.
struct SpectrumArrays
{
    std::span<const double> mz;
    std::span<const double> intensity;
    /// As long as the others, or empty without a mobility array.
    std::span<const double> mobility;
};

/// One mzML or mzXML file, plain or gzip-compressed, read spectrum by spectrum through
/// ProteoWizard's libpwiz.
///
/// Terms of the controlled vocabulary that are younger than libpwiz, which would refuse the whole
/// file for one of them, are read as terms without a meaning; the terms of all kinds of mobility
/// arrays are read as one. The native ids of an mzXML file carry its scan numbers, whatever file it
/// was made of. Nothing is kept of a spectrum once the next one is read.
///
/// Every failure names the file, and the spectrum by its native id. No exception leaves this class.
/// Not thread-safe.
class SpectrumFile
{
public:
    /// \return kFileOpenError, or kFileFormatError for what is empty, cut off, neither of the two
    /// formats, or without spectra
    static Result<std::unique_ptr<SpectrumFile>> open(const QString& path);
    ~SpectrumFile();
    Q_DISABLE_COPY_MOVE(SpectrumFile)

    const QString& path() const;
    qsizetype spectrumCount() const;

    /// The file's own identifier of a spectrum.
    QString nativeId(qsizetype index) const;

    /// \return kFileFormatError for a header that cannot be read, without MS level, or without a
    /// time of known unit
    Result<SpectrumHeader> readHeader(qsizetype index);

    /// The arrays of a spectrum whose header was read before; they live until the next call.
    /// \param pointCount  as its header says
    /// \return kFileFormatError for data that cannot be decoded or arrays that are missing or of
    /// other lengths
    Result<SpectrumArrays> readArrays(qsizetype index, qsizetype pointCount);

    /// A kFileFormatError about the file, or about one of its spectra.
    Error formatError(const QString& what) const;
    Error formatError(qsizetype index, const QString& what) const;

private:
    class Private;

    explicit SpectrumFile(std::unique_ptr<Private> privateData);

    std::unique_ptr<Private> m_private;
};

} // namespace zel::msreader
