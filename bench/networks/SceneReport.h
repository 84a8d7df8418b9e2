#pragma once

#include "tools/training/HillScene.h"

#include <cstdint>

namespace zel::bench {

/// What the clustering makes of the hills of whole scenes.
class SceneReport
{
public:
    /// Clusters the hills of a run or of a frame and compares with the truth.
    void add(const training::HillScene& scene);
    void print(const char* kind) const;

private:
    template <typename Hill>
    void addHills(const training::HillScene& scene);

    /// True clusters among those reported.
    std::int64_t distinct() const { return m_reported - m_repeated - m_groundless; }

    std::int64_t m_findable = 0; ///< clusters of three hills and more, the strongest of S/N 10
    std::int64_t m_found = 0;
    std::int64_t m_exact = 0;      ///< of those: charge and mass right
    std::int64_t m_repeated = 0;   ///< a cluster was reported once more
    std::int64_t m_groundless = 0; ///< found on a hill of noise
    std::int64_t m_reported = 0;
};

} // namespace zel::bench
