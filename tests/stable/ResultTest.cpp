#include "common/stable/Result.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <memory>

namespace zel {

using test::HasError;
using test::IsOk;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

static_assert(std::is_nothrow_move_constructible_v<Error>);
static_assert(std::is_copy_constructible_v<Result<int>>);
static_assert(!std::is_copy_constructible_v<Result<std::unique_ptr<int>>>);
static_assert(std::is_move_constructible_v<Result<std::unique_ptr<int>>>);

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
    EXPECT_TRUE(frames[0].function.contains(QStringLiteral("innermost")));
    EXPECT_TRUE(frames[1].function.contains(QStringLiteral("middle")));
    EXPECT_TRUE(frames[2].function.contains(QStringLiteral("outermost")));
    EXPECT_TRUE(frames[0].file.endsWith(QStringLiteral("ResultTest.cpp")));
    EXPECT_GT(frames[1].line, frames[0].line);
}

TEST(ResultTest, HoldsAMoveOnlyValueWithoutAnError)
{
    const Result<QString> result = outermost(false);
    ASSERT_THAT(result, IsOk());
    EXPECT_EQ(result.value(), QStringLiteral("7"));
    EXPECT_FALSE(result.error().hasError());
    EXPECT_THAT(result.error().frames(), IsEmpty());
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

    Result<int> succeeded(5);
    succeeded.addWarning(QStringLiteral("unusual"));
    EXPECT_THAT(succeeded.warnings(), ElementsAre(QStringLiteral("unusual")));
    EXPECT_THAT(succeeded.error().warnings(), IsEmpty());
}

TEST(ResultTest, ReplacesAnErrorByACode)
{
    Error error(kError, "text");
    error.ecatch("f", "file", 1);
    error = kNoError;
    EXPECT_FALSE(error.hasError());
    EXPECT_TRUE(error == kNoError);
    EXPECT_THAT(error.frames(), IsEmpty());
    EXPECT_TRUE(error.message().isEmpty());
}

} // namespace zel
