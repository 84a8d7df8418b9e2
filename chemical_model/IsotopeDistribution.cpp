#include "chemical_model/IsotopeDistribution.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace chem {

using zel::Error;
using zel::kBadParameterError;
using zel::kNoError;

namespace {

constexpr int kMaxShift = 8; // 74Se to 82Se

/// Abundances of an element by mass units above its lightest isotope, and their moments.
struct ElementPolynomial
{
    std::array<double, kMaxShift + 1> coefficients{};
    std::array<double, kMaxShift + 1> ratios{}; ///< coefficients over the first one
    int degree = 0;
    double mean = 0.0;
    double variance = 0.0;
};

constexpr ElementPolynomial polynomialOf(const ElementInfo& info)
{
    ElementPolynomial polynomial;
    const int lightest = info.isotopes.front().massNumber;
    double square = 0.0;
    for (const Isotope& isotope : info.isotopes) {
        const int shift = isotope.massNumber - lightest;
        polynomial.coefficients[static_cast<std::size_t>(shift)] = isotope.abundance;
        polynomial.ratios[static_cast<std::size_t>(shift)] =
            isotope.abundance / info.isotopes.front().abundance;
        polynomial.degree = shift;
        polynomial.mean += shift * isotope.abundance;
        square += shift * shift * isotope.abundance;
    }
    polynomial.variance = square - polynomial.mean * polynomial.mean;
    return polynomial;
}

constexpr std::array<ElementPolynomial, kElementCount> kPolynomials = [] {
    std::array<ElementPolynomial, kElementCount> polynomials{};
    for (std::size_t i = 0; i < kElementCount; ++i) {
        polynomials[i] = polynomialOf(detail::kElements[i]);
    }
    return polynomials;
}();

const ElementPolynomial& polynomialOf(Element element)
{
    return kPolynomials[static_cast<std::size_t>(element)];
}

bool isWhole(double count)
{
    return count == std::floor(count);
}

/// How many peaks hold the distribution: all of them, or mean + 7 sigma + 12, beyond which less
/// than 1e-9 is left. Negative when a count is none.
double peakCountOf(std::span<const ElementAmount> composition)
{
    double degree = 0.0;
    double mean = 0.0;
    double variance = 0.0;
    bool whole = true;
    for (const ElementAmount& amount : composition) {
        if (!(amount.count >= 0.0) || !std::isfinite(amount.count)) {
            return -1.0;
        }
        const ElementPolynomial& polynomial = polynomialOf(amount.element);
        degree += amount.count * polynomial.degree;
        mean += amount.count * polynomial.mean;
        variance += amount.count * polynomial.variance;
        whole = whole && isWhole(amount.count);
    }
    const double enough = std::ceil(mean + 7.0 * std::sqrt(variance) + 12.0);
    return whole ? std::min(degree + 1.0, enough) : enough;
}

void scaleBy(IsotopeProbabilities& values, double factor)
{
    for (double& value : values) {
        value *= factor;
    }
}

/// Multiplies two polynomials, cut at `peakCount` terms. In place, as the move assignment of
/// Qt 6.4's QVarLengthArray leaks the memory of the array that is assigned to.
void multiplyBy(IsotopeProbabilities& values,
                const IsotopeProbabilities& factor,
                qsizetype peakCount)
{
    const IsotopeProbabilities old = values;
    values.clear();
    values.resize(std::min(peakCount, old.size() + factor.size() - 1), 0.0);
    for (qsizetype i = 0; i < old.size(); ++i) {
        const qsizetype count = std::min(factor.size(), values.size() - i);
        for (qsizetype k = 0; k < count; ++k) {
            values[i + k] += old[i] * factor[k];
        }
    }
}

/// p^n by the recurrence, up to a common factor that makes its maximum 1; ends where nothing of
/// weight follows.
IsotopeProbabilities powerByRecurrence(const ElementPolynomial& p, double n, qsizetype peakCount)
{
    constexpr double largest = 1e150;
    constexpr double negligible = 1e-20;
    const double mean = n * p.mean;
    IsotopeProbabilities q(1, 1.0);
    double maximum = 1.0;
    int negligibleCount = 0;
    for (qsizetype k = 1; k < peakCount && negligibleCount < p.degree; ++k) {
        double sum = 0.0;
        const auto position = static_cast<double>(k);
        const int last = static_cast<int>(std::min<qsizetype>(k, p.degree));
        for (int i = 1; i <= last; ++i) {
            sum += (i * (n + 1.0) - position) * p.ratios[static_cast<std::size_t>(i)] * q[k - i];
        }
        q.append(sum / position);
        maximum = std::max(maximum, q[k]);
        const bool isNegligible = position > mean && std::abs(q[k]) < negligible * maximum;
        negligibleCount = isNegligible ? negligibleCount + 1 : 0;
        if (maximum > largest) {
            scaleBy(q, 1.0 / maximum);
            maximum = 1.0;
        }
    }
    if (maximum > 1.0) {
        scaleBy(q, 1.0 / maximum);
    }
    return q;
}

/// p^n for a whole n by repeated squaring.
IsotopeProbabilities powerBySquaring(const ElementPolynomial& p, qsizetype n, qsizetype peakCount)
{
    IsotopeProbabilities square;
    square.append(p.coefficients.data(), std::min<qsizetype>(p.degree + 1, peakCount));
    IsotopeProbabilities result(1, 1.0);
    for (qsizetype bits = n; bits > 0; bits >>= 1) {
        if ((bits & 1) != 0) {
            multiplyBy(result, square, peakCount);
        }
        if (bits > 1) {
            multiplyBy(square, IsotopeProbabilities(square), peakCount);
        }
    }
    return result;
}

/// p^n up to a common factor.
IsotopeProbabilities elementPower(const ElementPolynomial& p, double n, qsizetype peakCount)
{
    // With two neighbouring isotopes each step has one term, and a whole power ends by itself.
    const bool oneTerm = p.degree == 1;
    const bool nothingCancels = static_cast<double>(peakCount) <= n + 1.0;
    if (oneTerm || nothingCancels || !isWhole(n)) {
        return powerByRecurrence(p, n, peakCount);
    }
    return powerBySquaring(p, static_cast<qsizetype>(n), peakCount);
}

} // namespace

Error aggregatedIsotopeDistribution(std::span<const ElementAmount> composition,
                                    IsotopeProbabilities* probabilities)
{
    const double wanted = peakCountOf(composition);
    if (!(wanted >= 0.0 && wanted <= kMaxIsotopePeakCount)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         wanted < 0.0
                             ? QStringLiteral("Atom counts of an isotope pattern must be finite "
                                              "and not negative")
                             : QStringLiteral("An isotope pattern of at most %1 peaks is wanted, "
                                              "but the molecule needs %2")
                                   .arg(kMaxIsotopePeakCount)
                                   .arg(wanted));
    }
    const auto peakCount = static_cast<qsizetype>(wanted);
    probabilities->clear();
    probabilities->append(1.0);
    for (const ElementAmount& amount : composition) {
        const ElementPolynomial& polynomial = polynomialOf(amount.element);
        if (polynomial.degree > 0 && amount.count > 0.0) {
            multiplyBy(
                *probabilities, elementPower(polynomial, amount.count, peakCount), peakCount);
        }
    }
    std::ranges::replace_if(
        *probabilities, [](double value) { return value < 0.0; }, 0.0);
    scaleBy(*probabilities,
            1.0 / std::accumulate(probabilities->cbegin(), probabilities->cend(), 0.0));
    return kNoError;
}

void cutIsotopePattern(IsotopeProbabilities* probabilities, bool normalize)
{
    constexpr double coverage = 0.9999;
    constexpr qsizetype leastPeakCount = 5;
    const double whole = std::accumulate(probabilities->cbegin(), probabilities->cend(), 0.0);
    double sum = 0.0;
    qsizetype kept = 0;
    while (kept < probabilities->size() && (kept < leastPeakCount || sum <= coverage * whole)) {
        sum += probabilities->at(kept);
        ++kept;
    }
    while (kept > 1 && probabilities->at(kept - 1) == 0.0) {
        --kept;
    }
    probabilities->resize(kept);
    if (normalize && sum > 0.0) {
        scaleBy(*probabilities, 1.0 / sum);
    }
}

} // namespace chem
