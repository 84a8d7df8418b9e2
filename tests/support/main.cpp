#include <QCoreApplication>
#include <QLoggingCategory>
#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    std::setlocale(LC_ALL, "C");
    QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
    return RUN_ALL_TESTS();
}
