#pragma once

#include <QtTest/QtTest>

/// Makes every warning of the current test function a failure, but for what the display-less
/// platform plugin utters about windows.
inline void failOnWarnings()
{
    QTest::failOnWarning(QRegularExpression("^(?!This plugin does not support )"));
}
