#pragma once

namespace zel::simulate {

/// The shape of a chromatographic peak: a Gaussian folded with an exponential decay (exponentially
/// modified Gaussian, EMG), of area 1, with its apex at 0. Any unit of time. A plain value.
///
/// With t counted from the centre of the Gaussian and z = (sigma/tau - t/sigma) / sqrt(2),
///
///     f(t) = 1/(2 tau) exp(sigma^2/(2 tau^2) - t/tau) erfc(z)
///
/// is used for z < 0, and in its other form, in which nothing overflows,
///
///     f(t) = 1/(2 tau) exp(-t^2/(2 sigma^2)) erfcx(z),   erfcx(z) = exp(z^2) erfc(z),
///
/// elsewhere (Kalambet, Kozmin, Mikhailova, Nagaev & Tikhonov 2011, doi:10.1002/cem.1343).
class EmgPeak
{
public:
    /// \param sigma  standard deviation of the Gaussian, above 0
    /// \param tau    time constant of the tail, at least 0; 0 is a Gaussian
    EmgPeak(double sigma, double tau);

    /// Height at a time relative to the apex, one per unit of time.
    double height(double fromApex) const { return heightFromCentre(fromApex + m_apex); }

    /// Where, before the apex, the height is this fraction of the apex height; negative.
    /// \param fraction  in [1e-7, 1)
    double start(double fraction) const;
    /// The same after the apex; positive.
    double end(double fraction) const;

private:
    double gaussian(double fromCentre) const;
    double heightFromCentre(double fromCentre) const;

    double m_sigma;
    double m_tau;
    double m_apex; ///< from the centre of the Gaussian
};

} // namespace zel::simulate
