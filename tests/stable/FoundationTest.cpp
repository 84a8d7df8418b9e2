#include "common/stable/JsonUtils.h"
#include "common/stable/Logging.h"
#include "common/stable/Progress.h"
#include "common/stable/Stringify.h"
#include "tests/support/Matchers.h"
#include "tests/support/RecordingSink.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

namespace zel {

using test::HasError;
using test::IsOk;
using test::RecordingSink;
using ::testing::ElementsAre;

TEST(ProgressTest, DrivesTheSinkFromOpeningToClosing)
{
    const auto sink = QSharedPointer<RecordingSink>::create();
    {
        ProgressContext context(2, sink);
        context.setText(QStringLiteral("Working"));
        ++context;
        EXPECT_FALSE(context.isCanceled());
        sink->canceled = true;
        EXPECT_TRUE(context.isCanceled());
    }
    EXPECT_EQ(sink->log, QStringLiteral("begin 2;Working;step;end;"));
    EXPECT_TRUE(isCanceled(sink));
}

TEST(JsonUtilsTest, GivesTypedMembersAndNamesTheKeyThatFails)
{
    const QJsonObject object =
        QJsonDocument::fromJson(
            R"({"whole": 7, "real": 7.5, "huge": 1e10, "text": "a", "list": [1, 2], "nothing": null})")
            .object();
    const auto key = [](const char* name) { return QString::fromLatin1(name); };
    EXPECT_EQ(test::valueOf(JsonUtils::intValue(object, key("whole"))), 7);
    EXPECT_EQ(test::valueOf(JsonUtils::doubleValue(object, key("whole"))), 7.0);
    EXPECT_EQ(test::valueOf(JsonUtils::stringValue(object, key("text"))), key("a"));
    EXPECT_EQ(test::valueOf(JsonUtils::arrayValue(object, key("list"))).size(), 2);
    EXPECT_THAT(JsonUtils::checkValue(object, key("nothing")), IsOk());
    for (const char* name : {"real", "huge", "text", "list", "nothing", "missing"}) {
        const Result<int> result = JsonUtils::intValue(object, key(name));
        EXPECT_THAT(result, HasError(kFileFormatError)) << name;
        EXPECT_TRUE(result.error().message().contains(key(name)));
    }
    EXPECT_THAT(JsonUtils::objectValue(object, key("list")), HasError(kFileFormatError));
    EXPECT_THAT(JsonUtils::checkValue(object, key("missing")), HasError(kFileFormatError));
}

TEST(LoggingRegistryTest, FindsCreatesAndFallsBack)
{
    EXPECT_STREQ(algoLog().categoryName(), "zel.algo");
    EXPECT_EQ(&LoggingRegistry::category("zel.algo"), &algoLog());
    EXPECT_STREQ(LoggingRegistry::category("test.unknown").categoryName(), "zel.generic");

    // The name must be found by its text, not by its address, and outlive the caller's copy.
    std::string name = "test.created";
    const QLoggingCategory& created = LoggingRegistry::category(name.c_str(), QtWarningMsg);
    name = "changed";
    EXPECT_STREQ(created.categoryName(), "test.created");
    EXPECT_EQ(&LoggingRegistry::category("test.created"), &created);
    EXPECT_TRUE(created.isWarningEnabled());
    EXPECT_FALSE(created.isDebugEnabled());
}

TEST(StringifyTest, ExtendsThePrefixAndKeepsEveryDigit)
{
    const StringifierState inner =
        StringifierState().extendPrefix(QStringLiteral("  ")).extendPrefix(QStringLiteral("> "));
    EXPECT_EQ(inner.newLinePrefix(), QStringLiteral("  > "));
    EXPECT_EQ(stringify(-42, inner), QStringLiteral("-42"));
    EXPECT_EQ(QString::number(0.1 + 0.2, 'g', inner.realNumberPrecision(6)).toDouble(), 0.1 + 0.2);
}

} // namespace zel
