#pragma once

#include <QString>
#include <QStringList>

#include <array>

namespace zel::identifications {

/// Counts the matches that are left out, by reason, and keeps the first messages of each reason.
class MatchReport
{
public:
    enum class Reason {
        Sequence,
        Modifications,
        Charge,
        Mass,
        Score,
        Time,
        OutsideRun,
        Duplicate,
        OtherRun,
        LowerRank,
        BelowThreshold,
        Decoy,
    };
    static constexpr std::size_t kReasonCount = static_cast<std::size_t>(Reason::Decoy) + 1;
    /// Messages kept of one reason.
    static constexpr int kMaxMessageCount = 10;

    /// \param message  says which match and what is wrong with it; empty where the count is enough
    void leaveOut(Reason reason, const QString& message = {});

    int count(Reason reason) const { return m_counts[static_cast<std::size_t>(reason)]; }
    int totalCount() const;

    /// In the order in which they came.
    const QStringList& messages() const { return m_messages; }

    /// "3 charge, 2 duplicates", or empty.
    QString summary() const;

private:
    std::array<int, kReasonCount> m_counts{};
    std::array<int, kReasonCount> m_messageCounts{};
    QStringList m_messages;
};

} // namespace zel::identifications
