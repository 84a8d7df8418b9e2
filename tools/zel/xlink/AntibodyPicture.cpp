#include "tools/zel/xlink/AntibodyPicture.h"

#include "common/stable/SvgElement.h"

#include <algorithm>
#include <array>
#include <locale>
#include <sstream>
#include <string>

namespace zel::tool {

using Link = xlink::AntibodyXlinkPredictor::Link;

namespace {

// The drawing in pixels.
constexpr double kLeft = 80;
constexpr double kWidth = 900; ///< of the longest chain
constexpr double kRight = 40;
constexpr double kHeight = 520;
constexpr double kBarHeight = 10;
/// Middle of the bar of each chain: heavy ones inside, each beside its light one.
constexpr std::array<double, 4> kMiddles = {190, 310, 90, 410};

// Colours that stay apart for colour-blind readers. Source: Okabe and Ito 2008.
constexpr const char* kHeavyColour = "#0072b2";
constexpr const char* kLightColour = "#009e73";
constexpr const char* kLinkColour = "#d55e00";

double middle(int chain)
{
    return kMiddles[static_cast<std::size_t>(chain)];
}

/// Draws on one stream, at one scale.
class Drawing
{
public:
    explicit Drawing(const AntibodyChains& chains)
        : m_chains(chains)
    {
        qsizetype longest = 1;
        for (const AntibodyChain& chain : chains) {
            longest = std::max(longest, chain.sequence.size());
        }
        m_pixelsPerResidue = kWidth / static_cast<double>(longest);
        m_out.imbue(std::locale::classic());
        m_out << '\n';
    }

    void drawChain(int number)
    {
        const AntibodyChain& chain = m_chains[static_cast<std::size_t>(number)];
        const char* const colour = chain.isHeavy ? kHeavyColour : kLightColour;
        SvgElement(m_out, "rect")
            .set("x", kLeft)
            .set("y", middle(number) - kBarHeight / 2)
            .set("width", pixel(static_cast<double>(chain.sequence.size())) - kLeft)
            .set("height", kBarHeight)
            .set("fill", colour)
            .end("<title>" + chain.name.toHtmlEscaped().toStdString() + "</title>");
        SvgElement(m_out, "text")
            .set("x", kLeft - 8)
            .set("y", middle(number) + 4)
            .set("text-anchor", "end")
            .end(chain.label.toStdString());
        for (int i = 0; i < static_cast<int>(chain.sequence.size()); ++i) {
            if (chain.sequence[i] == u'C') {
                drawCysteine(number, i);
            }
        }
        m_out << '\n';
    }

    void drawLink(const Link& link)
    {
        const double x1 = pixel(link.firstPosition);
        const double x2 = pixel(link.secondPosition);
        const double y1 = middle(link.firstChain);
        const double y2 = middle(link.secondChain);
        std::ostringstream path;
        path.imbue(std::locale::classic());
        path << "M " << x1 << ' ' << y1;
        if (link.firstChain == link.secondChain) { // an arc on the outer side
            constexpr double height = 80;
            const double top = y1 + (y1 < kHeight / 2 ? -height : height);
            path << " Q " << (x1 + x2) / 2 << ' ' << top << ' ' << x2 << ' ' << y2;
        } else {
            path << " L " << x2 << ' ' << y2;
        }
        SvgElement(m_out, "path")
            .set("d", path.str())
            .set("fill", "none")
            .set("stroke", kLinkColour)
            .set("stroke-width", 1.6)
            .end("<title>" + placeText(link.firstChain, link.firstPosition) + " - " +
                 placeText(link.secondChain, link.secondPosition) + "</title>");
        m_out << '\n';
    }

    std::string picture() const
    {
        std::ostringstream picture;
        picture.imbue(std::locale::classic());
        SvgElement(picture, "svg")
            .set("xmlns", "http://www.w3.org/2000/svg")
            .set("width", kLeft + kWidth + kRight)
            .set("height", kHeight)
            .set("font-family", "sans-serif")
            .set("font-size", 12)
            .end(m_out.str());
        return picture.str() + '\n';
    }

private:
    double pixel(double position) const { return kLeft + position * m_pixelsPerResidue; }

    std::string placeText(int chain, int position) const
    {
        return m_chains[static_cast<std::size_t>(chain)].label.toStdString() + " C" +
               std::to_string(position + 1);
    }

    void drawCysteine(int chain, int position)
    {
        SvgElement(m_out, "line")
            .set("x1", pixel(position))
            .set("y1", middle(chain) - kBarHeight)
            .set("x2", pixel(position))
            .set("y2", middle(chain) + kBarHeight)
            .set("stroke", "#000")
            .end("<title>" + placeText(chain, position) + "</title>");
    }

    const AntibodyChains& m_chains;
    double m_pixelsPerResidue = 1.0;
    std::ostringstream m_out;
};

} // namespace

QByteArray antibodyPage(const AntibodyChains& chains, const QList<Link>& links)
{
    Drawing drawing(chains);
    for (const Link& link : links) {
        drawing.drawLink(link);
    }
    for (int chain = 0; chain < static_cast<int>(chains.size()); ++chain) {
        drawing.drawChain(chain);
    }
    return "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Disulfide "
           "links</title></head>\n"
           "<body style=\"font-family:sans-serif\"><h1 style=\"font-size:16px\">Predicted "
           "disulfide "
           "links</h1>\n" +
           QByteArray::fromStdString(drawing.picture()) +
           "<p>Positions count from 1.</p></body></html>\n";
}

} // namespace zel::tool
