#include "tools/identifications/MatchReport.h"

#include <numeric>

namespace zel::identifications {

namespace {

/// How the summary calls the reasons, in their order.
constexpr std::array<const char*, MatchReport::kReasonCount> kReasonTexts = {
    "with a sequence that cannot be read",
    "with modifications that cannot be read",
    "with a charge that cannot be used",
    "without a usable m/z or mass",
    "without a usable score",
    "without a known time",
    "outside the times of their run",
    "duplicates",
    "of runs that were not given",
    "that are not the best of their spectrum",
    "below the threshold of their file",
    "decoys",
};

} // namespace

void MatchReport::leaveOut(Reason reason, const QString& message)
{
    const auto index = static_cast<std::size_t>(reason);
    ++m_counts[index];
    if (!message.isEmpty() && m_messageCounts[index] < kMaxMessageCount) {
        ++m_messageCounts[index];
        m_messages.append(message);
    }
}

int MatchReport::totalCount() const
{
    return std::accumulate(m_counts.begin(), m_counts.end(), 0);
}

QString MatchReport::summary() const
{
    QStringList parts;
    for (std::size_t i = 0; i < kReasonCount; ++i) {
        if (m_counts[i] > 0) {
            parts.append(
                QStringLiteral("%1 %2").arg(m_counts[i]).arg(QString::fromLatin1(kReasonTexts[i])));
        }
    }
    return parts.join(QLatin1String(", "));
}

} // namespace zel::identifications
