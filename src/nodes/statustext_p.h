#pragma once

#include "platform/types/uastatuscode.h"

/// A plain sentence that says what a status means to the one who asked; empty for Good.
QString statusSentence(UaStatusCode status);

/// The name of a status and its sentence, on one line.
QString statusInWords(UaStatusCode status);
