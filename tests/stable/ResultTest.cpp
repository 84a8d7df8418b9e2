#include "common/stable/Result.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <memory>

namespace zel {

using test::HasError;
using ::testing::ElementsAre;

namespace {

Error innermost()
{
    ZEL_RETURN_ERROR(kFileOpenError, "no such file");
}

Result<std::unique_ptr<int>> middle(bool fail)
{
    Error e;
    if (fail) {
        ZEL_RETURN_IF_ERROR(innermost());
    }
    return std::make_unique<int>(7);
}

Result<QString> outermost(bool fail)
{
    ZEL_ASSIGN_OR_RETURN(const std::unique_ptr<int> number, middle(fail));
    return QString::number(*number);
}

} // namespace

TEST(ResultTest, CarriesOneFrameForEachFunctionInnermostFirst)
{
    const Result<QString> result = outermost(true);
    ASSERT_THAT(result, HasError(kFileOpenError, "no such file"));
    const QList<ErrorFrame> frames = result.error().frames();
    ASSERT_EQ(frames.size(), 3);
    const char* const functions[] = {"innermost", "middle", "outermost"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(frames[i].function.contains(QLatin1String(functions[i]))) << i;
    }
    EXPECT_EQ(test::valueOf(outermost(false)), QStringLiteral("7"));
}

TEST(ResultTest, KeepsTheTwoWarningListsOfAFailureAlike)
{
    Error error(kError);
    error.addWarning(QStringLiteral("first"));
    Result<int> failed(error);
    failed.addWarning(QStringLiteral("second"));
    EXPECT_EQ(failed.warnings(), failed.error().warnings());
    EXPECT_EQ(failed.warnings().size(), 2);
    failed.resetWarning(QStringLiteral("only"));
    EXPECT_THAT(failed.error().warnings(), ElementsAre(QStringLiteral("only")));
}

} // namespace zel
