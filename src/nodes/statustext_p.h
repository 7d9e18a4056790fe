#pragma once

#include "platform/types/uastatuscode.h"

#include <QtCore/QVariant>

/// A plain sentence that says what a status means to the one who asked; empty for Good.
QString statusSentence(UaStatusCode status);

/// The name of a status and its sentence, on one line.
QString statusInWords(UaStatusCode status);

/// Qt::ForegroundRole of what may be of the past: the brush of what is disabled, or none.
QVariant staleForeground(bool isStale);
/// A plain sentence that says what that is.
QString staleSentence();
