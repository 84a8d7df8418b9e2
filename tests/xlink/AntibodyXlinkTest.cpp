#include "xlink/AntibodyCysteineMarker.h"
#include "xlink/AntibodyXlinkPredictor.h"

#include <gmock/gmock.h>

namespace zel::xlink {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A chain with cysteines at these positions.
QString chainOf(const QList<int>& cysteines, int length = 500)
{
    QString chain(length, u'A');
    for (const int position : cysteines) {
        chain[position] = u'C';
    }
    return chain;
}

/// The links as texts, "0:22-0:96".
std::vector<std::string> linksOf(const QString& heavy1,
                                 const QString& heavy2,
                                 const QString& light1,
                                 const QString& light2)
{
    std::vector<std::string> texts;
    for (const auto& link : AntibodyXlinkPredictor::predict(heavy1, heavy2, light1, light2)) {
        texts.push_back(std::to_string(link.firstChain) + ':' + std::to_string(link.firstPosition) +
                        '-' + std::to_string(link.secondChain) + ':' +
                        std::to_string(link.secondPosition));
    }
    return texts;
}

/// Four domains; two of the hinge cysteines link the heavy chains, the first of three the light
/// one.
const QList<int> kHeavy = {21, 95, 146, 202, 222, 228, 231, 263, 323, 369, 427};
const QList<int> kLight = {22, 87, 133, 193, 213};

} // namespace

TEST(AntibodyXlinkTest, LinksDomainsHingesAndChains)
{
    const QString heavy = chainOf(kHeavy);
    const QString light = chainOf(kLight, 214);
    EXPECT_THAT(linksOf(heavy, heavy, light, light),
                ElementsAre("0:21-0:95",
                            "0:146-0:202",
                            "0:263-0:323",
                            "0:369-0:427",
                            "1:21-1:95",
                            "1:146-1:202",
                            "1:263-1:323",
                            "1:369-1:427",
                            "2:22-2:87",
                            "2:133-2:193",
                            "3:22-3:87",
                            "3:133-3:193",
                            "0:228-1:228",
                            "0:231-1:231",
                            "0:222-2:213",
                            "1:222-3:213"));
}

TEST(AntibodyXlinkTest, ACysteineShortOfTheSecondDomainLinksToTheLightChain)
{
    const QString light = chainOf(kLight, 214);
    const QString plain = chainOf(kHeavy);
    const auto withSecond = [](int second) {
        return chainOf({21, 95, 162 - 30, second, 240, 250, 251, 252, 263, 323, 369, 427});
    };
    // 40 apart they are a pair, 39 apart the first one is the light chain's.
    const auto apart = AntibodyCysteineMarker::markHeavyChain(withSecond(132 + 40));
    EXPECT_EQ(apart.lightChainLink, std::nullopt);
    EXPECT_THAT(apart.hinge, ElementsAre(240, 250, 251, 252));
    const auto near = AntibodyCysteineMarker::markHeavyChain(withSecond(132 + 39));
    EXPECT_EQ(near.lightChainLink, 132);
    EXPECT_THAT(near.positions, ElementsAre(21, 95, 171, 240, 263, 323, 369, 427));
    EXPECT_THAT(near.hinge, ElementsAre(250, 251, 252));

    // One heavy chain with such a cysteine keeps the other from giving one of its hinge.
    const auto links = linksOf(withSecond(171), plain, light, light);
    EXPECT_THAT(links, testing::Contains("0:132-2:213"));
    EXPECT_THAT(links, testing::Not(testing::Contains(testing::HasSubstr("-3:213"))));
    EXPECT_THAT(std::vector(links.end() - 4, links.end()),
                ElementsAre("0:250-1:222", "0:251-1:228", "0:252-1:231", "0:132-2:213"));
}

TEST(AntibodyXlinkTest, ChainsWithoutThePatternAreTakenAsTheSearchesGo)
{
    const QString none(300, u'A');
    EXPECT_THAT(linksOf(none, none, none, none), IsEmpty());
    EXPECT_THAT(linksOf({}, {}, {}, {}), IsEmpty());
    EXPECT_THAT(AntibodyCysteineMarker::markLightChain(chainOf({14}, 100)).positions[0], -1);
    EXPECT_THAT(AntibodyCysteineMarker::markLightChain(chainOf({15}, 100)).positions[0], 15);
    EXPECT_THAT(AntibodyCysteineMarker::markLightChain(chainOf(kLight, 214).toLower()).positions,
                ElementsAre(-1, -1, -1, -1, -1));
    // A search from before the start goes on at the end: the only cysteine is met again.
    EXPECT_THAT(AntibodyCysteineMarker::markLightChain(chainOf({0}, 50)).positions,
                ElementsAre(-1, 0, 0, 0, 0));
    // Without the second domain: no hinge, and what needs the pair is left out.
    const auto few = AntibodyCysteineMarker::markHeavyChain(chainOf({20, 80}));
    EXPECT_THAT(few.hinge, IsEmpty());
    EXPECT_EQ(few.lightChainLink, -1);
    EXPECT_EQ(few.positions[2], 20) << "the search from the start meets the first one";
}

} // namespace zel::xlink
