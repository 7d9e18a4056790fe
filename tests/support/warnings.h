#pragma once

#include <QtTest/QtTest>

/// Makes every warning of the current test function a failure, but for those in which the
/// display-less platform plugin tells what it cannot do with a window.
inline void failOnWarnings()
{
    QTest::failOnWarning(QRegularExpression("^(?!This plugin does not support )"));
}
