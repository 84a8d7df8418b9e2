#pragma once

#include "bench/networks/CosineBaseline.h"
#include "tools/training/OraclePeel.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace zel::bench {

/// How many of how many.
struct Share
{
    std::int64_t part = 0;
    std::int64_t whole = 0;

    void count(bool isPart)
    {
        part += isPart ? 1 : 0;
        ++whole;
    }
    double percent() const
    {
        return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    }
};

/// What was answered for one example.
struct Answers
{
    int charge;
    int offset; ///< given the true charge
    CosineMatch baseline;
    int baselineOffset; ///< given the true charge
};

/// A figure of the report: network and baseline beside each other.
struct Row
{
    Share network;
    Share baseline;
    void count(bool networkIsRight, bool baselineIsRight)
    {
        network.count(networkIsRight);
        baseline.count(baselineIsRight);
    }
};

/// Counts right and wrong answers on single slices.
class SliceReport
{
public:
    void add(const training::Example& example, const Answers& answers);
    void print() const;

private:
    static constexpr std::size_t kChargeCount = 11;

    void addCharge(const training::Example& example, const Answers& answers);
    void addOffset(const training::Example& example, const Answers& answers);
    void printConfusion() const;

    std::map<std::string, Row> m_rows; ///< by name
    std::array<std::array<std::int64_t, kChargeCount>, kChargeCount> m_confusion{};
    std::map<std::pair<int, int>, Share> m_byChargeAndMass; ///< charge right
    std::map<std::pair<int, int>, Share> m_offsetByMass;    ///< by mass and shift of the answer
};

} // namespace zel::bench
