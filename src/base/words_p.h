#pragma once

#include <QtCore/QString>

#include <functional>

/// A text that is made in the language of the moment in which it is asked for; null stands for an
/// empty one.
using Words = std::function<QString()>;

inline QString said(const Words& words)
{
    return words ? words() : QString();
}
