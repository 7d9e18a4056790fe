#pragma once

#include <QtGui/QColor>

/// What WCAG 2.1 asks of text, and of graphics that tell something.
constexpr double leastTextContrast = 4.5;
constexpr double leastGraphicsContrast = 3;

/// The contrast ratio of WCAG 2.1, from 1 to 21.
double contrast(const QColor& a, const QColor& b);

/// A part of the way from a to b.
QColor mixed(const QColor& a, const QColor& b, double part);

/// The colour itself, or as much of the way from it to black or white as the contrast to the ground
/// takes.
QColor readable(const QColor& color, const QColor& ground, double least);
