#pragma once

#include <QtTest/QtTest>

/// Makes every warning of the current test function a failure, but for those in which the
/// display-less platform plugin tells what it cannot do with a window.
inline void failOnWarnings()
{
    QTest::failOnWarning(QRegularExpression("^(?!This plugin does not support )"));
}

/// A row of a table that a test function goes through: tells its name where the function fails.
class Case
{
public:
    explicit Case(const QByteArray& name) : m_name(name), m_failed(QTest::currentTestFailed()) {}
    ~Case()
    {
        if (QTest::currentTestFailed() && !m_failed)
            qInfo("in the case \"%s\"", m_name.constData());
    }

private:
    const QByteArray m_name;
    const bool m_failed; // before
};
