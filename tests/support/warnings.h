#pragma once

#include <QtTest/QtTest>

/// Makes every warning of the current test function a failure, but for one that the display-less
/// platform plugin utters for each window.
inline void failOnWarnings()
{
    QTest::failOnWarning(
        QRegularExpression("^(?!This plugin does not support propagateSizeHints)"));
}
