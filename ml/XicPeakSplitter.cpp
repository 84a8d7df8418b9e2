#include "ml/XicPeakSplitter.h"

#include "ml/XicSignal_p.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace zel {

namespace {

/// Gaps inside a peak say nothing about its valleys unless they are long.
constexpr int kMaxGapPoints = 2;

/// Floods a trace from above and finds which maxima stand out.
class Islands
{
public:
    Islands(const XicSignal& signal, const XicPeakSplitterOptions& options)
        : m_heights(signal.smoothed)
        , m_noise(signal.noise)
        , m_options(options)
        , m_parent(signal.smoothed.size(), kSea)
        , m_peak(signal.smoothed.size())
    {}

    /// The samples of the maxima that stand out, ascending.
    std::vector<std::size_t> outstandingMaxima()
    {
        std::vector<std::size_t> byHeight(m_heights.size());
        std::iota(byHeight.begin(), byHeight.end(), std::size_t{0});
        std::stable_sort(byHeight.begin(), byHeight.end(), [this](std::size_t a, std::size_t b) {
            return m_heights[a] > m_heights[b];
        });
        m_tallest = m_heights[byHeight.front()];
        for (const std::size_t sample : byHeight) {
            m_parent[sample] = m_peak[sample] = sample;
            if (sample > 0 && m_parent[sample - 1] != kSea) {
                join(sample - 1, sample);
            }
            if (sample + 1 < m_heights.size() && m_parent[sample + 1] != kSea) {
                join(sample + 1, sample);
            }
        }
        m_maxima.push_back(byHeight.front());
        std::sort(m_maxima.begin(), m_maxima.end());
        return m_maxima;
    }

private:
    static constexpr std::size_t kSea = static_cast<std::size_t>(-1);

    std::size_t islandOf(std::size_t sample)
    {
        while (m_parent[sample] != sample) {
            m_parent[sample] = m_parent[m_parent[sample]];
            sample = m_parent[sample];
        }
        return sample;
    }

    /// Joins the islands of two samples that touch at the height of `saddle`.
    void join(std::size_t neighbour, std::size_t saddle)
    {
        std::size_t high = islandOf(neighbour);
        std::size_t low = islandOf(saddle);
        if (isHigher(m_peak[low], m_peak[high])) {
            std::swap(high, low);
        }
        if (standsOut(m_heights[m_peak[low]], m_heights[saddle])) {
            m_maxima.push_back(m_peak[low]);
        }
        m_parent[low] = high;
    }

    /// Of equally high maxima the first counts as the higher one.
    bool isHigher(std::size_t a, std::size_t b) const
    {
        return m_heights[a] > m_heights[b] || (m_heights[a] == m_heights[b] && a < b);
    }

    bool standsOut(double height, double saddle) const
    {
        return height > saddle && height >= m_options.valleyRatio * saddle &&
               height - saddle >= m_options.noiseFactor * m_noise &&
               height >= m_options.minRelativeHeight * m_tallest;
    }

    const std::vector<double>& m_heights;
    double m_noise;
    const XicPeakSplitterOptions& m_options;
    std::vector<std::size_t> m_parent; ///< kSea for a sample that is still under water
    std::vector<std::size_t> m_peak;   ///< of an island's root: its highest sample
    double m_tallest = 0.0;
    std::vector<std::size_t> m_maxima;
};

/// The sample of the lowest height from `first` to `last`, the first one of several.
std::size_t lowestBetween(const std::vector<double>& heights, std::size_t first, std::size_t last)
{
    const auto begin = heights.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = heights.begin() + static_cast<std::ptrdiff_t>(last) + 1;
    return first + static_cast<std::size_t>(std::min_element(begin, end) - begin);
}

} // namespace

class XicPeakSplitter::Private
{
public:
    XicPeakSplitterOptions options;
};

XicPeakSplitter::XicPeakSplitter()
    : m_private(std::make_unique<Private>())
{}

XicPeakSplitter::~XicPeakSplitter() = default;

Error XicPeakSplitter::init(const XicPeakSplitterOptions& options)
{
    if (!isSize(options.valleyRatio) || !isSize(options.noiseFactor) ||
        !isSize(options.minRelativeHeight) || options.minPointsPerPeak < 0) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "Ratios and factors of peak splitting must be finite and not negative");
    }
    m_private->options = options;
    return kNoError;
}

Result<QList<std::pair<double, double>>> XicPeakSplitter::splitXIC(
    const QList<QPointF>& xicOfOnePeak)
{
    const XicPeakSplitterOptions& options = m_private->options;
    ZEL_ASSIGN_OR_RETURN(const XicSignal signal, xicSignal(xicOfOnePeak, kMaxGapPoints));
    QList<std::pair<double, double>> splits;
    if (signal.raw.empty()) {
        return splits;
    }
    const std::vector<std::size_t> maxima = Islands(signal, options).outstandingMaxima();
    const auto least = static_cast<std::size_t>(options.minPointsPerPeak);
    std::size_t pieceStart = 0;
    for (std::size_t i = 1; i < maxima.size(); ++i) {
        const std::size_t split = lowestBetween(signal.raw, maxima[i - 1], maxima[i]);
        if (split - pieceStart < least || signal.raw.size() - split < least) {
            continue;
        }
        const std::vector<double>& heights = signal.smoothed;
        const double saddle = heights[lowestBetween(heights, maxima[i - 1], maxima[i])];
        const double lowerMaximum = std::min(heights[maxima[i - 1]], heights[maxima[i]]);
        splits.append(
            {xicOfOnePeak[static_cast<qsizetype>(split)].x(), 1.0 - saddle / lowerMaximum});
        pieceStart = split;
    }
    return splits;
}

} // namespace zel
