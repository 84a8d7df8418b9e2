#pragma once

#include "tools/sources/ScanIndex.h"

#include <QList>
#include <QString>

#include <optional>
#include <span>

namespace zel::msreader {

/// Which scans of a run are taken: those that state all that is chosen.
struct RunSelection
{
    std::optional<Polarity> polarity;
    std::optional<double> compensationVoltage; ///< of the FAIMS device, V, to 0.01
    /// Of the scans with an isolation window, those of the one that contains this m/z; see
    /// windowAround.
    std::optional<double> isolationMz;

    /// What is chosen, to be part of file names: "positive.faims-45"; empty for all scans.
    QString name() const;
};

/// What the scans of one MS level differ in and must not be mixed by, without those that state
/// nothing of it. Voltages, and the centres and offsets of windows, that differ by 0.01 at most
/// are of one kind; the lowest stands for it.
struct ScanKinds
{
    QList<Polarity> polarities;            ///< positive before negative
    QList<double> compensationVoltages;    ///< V, ascending
    QList<PrecursorInfo> isolationWindows; ///< ascending by centre, then by offsets
};

ScanKinds kindsOf(std::span<const ScanRecord> scans, int msLevel);

/// Whether they are of one kind.
bool isSameWindow(const PrecursorInfo& a, const PrecursorInfo& b);

/// The isolation window that contains the m/z, to 0.01 at its ends. Of several windows, as
/// staggered ones are, the one with the nearest centre, of equally near ones the lower.
std::optional<PrecursorInfo> windowAround(std::span<const ScanRecord> scans, double mz);

/// Whether the selection takes a scan.
/// \param window  what windowAround has found for `isolationMz`
bool isSelected(const ScanRecord& scan,
                const RunSelection& selection,
                const std::optional<PrecursorInfo>& window);

} // namespace zel::msreader
