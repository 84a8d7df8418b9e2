#include "common/stable/JsonUtils.h"
#include "common/stable/Logging.h"
#include "common/stable/Progress.h"
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
    EXPECT_THAT(JsonUtils::checkValue(object, key("nothing")), IsOk());
    for (const char* name : {"real", "huge", "text", "list", "nothing", "missing"}) {
        const Result<int> result = JsonUtils::intValue(object, key(name));
        EXPECT_THAT(result, HasError(kFileFormatError)) << name;
        EXPECT_TRUE(result.error().message().contains(key(name)));
    }
}

TEST(LoggingRegistryTest, FindsACategoryByItsTextAndFallsBack)
{
    std::string name = "test.created";
    const QLoggingCategory& created = LoggingRegistry::category(name.c_str(), QtWarningMsg);
    name = "changed"; // neither the address nor the life of the caller's copy counts
    EXPECT_EQ(&LoggingRegistry::category("test.created"), &created);
    EXPECT_FALSE(created.isDebugEnabled());
    EXPECT_STREQ(LoggingRegistry::category("test.unknown").categoryName(), "zel.generic");
}

} // namespace zel
