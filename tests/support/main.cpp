// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("bram-test"));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
