#pragma once

#include "platform/types/uastatuscode.h"

#include <QtCore/QVariant>
#include <QtGui/QColor>

class QPalette;
class QvelSession;

/// A plain sentence that says what a status means to the one who asked; empty for Good.
QString statusSentence(UaStatusCode status);

/// The name of a status and its sentence, on one line.
QString statusInWords(UaStatusCode status);

/// The colour of what may be of the past: that of what is disabled, but dark or light enough to
/// read.
QColor staleColor(const QPalette& palette);
/// Qt::ForegroundRole of what may be of the past, or none.
QVariant staleForeground(bool isStale);
/// A plain sentence that says what that is.
QString staleSentence();
/// Why nothing of a node is there yet. The session may be null.
QString waitingSentence(const QvelSession* session);
